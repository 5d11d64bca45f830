package com.tavrin.mmitest.console;

import com.tavrin.mmitest.console.FactorySequence.Step;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.PrintWriter;
import java.io.Writer;
import java.nio.file.Path;
import java.time.OffsetDateTime;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.concurrent.Callable;
import java.util.stream.IntStream;

import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.ParseResult;
import picocli.CommandLine.*;

/** {@code ./mmi run}: the factory-test sequence, then the service-death drill, then a summary. */
@Command(name = "run",
        header = "The factory-test sequence, then a service-death drill",
        description = {"The factory-test sequence over every native method against the simulated device, one row "
                + "per step with its verdict, then a drill that kills and revives a service (power unless --drill "
                + "says otherwise). It ends with every failure listed again and one verdict line."},
        exitCodeList = {"0:every step and drill check run passed",
            "1:a step or drill check failed, the library did not load, or a results file could not be written",
            "2:the command line was refused"})
final class FactoryRun implements Callable<Integer> {
    @Spec
    CommandSpec command;
    @Mixin
    DeviceOptions device = new DeviceOptions();
    @Option(names = "--list", description = "List the numbered steps (those selected) without running them.")
    boolean list;
    // Split here rather than by picocli, which drops empty items: "--step ," would run every step.
    @Option(names = "--step", paramLabel = "N[-M]",
            description = "Run only these steps (numbers from --list; ranges such as 2-5,9).")
    List<Steps> stepValues = new ArrayList<>();
    @Option(names = "-k", paramLabel = "TEXT", description = "Run only the steps whose method name contains TEXT "
            + "(any case).")
    String keyword;
    @Option(names = "--repeat", paramLabel = "N", defaultValue = "1",
            description = "Run the selected steps N times; a step's verdict counts its failed runs.")
    int repeat;
    @Option(names = {"-x", "--exitfirst"}, description = "Stop at the first failing step; the drill does not run.")
    boolean exitFirst;
    @Option(names = "--drill", paramLabel = "SERVICE", defaultValue = "power",
            converter = DeviceOptions.ServiceName.class, completionCandidates = DeviceOptions.ServiceName.class,
            description = "The service the drill kills (default: ${DEFAULT-VALUE}).")
    String drillService;
    @Option(names = "--no-drill", description = "Skip the service-death drill.")
    boolean noDrill;
    @Option(names = "--drill-fault", paramLabel = "FAULT", defaultValue = "kill",
            description = "How the drill's service dies: kill (the drill kills it and revives it) or crash (it "
                    + "crashes in the middle of a call and restarts after the restart delay); default: "
                    + "${DEFAULT-VALUE}.")
    Drill.Fault drillFault;
    @Option(names = "--junit", paramLabel = "FILE", description = "Write the results as JUnit XML.")
    Path junit;
    @Option(names = "--json", paramLabel = "FILE", description = "Write the results as JSON.")
    Path json;
    @Option(names = {"-v", "--verbose"}, description = "Show every log line and call, and cut no cell.")
    boolean verbose;
    @Option(names = {"-q", "--quiet"}, description = "Print only the failures and the verdict.")
    boolean quiet;
    @Option(names = "--no-color", description = "No colours, even on a terminal (as does NO_COLOR).")
    boolean noColor;

    /** One --step value: ranges separated by commas, none of them empty. */
    record Steps(List<Range> ranges) {
        static Steps parse(String value) {
            List<String> items = List.of(value.split(",", -1));
            if (items.contains("")) {
                throw new TypeConversionException("--step '" + value + "': an empty item; give numbers from --list "
                        + "such as 2-5,9");
            }
            return new Steps(items.stream().map(Range::parse).toList());
        }
    }

    /** Steps first to last, as --step takes them: 7, or 2-5. */
    record Range(int first, int last) {
        static Range parse(String value) {
            if (!value.matches("[0-9]{1,6}(-[0-9]{1,6})?")) {
                throw new TypeConversionException("--step takes numbers from --list, got '" + value + "'");
            }
            String[] ends = value.split("-");
            Range range = new Range(Integer.parseInt(ends[0]), Integer.parseInt(ends[ends.length - 1]));
            if (range.last < range.first) {
                throw new TypeConversionException("--step " + value + ": a range runs from the lower number up");
            }
            return range;
        }

