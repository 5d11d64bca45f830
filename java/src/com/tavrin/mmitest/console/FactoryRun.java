package com.tavrin.mmitest.console;

import com.tavrin.mmitest.console.FactorySequence.Probe;
import com.tavrin.mmitest.console.FactorySequence.Step;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Locale;
import java.util.concurrent.Callable;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

import javax.xml.stream.XMLStreamException;

import picocli.CommandLine;
import picocli.CommandLine.Command;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Model.OptionSpec;
import picocli.CommandLine.Option;

/** {@code ./mmi run}: the factory-test sequence, then the service-death drill, then a summary. */
@Command(name = "run", sortOptions = false, versionProvider = Console.Version.class,
        header = "The factory-test sequence, then a service-death drill",
        description = {"The factory-test sequence over every native method against the simulated device, one row "
                + "per step with its verdict, then a drill that kills and revives a service (power unless --drill "
                + "says otherwise). It ends with every failure listed again and one verdict line."},
        exitCodeListHeading = "%nExit codes:%n",
        exitCodeList = {"0:every step and drill check run passed",
            "1:a step or drill check failed, or the library did not load",
            "2:the command line was refused, or an output file cannot be written"})
final class FactoryRun implements Callable<Integer> {
    @Mixin
    DeviceOptions device = new DeviceOptions();

    @Option(names = "--list", description = "List the numbered steps (those selected) without running them.")
    boolean list;

    @Option(names = "--step", split = ",", paramLabel = "N", converter = StepNumber.class, description = "Run only these steps (numbers from --list).")
    List<Integer> stepNumbers = new ArrayList<>();

    @Option(names = "-k", paramLabel = "TEXT", description = "Run only the steps whose method name contains TEXT "
            + "(any case).")
    String keyword;

    @Option(names = "--repeat", paramLabel = "N", defaultValue = "1",
            description = "Run the selected steps N times; a step's verdict counts its failed runs.")
    int repeat;

    @Option(names = {"-x", "--exitfirst"}, description = "Stop at the first failing step; the drill does not run.")
    boolean exitFirst;

    @Option(names = "--drill", paramLabel = "SERVICE", converter = DeviceOptions.AnyService.class,
            completionCandidates = DeviceOptions.ServiceNames.class,
            defaultValue = "power", description = "The service the drill kills (default: ${DEFAULT-VALUE}).")
    String drillService;

    @Option(names = "--no-drill", description = "Skip the service-death drill.")
    boolean noDrill;

    @Option(names = "--drill-fault", paramLabel = "FAULT", defaultValue = "kill", converter = FaultName.class,
            description = "How the drill's service dies: kill (the drill kills it and revives it) or crash (it "
                    + "crashes in the middle of a call and restarts after the restart delay); default: "
                    + "${DEFAULT-VALUE}.")
    DrillFault drillFault;

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

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Print this help.")
    boolean help;

    @Option(names = {"-V", "--version"}, versionHelp = true, description = "Print the version.")
    boolean version;

    enum DrillFault { kill, crash }

    static final class StepNumber implements CommandLine.ITypeConverter<Integer> {
        @Override
        public Integer convert(String value) {
            try {
                return Integer.parseInt(value);
            } catch (NumberFormatException e) {
                throw new CommandLine.TypeConversionException("--step takes numbers from --list, got '" + value + "'");
            }
        }
    }

    static final class FaultName implements CommandLine.ITypeConverter<DrillFault> {
        @Override
        public DrillFault convert(String value) {
            for (DrillFault f : DrillFault.values()) {
                if (f.name().equals(value)) {
                    return f;
                }
            }
            throw new CommandLine.TypeConversionException("--drill-fault takes kill or crash, got '" + value + "'");
        }
    }

    /** The command line this command runs in; set when the console's command line is made. */
    CommandLine commandLine;

    private PrintWriter out;
    private Terminal terminal;

