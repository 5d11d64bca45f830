package com.tavrin.mmitest.console;

import com.tavrin.mmitest.console.FactorySequence.Probe;
import com.tavrin.mmitest.console.FactorySequence.Step;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;

import javax.xml.stream.XMLStreamException;

import picocli.CommandLine;
import picocli.CommandLine.Command;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Option;

/** {@code ./mmi run}: the factory-test sequence, then the service-death drill. */
@Command(name = "run", sortOptions = false, header = "The factory-test sequence, then a service-death drill",
        description = {"The factory-test sequence over every native method against the simulated device, one row "
                + "per step with its verdict, then a drill that kills and revives the power service. The exit "
                + "code is 0 when every step and every drill check passes."})
final class FactoryRun implements Callable<Integer> {
    /** The service the drill kills. */
    static final String DRILL_SERVICE = "power";

    @Mixin
    DeviceOptions device = new DeviceOptions();

    @Option(names = "--junit", paramLabel = "FILE", description = "Write the results as JUnit XML.")
    Path junit;

    @Option(names = "--json", paramLabel = "FILE", description = "Write the results as JSON.")
    Path json;

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Print this help.")
    boolean help;

    /** The command line this command runs in; set when the console's command line is made. */
    CommandLine commandLine;

    @Override
    public Integer call() {
        PrintWriter out = commandLine.getOut();
        PrintWriter err = commandLine.getErr();
        String refused = device.apply();
        if (refused != null) {
            err.println("mmi run: " + refused);
            return Console.USAGE;
        }
        RunReport report = new RunReport(DRILL_SERVICE);
        try {
            report.loadLogs = Natives.startDevice();
        } catch (IllegalStateException e) {
            err.println("mmi run: " + e.getMessage());
            return Console.FAILED;
        }
        out.println("Library loaded; it wrote:");
        for (String line : report.loadLogs) {
            out.println("  log: " + line);
        }
        out.println();
        sequence(out, report);
        out.println();
        drill(out, report);
        try {
            if (junit != null) {
                report.writeJunit(junit);
            }
            if (json != null) {
                report.writeJson(json);
            }
        } catch (IOException | XMLStreamException e) {
            err.println("mmi run: cannot write the results: " + e);
            return Console.FAILED;
        }
        return report.passed() ? Console.OK : Console.FAILED;
    }

    /** Runs a step and judges its answer. */
    static StepRecord run(Step step) {
        StepRecord r = StepRecord.invoke(step.resolve(), step.args);
        r.expected = step.expect.shown;
        r.passed = r.thrown == null && step.expect.test(r.result);
        return r;
    }

    /** Runs every step and prints one row each, with its log lines when it fails. */
    static void sequence(PrintWriter out, RunReport report) {
        List<Step> steps = FactorySequence.steps();
        Table table = new Table(new int[] {0, 0, 30, 34, 0, 0},
                "#", "method", "arguments", "answer", "verdict", "healthy answer");
        for (int i = 0; i < steps.size(); i++) {
            Step step = steps.get(i);
            StepRecord r = run(step);
            report.steps.add(r);
            table.row(String.valueOf(i + 1), step.method, r.shownArguments(" "), r.shown(),
                    r.passed ? "PASS" : "FAIL", step.expect.shown);
            if (step.showCalls) {
                for (String call : r.calls) {
                    table.note("service received: " + call);
                }
            }
            r.fields.forEach((name, value) -> table.note("MmiNativeManager." + name + " = " + Values.format(value)));
            if (!r.passed) {
                for (String line : r.logs) {
                    table.note("log: " + line);
                }
            }
        }
        long methods = steps.stream().map(s -> s.method).distinct().count();
        int failed = report.failedSteps();
        out.println("Factory-test sequence");
        table.print(out);
        out.println("sequence: " + (steps.size() - failed) + " passed, " + failed + " failed of " + steps.size()
                + " steps over " + methods + " methods");
    }