        boolean contains(int n) {
            return first <= n && n <= last;
        }
    }

    private PrintWriter err;
    /** Standard output: the list, the failures and the verdict, whatever -q says. */
    private Table.Screen out;
    /** Where the tables and counts go: nowhere under -q, which prints only the failures and the verdict. */
    private Table.Screen shown;
    /** The sequence, and the indices of the steps --step and -k chose. */
    private final List<Step> steps = FactorySequence.steps();
    private List<Integer> chosen;

    @Override
    public Integer call() {
        long start = System.nanoTime();
        err = command.commandLine().getErr();
        out = new Table.Screen(command.commandLine().getOut(), Terminal.of(System.getenv(), System::getProperty, noColor),
                verbose);
        shown = quiet ? new Table.Screen(Writer.nullWriter(), out.terminal, verbose) : out;
        chosen = check();
        if (Console.CHECK_ONLY) {
            return Console.OK;
        }
        if (list) {
            list();
            return Console.OK;
        }
        RunReport report = new RunReport(Console.version(), OffsetDateTime.now());
        report.options.addAll(setup());
        report.selected.addAll(chosen.stream().map(i -> i + 1).toList());
        report.repeat = repeat;
        report.drillService = noDrill ? null : drillService;
        report.drillFault = drillFault;
        report.loadLogs = device.start();
        printLoad(report.loadLogs);
        sequence(report);
        if (report.drillService != null) {
            report.drillSkipped = report.stopped ? "stopped by -x"
                    : device.absent.contains(drillService) ? drillService + " is absent" : null;
            if (report.drillSkipped == null) {
                drill(report);
            } else {
                shown.println();
                shown.println("drill: skipped, " + report.drillSkipped);
            }
        }
        report.seconds = (System.nanoTime() - start) / 1e9;
        shown.println();
        for (String[] line : report.summary()) {
            if (line.length == 1) {
                out.println(line[0]);
            } else {
                out.verdictLine(line[0], line[1]);
            }
        }
        List<String> unwritten = new ArrayList<>();
        write("JUnit XML", "--junit", junit, report::writeJunit, unwritten);
        write("JSON", "--json", json, report::writeJson, unwritten);
        // The verdict is the last line, whole however narrow the terminal: scripts read it with tail -1.
        boolean passed = report.passed() && unwritten.isEmpty();
        out.println(out.terminal.paint(passed ? Terminal.Colour.BOLD_GREEN : Terminal.Colour.BOLD_RED,
                RunReport.verdictLine(report.verdictLine(), unwritten)));
        return passed ? Console.OK : Console.FAILED;
    }

    /** Writes a results file, if asked, saying where it went or why it could not; adds the option as typed if not. */
    private void write(String what, String option, Path file, OutputFiles.Content content, List<String> unwritten) {
        if (file == null) {
            return;
        }
        out.flush();
        String failure = OutputFiles.write(file, content);
        err.println(failure == null ? "mmi run: wrote " + what + " to " + file : "mmi run: cannot write " + failure);
        if (failure != null) {
            unwritten.add(option + " " + file);
        }
    }

    /**
     * Every check that needs neither the library nor the device: option values, contradictions,
     * the steps chosen and the results files. Returns the indices of the steps chosen.
     */
    private List<Integer> check() {
        ParseResult given = command.commandLine().getParseResult();
        if (repeat < 1 || repeat > 100_000) {
            throw refusal("--repeat takes 1 to 100000, got " + repeat);
        }
        for (String option : List.of("--junit", "--json", "--repeat", "--exitfirst")) {
            OptionSpec o = given.matchedOption(option);
            if (list && o != null) {
                String typed = o.arity().max() == 0 ? option : option + " " + o.originalStringValues().get(0);
                throw refusal("--list runs nothing, so " + typed + " has no effect; give one or the other");
            }
        }
        if (quiet && verbose) {
            throw refusal("-q and -v contradict each other; give one");
        }
        for (String option : List.of("--drill", "--drill-fault")) {
            if (noDrill && given.hasMatchedOption(option)) {
                throw refusal(option + " and --no-drill contradict each other; give one");
            }
        }
        device.check();
        // These refuse with IllegalArgumentException, which the console refuses the command line for.
        OutputFiles.check(List.of(new OutputFiles.Output("--junit", junit), new OutputFiles.Output("--json", json)));
        return select(steps, stepValues.stream().flatMap(v -> v.ranges().stream()).toList(), keyword);
    }