    @Override
    public Integer call() {
        long start = System.nanoTime();
        out = commandLine.getOut();
        PrintWriter err = commandLine.getErr();
        terminal = Terminal.of(System.getenv(), noColor);
        List<Step> steps = FactorySequence.steps();
        List<Integer> chosen;
        try {
            chosen = select(steps, stepNumbers, keyword);
            check();
        } catch (IllegalArgumentException e) {
            err.println("mmi run: " + e.getMessage());
            return Console.USAGE;
        }
        if (list) {
            list(steps, chosen);
            return Console.OK;
        }
        String refused = device.apply();
        if (refused != null) {
            err.println("mmi run: " + refused);
            return Console.USAGE;
        }
        RunReport report = new RunReport(Console.version());
        report.options.addAll(setup());
        report.selected.addAll(chosen.stream().map(i -> i + 1).toList());
        report.repeat = repeat;
        report.drillService = noDrill ? null : drillService;
        report.drillFault = drillFault.name();
        if (device.startNote() != null) {
            err.println("mmi run: " + device.startNote());
        }
        try {
            report.loadLogs = Natives.startDevice();
        } catch (IllegalStateException e) {
            err.println("mmi run: " + e.getMessage());
            return Console.FAILED;
        }
        if (!quiet) {
            printLoad(report.loadLogs);
        }
        sequence(report, steps, chosen, err);
        if (report.drillService != null) {
            if (report.stopped) {
                report.drillSkipped = "stopped by -x";
            } else if (device.absent.contains(drillService)) {
                report.drillSkipped = drillService + " is absent";
            } else {
                drill(report);
            }
            if (report.drillSkipped != null && !quiet) {
                out.println();
                out.println("drill: skipped, " + report.drillSkipped);
            }
        }
        report.seconds = (System.nanoTime() - start) / 1e9;
        if (!quiet) {
            out.println();
        }
        for (String[] line : report.summary()) {
            if (line.length == 1) {
                out.println(line[0]);
            } else {
                Table.verdictLine(out, terminal, verbose, line[0], line[1]);
            }
        }
        for (String line : Table.wrap(report.verdictLine(), terminal.width)) {
            out.println(terminal.paint(report.passed() ? Terminal.Colour.BOLD_GREEN : Terminal.Colour.BOLD_RED, line));
        }
        out.flush();
        try {
            if (junit != null) {
                report.writeJunit(junit);
                err.println("mmi run: wrote JUnit XML to " + junit);
            }
            if (json != null) {
                report.writeJson(json);
                err.println("mmi run: wrote JSON to " + json);
            }
        } catch (IOException | XMLStreamException e) {
            err.println("mmi run: cannot write the results: " + OutputFiles.reason(e));
            return Console.USAGE;
        }
        return report.passed() ? Console.OK : Console.FAILED;
    }

    /** Refuses what cannot work, before the device starts. */
    private void check() {
        if (repeat < 1 || repeat > 100_000) {
            throw new IllegalArgumentException("--repeat takes 1 to 100000, got " + repeat);
        }
        if (list) {
            for (String option : List.of("--junit", "--json", "--repeat", "--exitfirst")) {
                OptionSpec given = commandLine.getParseResult().matchedOption(option);
                if (given != null) {
                    String typed = given.arity().max() == 0 ? option : option + " " + given.originalStringValues().get(0);
                    throw new IllegalArgumentException("--list runs nothing, so " + typed
                            + " has no effect; give one or the other");
                }
            }
        }
        if (quiet && verbose) {
            throw new IllegalArgumentException("-q and -v contradict each other; give one");
        }
        OutputFiles.check(List.of(new OutputFiles.Output("--junit", junit), new OutputFiles.Output("--json", json)));
    }

    /**
     * The indices of the steps --step and -k choose, in sequence order: all of them when neither
     * is given, those both accept when both are.
     */
    static List<Integer> select(List<Step> steps, List<Integer> numbers, String keyword) {
        for (int n : numbers) {
            if (n < 1 || n > steps.size()) {
                throw new IllegalArgumentException("--step " + n + ": the steps are numbered 1 to " + steps.size()
                        + " (--list shows them)");
            }
        }
        List<Integer> chosen = new ArrayList<>();
        for (int i = 0; i < steps.size(); i++) {
            boolean numbered = numbers.isEmpty() || numbers.contains(i + 1);
            boolean named = keyword == null
                    || steps.get(i).method.toLowerCase(Locale.ROOT).contains(keyword.toLowerCase(Locale.ROOT));
            if (numbered && named) {
                chosen.add(i);
            }
        }
        if (chosen.isEmpty()) {
            throw new IllegalArgumentException("no step matches -k " + keyword
                    + (numbers.isEmpty() ? "" : " among --step " + numbers) + " (--list shows the steps)");
        }
        return chosen;
    }

    /** Every option given that shapes the run, as typed, for the results files. */
    private List<String[]> setup() {
        List<String> outputOnly = List.of("--junit", "--json", "--verbose", "--quiet", "--no-color", "--list");
        List<String[]> options = new ArrayList<>();
        for (OptionSpec o : commandLine.getParseResult().matchedOptions()) {
            if (outputOnly.contains(o.longestName())) {
                continue;
            }
            List<String> values = o.originalStringValues();
            if (values.isEmpty()) {
                options.add(new String[] {o.longestName(), "true"});
            }
            for (String v : values) {
                options.add(new String[] {o.longestName(), v});
            }
        }
        return options;
    }