    /**
     * Kills one service and revives it. Any death releases every handle, so while it is down every
     * probe that answered before must answer its failure value without reaching a service; after the
     * registration report every probe must answer as before.
     */
    static void drill(PrintWriter out, RunReport report) {
        out.println("Service-death drill: kill " + DRILL_SERVICE + ", then revive it");
        SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();
        List<Probe> probes = FactorySequence.probes();
        List<StepRecord> before = probe(probes);

        SimulatedDevice.kill(DRILL_SERVICE);
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

        SimulatedDevice.revive(DRILL_SERVICE);
        SimulatedDevice.waitIdle();
        report.reviveLogs = SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();
        List<StepRecord> after = probe(probes);

        Table table = new Table(new int[6], "service", "request", "before", "while down", "after revive", "check");
        int killedHealthy = 0;
        int othersHealthy = 0;
        for (int i = 0; i < probes.size(); i++) {
            Probe p = probes.get(i);
            StepRecord b = before.get(i);
            StepRecord d = down.get(i);
            StepRecord a = after.get(i);
            String request = p.step.method + "(" + b.shownArguments(", ") + ")";
            String verdict;
            RunReport.Status status;
            if (!b.passed) {
                verdict = "not checked: failing before the kill";
                status = RunReport.Status.SKIPPED;
            } else {
                if (p.service.equals(DRILL_SERVICE)) {
                    killedHealthy++;
                } else {
                    othersHealthy++;
                }
                boolean released = d.thrown == null && p.step.isFailureValue(d.result);
                boolean restored = a.passed && b.shown().equals(a.shown());
                verdict = released && restored ? "ok" : !released ? "FAIL: answered while down" : "FAIL: not restored";
                status = released && restored ? RunReport.Status.OK : RunReport.Status.FAIL;
            }
            report.checks.add(new RunReport.DrillCheck(p.service + ": " + request, status, verdict,
                    List.of("before: " + b.shown(), "while down: " + d.shown(), "after revive: " + a.shown())));
            table.row(p.service, request, b.shown(), d.shown(), a.shown(), verdict);
        }
        report.line(killedHealthy > 0, "requests answer before the kill", killedHealthy + " request(s) of "
                + DRILL_SERVICE + " and " + othersHealthy + " of other services answered before the kill");
        report.line(contains(report.killLogs, "ProcessServiceDied"), "the death is reported", "the death is reported");
        report.line(downCalls == 0, "no service is called while down",
                "no service is called while the handles are released (" + downCalls + " calls)");
        report.line(contains(report.reviveLogs, "ReinitHal"), "the new registration is reported",
                "the new registration is reported");

        table.print(out);
        printLogs(out, "at the kill", report.killLogs);
        printLogs(out, "while down", report.downLogs);
        printLogs(out, "at the revival", report.reviveLogs);
        for (RunReport.DrillCheck c : report.checks) {
            if (c.detail.isEmpty()) {
                out.println("  " + (c.status == RunReport.Status.OK ? "ok    " : "FAIL  ") + c.message);
            }
        }
        out.println("drill: " + report.passedChecks() + " of " + report.countedChecks() + " checks passed");
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

    private static void printLogs(PrintWriter out, String when, String[] lines) {
        out.println("Log " + when + ":");
        for (String line : lines) {
            out.println("  log: " + line);
        }
    }

    /** Columns as wide as their widest cell up to a limit; longer cells are cut with "...". */
    static final class Table {
        private final int[] limits;
        private final List<String[]> rows = new ArrayList<>();
        private final List<List<String>> notes = new ArrayList<>();

        /** limits: the widest each column's cells may be, 0 for no limit. */
        Table(int[] limits, String... header) {
            this.limits = limits;
            rows.add(header);
            notes.add(new ArrayList<>());
        }

        void row(String... cells) {
            rows.add(cells);
            notes.add(new ArrayList<>());
        }

        /** A line under the last row. */
        void note(String line) {
            notes.get(notes.size() - 1).add(line);
        }

        static String cut(String cell, int limit) {
            return limit == 0 || cell.length() <= limit ? cell : cell.substring(0, limit - 3) + "...";
        }

        void print(PrintWriter out) {
            int columns = rows.get(0).length;
            int[] width = new int[columns];
            for (String[] row : rows) {
                for (int c = 0; c < columns; c++) {
                    width[c] = Math.max(width[c], cut(row[c], limits[c]).length());
                }
            }
            for (int r = 0; r < rows.size(); r++) {
                StringBuilder line = new StringBuilder(" ");
                for (int c = 0; c < columns; c++) {
                    String cell = cut(rows.get(r)[c], limits[c]);
                    line.append(' ').append(cell);
                    if (c + 1 < columns) {
                        line.append(" ".repeat(width[c] - cell.length() + 1));
                    }
                }
                out.println(line);
                for (String note : notes.get(r)) {
                    out.println("      " + note);
                }
            }
        }
    }
}