    private ParameterException refusal(String message) {
        return new ParameterException(command.commandLine(), message);
    }

    /**
     * The indices of the steps --step and -k choose, in sequence order: all of them when neither
     * is given, those both accept when both are.
     */
    static List<Integer> select(List<Step> steps, List<Range> ranges, String keyword) {
        ranges.stream().flatMapToInt(r -> IntStream.of(r.first(), r.last())).filter(n -> n < 1 || n > steps.size())
                .findFirst().ifPresent(n -> {
                    throw new IllegalArgumentException("--step " + n + ": the steps are numbered 1 to " + steps.size()
                            + " (--list shows them)");
                });
        String word = keyword == null ? "" : keyword.toLowerCase(Locale.ROOT);
        List<Integer> chosen = IntStream.range(0, steps.size())
                .filter(i -> ranges.isEmpty() || ranges.stream().anyMatch(r -> r.contains(i + 1)))
                .filter(i -> steps.get(i).method().toLowerCase(Locale.ROOT).contains(word)).boxed().toList();
        if (chosen.isEmpty()) {
            List<Integer> numbers = ranges.stream().flatMap(r -> IntStream.rangeClosed(r.first(), r.last()).boxed())
                    .toList();
            throw new IllegalArgumentException("no step matches -k " + keyword + (ranges.isEmpty() ? ""
                    : " among --step " + RunReport.ranges(numbers)) + " (--list shows the steps)");
        }
        return chosen;
    }

    /** Every option given that shapes the run, as typed, for the results files. */
    private List<RunReport.Option> setup() {
        List<String> outputOnly = List.of("--junit", "--json", "--verbose", "--quiet", "--no-color", "--list");
        return command.commandLine().getParseResult().matchedOptions().stream()
                .filter(o -> !outputOnly.contains(o.longestName()))
                .flatMap(o -> (o.originalStringValues().isEmpty() ? List.of("true") : o.originalStringValues())
                        .stream().map(value -> new RunReport.Option(o.longestName(), value)))
                .toList();
    }

    /** One line, unless verbose: how many services the library holds a link to. */
    private void printLoad(List<LogLine> logs) {
        if (verbose) {
            printLogs("Library loaded; it wrote:", logs);
        } else {
            List<String> missing = DeviceOptions.serviceNames().stream()
                    .filter(s -> !SimulatedDevice.linkedServices().contains(s)).toList();
            int all = DeviceOptions.serviceNames().size();
            shown.println("library loaded: " + (all - missing.size()) + " of " + all + " services connected"
                    + (missing.isEmpty() ? "" : " (" + String.join(", ", missing) + " missing)"));
        }
        shown.println();
    }

    private void list() {
        List<String[]> rows = chosen.stream().map(i -> new String[] {String.valueOf(i + 1), steps.get(i).method(),
            StepRecord.shownArguments(steps.get(i).args(), " "), steps.get(i).expect().shown()}).toList();
        // The method's name is what -k and --step are chosen by: it is never cut.
        Table table = new Table(out, new String[] {"#", "method", "arguments", "healthy answer"}, rows,
                new int[] {2, Integer.MAX_VALUE, 10, 10});
        rows.forEach(table::row);
    }