    private static final Pattern CONNECTED = Pattern.compile("g_kx(\\w+) linkToDeath");

    /** One line, unless verbose: how many services the library holds a handle to. */
    private void printLoad(String[] logs) {
        if (verbose) {
            out.println("Library loaded; it wrote:");
            for (String line : logs) {
                Table.line(out, terminal, true, "  log: " + line);
            }
            out.println();
            return;
        }
        List<String> connected = new ArrayList<>();
        for (String line : logs) {
            Matcher m = CONNECTED.matcher(line);
            if (m.find()) {
                connected.add(serviceOfHandle(m.group(1)));
            }
        }
        List<String> missing = new ArrayList<>(DeviceOptions.SERVICES);
        missing.removeAll(connected);
        out.println("library loaded: " + (DeviceOptions.SERVICES.size() - missing.size()) + " of "
                + DeviceOptions.SERVICES.size() + " services connected"
                + (missing.isEmpty() ? "" : " (" + String.join(", ", missing) + " missing)"));
        out.println();
    }

    /** The service behind one of the library's handles: g_kxFactoryInterface is the factory's. */
    static String serviceOfHandle(String handle) {
        String name = handle.toLowerCase(Locale.ROOT);
        return name.equals("factoryinterface") ? "factory" : name;
    }

    private void list(List<Step> steps, List<Integer> chosen) {
        List<String[]> rows = new ArrayList<>();
        for (int i : chosen) {
            Step s = steps.get(i);
            rows.add(new String[] {String.valueOf(i + 1), s.method, StepRecord.shownArguments(s.args, " "),
                s.expect.shown});
        }
        Table table = new Table(out, terminal, verbose, new String[] {"#", "method", "arguments", "healthy answer"},
                Table.widest(rows), new int[] {2, 24, 10, 10});
        for (String[] row : rows) {
            table.plain(row);
        }
    }

    /** Runs a step and judges its answer. */
    static StepRecord run(Step step) {
        StepRecord r = StepRecord.invoke(step.resolve(), step.args);
        r.expected = step.expect.shown;
        r.passed = r.thrown == null && step.expect.test(r.result);
        r.failedRuns = r.passed ? 0 : 1;
        return r;
    }

    /**
     * Runs the chosen steps, repeat times. A single round prints each row as its step ends; rounds
     * print a line each on stderr and the table once they are done, a row per step with its count
     * of failed runs.
     */
    private void sequence(RunReport report, List<Step> steps, List<Integer> chosen, PrintWriter err) {
        StepRecord[] records = new StepRecord[chosen.size()];
        Table table = null;
        if (!quiet) {
            out.println("Factory-test sequence");
            table = repeat == 1 ? sequenceTable(steps, chosen) : null;
        }
        for (int round = 1; round <= repeat && !report.stopped; round++) {
            int failed = 0;
            for (int k = 0; k < chosen.size(); k++) {
                Step step = steps.get(chosen.get(k));
                StepRecord r = run(step);
                r.number = chosen.get(k) + 1;
                records[k] = records[k] == null ? r : StepRecord.merge(records[k], r);
                if (table != null) {
                    printStep(table, step, r);
                }
                failed += r.passed ? 0 : 1;
                if (!r.passed && exitFirst) {
                    report.stopped = true;
                    break;
                }
            }
            if (repeat > 1) {
                err.println("mmi run: round " + round + " of " + repeat + ": " + failed + " of "
                        + RunReport.count(chosen.size(), "step") + " failed");
            }
        }
        for (StepRecord r : records) {
            if (r != null) {
                report.steps.add(r);
            }
        }
        if (quiet) {
            return;
        }
        if (table == null) {
            table = sequenceTable(steps, chosen);
            for (StepRecord r : report.steps) {
                printStep(table, steps.get(r.number - 1), r);
            }
        }
        int failed = report.failedSteps();
        long methods = report.steps.stream().map(s -> s.method).distinct().count();
        for (String line : Table.wrap("sequence: " + (report.steps.size() - failed) + " passed, " + failed
                + " failed of " + RunReport.count(report.steps.size(), "step") + " over "
                + RunReport.count((int) methods, "method") + (report.stopped ? "; stopped by -x" : ""), terminal.width)) {
            out.println(line);
        }
    }