    /**
     * Runs the chosen steps, repeat times. A single round prints each row as its step ends; rounds
     * print a line each on stderr and the table once they are done, a row per step with its count
     * of failed runs.
     */
    private void sequence(RunReport report) {
        shown.println("Factory-test sequence");
        Table table = repeat == 1 ? sequenceTable() : null;
        for (int round = 1; round <= repeat && !report.stopped; round++) {
            int failed = 0;
            int k = 0;
            for (; k < chosen.size() && !report.stopped; k++) {
                Step step = steps.get(chosen.get(k));
                StepRecord r = StepRecord.invoke(step.resolve(), step.args()).judge(step);
                r.number = chosen.get(k) + 1;
                if (round == 1) {
                    report.steps.add(r);
                } else {
                    report.steps.set(k, StepRecord.merge(report.steps.get(k), r));
                }
                if (table != null) {
                    printStep(table, r);
                }
                failed += r.passed() ? 0 : 1;
                report.stopped = !r.passed() && exitFirst;
            }
            if (repeat > 1) {
                err.println("mmi run: round " + round + " of " + repeat + ": " + failed + " of "
                        + RunReport.count(k, "step") + " failed" + (report.stopped ? "; stopped by -x" : ""));
            }
        }
        if (table == null) {
            Table rounds = sequenceTable();
            report.steps.forEach(r -> printStep(rounds, r));
        }
        int failed = report.failedSteps();
        long methods = report.steps.stream().map(s -> s.method).distinct().count();
        shown.wrap("sequence: " + (report.steps.size() - failed) + " passed, " + failed + " failed of "
                + RunReport.count(report.steps.size(), "step") + " over " + RunReport.count((int) methods, "method")
                + (report.stopped ? "; stopped by -x" : ""));
    }

    private Table sequenceTable() {
        // The answers are not known yet: each may take what a long healthy answer would.
        List<String[]> rows = chosen.stream().map(i -> new String[] {"FAIL", String.valueOf(i + 1),
            StepRecord.request(steps.get(i).method(), steps.get(i).args()),
            String.format("%-30s", steps.get(i).expect().shown())}).toList();
        return new Table(shown, new String[] {"", "#", "call", "answer"}, rows, new int[] {4, 2, 30, 12});
    }

    private void printStep(Table table, StepRecord r) {
        table.row(r.passed() ? "PASS" : "FAIL", String.valueOf(r.number), r.request(), r.shown());
        if (!r.passed()) {
            table.note("healthy answer: " + r.expected + (r.runs > 1 ? "; " + r.failedRuns + " of " + r.runs
                    + " runs failed" : ""));
        }
        if (steps.get(r.number - 1).showCalls() || verbose) {
            r.calls.forEach(call -> table.note("service received: " + call));
        }
        r.fields.forEach((name, value) -> table.note("MmiNativeManager." + name + " = " + Values.format(value)));
        if (!r.passed() || verbose) {
            r.logs.forEach(line -> table.note("log: " + line));
        }
    }

    private void drill(RunReport report) {
        Drill drill = new Drill(drillService, drillFault, device);
        shown.println();
        shown.println("Service-death drill: " + drill.title());
        drill.run(report);
        String[] header = {"", "service", "request", "while down", drill.revivedByDrill() ? "after revive"
                : "after restart"};
        Table table = new Table(shown, header, report.checks.stream().filter(c -> !c.detail().isEmpty())
                .map(RunReport.DrillCheck::row).toList(), new int[] {4, 12, 16, 8, 8});
        for (RunReport.DrillCheck c : report.checks) {
            if (c.detail().isEmpty()) {
                shown.verdictLine(c.status().verdict, c.message());
                continue;
            }
            table.row(c.row());
            if (c.status() != RunReport.Status.OK) {
                table.note((c.status() == RunReport.Status.SKIPPED ? "not checked: " : "") + c.message() + "; "
                        + String.join(", ", c.detail()));
            }
        }
        if (verbose || report.passedChecks() < report.countedChecks()) {
            printLogs("Log at the kill:", report.killLogs);
            printLogs("Log while down:", report.downLogs);
            printLogs("Log at the revival:", report.reviveLogs);
        }
        shown.println("drill: " + report.passedChecks() + " of " + report.countedChecks() + " checks passed"
                + report.notChecked());
    }

    private void printLogs(String heading, List<LogLine> lines) {
        shown.println(heading);
        lines.forEach(line -> shown.line("  log: " + line));
    }
}