    private Table sequenceTable(List<Step> steps, List<Integer> chosen) {
        List<String[]> rows = new ArrayList<>();
        for (int i : chosen) {
            Step s = steps.get(i);
            rows.add(new String[] {"FAIL", String.valueOf(i + 1), s.method + "(" + StepRecord.shownArguments(s.args, ", ")
                + ")", s.expect.shown});
        }
        int[] wanted = Table.widest(rows);
        // The answer is not known yet: it may take what a long healthy answer would.
        wanted[3] = Math.max(wanted[3], 30);
        return new Table(out, terminal, verbose, new String[] {"", "#", "call", "answer"}, wanted,
                new int[] {4, 2, 30, 12});
    }

    private void printStep(Table table, Step step, StepRecord r) {
        table.row(r.passed ? "PASS" : "FAIL", String.valueOf(r.number), r.method + "(" + r.shownArguments(", ") + ")",
                r.shown());
        if (!r.passed) {
            table.note("healthy answer: " + r.expected + (r.runs > 1 ? "; " + r.failedRuns + " of " + r.runs
                    + " runs failed" : ""));
        }
        if (step.showCalls || verbose) {
            for (String call : r.calls) {
                table.note("service received: " + call);
            }
        }
        r.fields.forEach((name, value) -> table.note("MmiNativeManager." + name + " = " + Values.format(value)));
        if (!r.passed || verbose) {
            for (String line : r.logs) {
                table.note("log: " + line);
            }
        }
    }

    /**
     * Kills one service and revives it. Any death releases every handle, so while it is down every
     * probe that answered before must answer its failure value without reaching a service; after the
     * registration report every probe must answer as before.
     */
    private void drill(RunReport report) {
        String service = report.drillService;
        if (!quiet) {
            out.println();
            out.println("Service-death drill: " + (drillFault == DrillFault.kill ? "kill " + service + ", then revive it"
                    : "crash " + service + " in a call, then " + (neverRestarts()
                            ? "revive it (it never restarts)" : "let it restart")));
        }
        SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();
        List<Probe> probes = FactorySequence.probes();
        List<StepRecord> before = probe(probes);

        String refused = fault(service, probes, before);
        if (refused != null) {
            report.drillSkipped = refused;
            return;
        }
        SimulatedDevice.waitIdle();
        report.killLogs = SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();
        List<StepRecord> down = probe(probes);
        List<String> downLogs = new ArrayList<>();
        int downCalls = 0;
        for (StepRecord r : down) {
            downLogs.addAll(List.of(r.logs));
            downCalls += r.calls.length;
        }
        report.downLogs = downLogs.toArray(new String[0]);

        // A crashed service restarts on its own, and what it logged meanwhile belongs to its revival;
        // one that never restarts must still be down, and the drill revives it as a killed one.
        List<String> reviveLogs = new ArrayList<>();
        if (drillFault == DrillFault.crash) {
            SimulatedDevice.waitRestarts();
            reviveLogs.addAll(List.of(SimulatedDevice.takeLogs()));
            if (neverRestarts()) {
                report.line(!contains(reviveLogs.toArray(new String[0]), "ReinitHal"), "the service stays down",
                        service + " stays down until the drill revives it (--restart-delay never)");
            }
        }
        if (revivedByDrill()) {
            SimulatedDevice.revive(service);
            SimulatedDevice.waitIdle();
            reviveLogs.addAll(List.of(SimulatedDevice.takeLogs()));
        }
        report.reviveLogs = reviveLogs.toArray(new String[0]);
        SimulatedDevice.takeCalls();
        List<StepRecord> after = probe(probes);

        List<String[]> rows = new ArrayList<>();
        int killedHealthy = 0;
        int othersHealthy = 0;
        for (int i = 0; i < probes.size(); i++) {
            Probe p = probes.get(i);
            StepRecord b = before.get(i);
            StepRecord d = down.get(i);
            StepRecord a = after.get(i);
            String request = p.step.method + "(" + b.shownArguments(", ") + ")";
            String why;
            RunReport.Status status;
            if (!b.passed) {
                why = "failing before the kill";
                status = RunReport.Status.SKIPPED;
            } else {
                if (p.service.equals(service)) {
                    killedHealthy++;
                } else {
                    othersHealthy++;
                }
                boolean released = d.thrown == null && p.step.isFailureValue(d.result);
                boolean restored = a.passed && b.shown().equals(a.shown());
                why = released && restored ? "ok" : !released ? "answered while down" : "not restored";
                status = released && restored ? RunReport.Status.OK : RunReport.Status.FAIL;
            }
            report.checks.add(new RunReport.DrillCheck(p.service + ": " + request, status, why,
                    List.of("before: " + b.shown(), "while down: " + d.shown(), "after revive: " + a.shown())));
            rows.add(new String[] {RunReport.verdict(status), p.service, request, d.shown(), a.shown(),
                (status == RunReport.Status.SKIPPED ? "not checked: " : "") + why + "; before: " + b.shown()
                        + ", while down: " + d.shown() + ", after revive: " + a.shown()});
        }
        report.line(killedHealthy > 0, "requests answer before the kill", killedHealthy + " request(s) of "
                + service + " and " + othersHealthy + " of other services answered before the kill");
        report.line(contains(report.killLogs, "ProcessServiceDied"), "the death is reported", "the death is reported");
        report.line(downCalls == 0, "no service is called while down",
                "no service is called while the handles are released (" + downCalls + " calls)");
        report.line(contains(report.reviveLogs, "ReinitHal"), "the new registration is reported",
                "the new registration is reported");
        if (!quiet) {
            printDrill(report, rows);
        }
    }

    private boolean neverRestarts() {
        return device.restartDelay != null && device.restartDelay < 0;
    }

    private boolean revivedByDrill() {
        return drillFault == DrillFault.kill || neverRestarts();
    }

    private void printDrill(RunReport report, List<String[]> rows) {
        String[] header = {"", "service", "request", "while down", revivedByDrill() ? "after revive" : "after restart"};
        Table table = new Table(out, terminal, verbose, header, Table.widest(rows), new int[] {4, 12, 16, 8, 8});
        for (String[] row : rows) {
            table.row(Arrays.copyOf(row, header.length));
            if (!row[0].equals("PASS")) {
                table.note(row[header.length]);
            }
        }
        for (RunReport.DrillCheck c : report.checks) {
            if (c.detail.isEmpty()) {
                Table.verdictLine(out, terminal, verbose, RunReport.verdict(c.status), c.message);
            }
        }
        if (verbose || report.passedChecks() < report.countedChecks()) {
            printLogs("at the kill", report.killLogs);
            printLogs("while down", report.downLogs);
            printLogs("at the revival", report.reviveLogs);
        }
        out.println("drill: " + report.passedChecks() + " of " + report.countedChecks() + " checks passed"
                + (report.countedChecks() < report.checks.size()
                        ? ", " + (report.checks.size() - report.countedChecks()) + " not checked" : ""));
    }

    /**
     * Takes the drill's service down: kills it, or makes the operation its first probe reaches
     * crash under that probe, then puts the operation's answer back as the command line set it.
     * Null when done, else why the drill cannot run.
     */
    private String fault(String service, List<Probe> probes, List<StepRecord> before) {
        if (drillFault == DrillFault.kill) {
            SimulatedDevice.kill(service);
            return null;
        }
        for (int i = 0; i < probes.size(); i++) {
            String[] calls = before.get(i).calls;
            if (!probes.get(i).service.equals(service) || calls.length == 0) {
                continue;
            }
            String operation = calls[0].substring(service.length() + 1, calls[0].indexOf('('));
            String error = SimulatedDevice.program(service, operation, "crash");
            if (error != null) {
                return "the device cannot crash " + service + "." + operation + ": " + error;
            }
            // The call's log lines and the death's stay for the drill to collect as the kill's.
            try {
                Natives.invoke(probes.get(i).step.resolve(), probes.get(i).step.args);
            } catch (Throwable t) {
                return "the crashing call of " + service + "." + operation + " threw " + t;
            }
            SimulatedDevice.resetAnswers();
            for (DeviceOptions.Answer a : device.answers) {
                String refused = DeviceOptions.program(a);
                if (refused != null) {
                    return "cannot program --answer " + a + " again: " + refused;
                }
            }
            return null;
        }
        return "no probe of " + service + " reaches it";
    }

    private static List<StepRecord> probe(List<Probe> probes) {
        List<StepRecord> records = new ArrayList<>();
        for (Probe p : probes) {
            records.add(run(p.step));
        }
        return records;
    }

    private static boolean contains(String[] lines, String text) {
        for (String line : lines) {
            if (line.contains(text)) {
                return true;
            }
        }
        return false;
    }

    private void printLogs(String when, String[] lines) {
        out.println("Log " + when + ":");
        for (String line : lines) {
            Table.line(out, terminal, verbose, "  log: " + line);
        }
    }
}
