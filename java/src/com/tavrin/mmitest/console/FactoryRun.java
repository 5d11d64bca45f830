package com.tavrin.mmitest.console;

import com.tavrin.mmitest.console.FactorySequence.Probe;
import com.tavrin.mmitest.console.FactorySequence.Step;
import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.PrintStream;
import java.util.ArrayList;
import java.util.List;
import java.util.StringJoiner;

/** {@code ./mmi run}: the factory-test sequence against a healthy device, then the service-death drill. */
final class FactoryRun {
    /** The service the drill kills. */
    static final String DRILL_SERVICE = "power";

    private FactoryRun() {}

    static int run(PrintStream out, PrintStream err) {
        SimulatedDevice.captureLogs();
        SimulatedDevice.start();
        try {
            Natives.load();
        } catch (IllegalStateException e) {
            err.println("mmi run: " + e.getMessage());
            return Console.FAILED;
        }
        SimulatedDevice.waitIdle();
        out.println("Library loaded; it wrote:");
        for (String line : SimulatedDevice.takeLogs()) {
            out.println("  log: " + line);
        }
        SimulatedDevice.takeCalls();
        out.println();
        sequence(out);
        out.println();
        // Only the drill decides the exit code: the sequence's verdicts stay informational while
        // native families are still being completed.
        return drill(out) ? Console.OK : Console.FAILED;
    }

    /** What one request answered, shown as the console prints values. */
    static final class Outcome {
        final Object answer;
        final String shown;
        final boolean healthy;

        Outcome(Step step) {
            Object value;
            String text;
            boolean ok;
            try {
                value = Natives.invoke(step.resolve(), step.args);
                text = Values.format(value);
                ok = step.expect.test(value);
            } catch (Throwable t) {
                value = t;
                text = "threw " + t;
                ok = false;
            }
            answer = value;
            shown = text;
            healthy = ok;
        }
    }

    static String arguments(Object[] args, String separator) {
        StringJoiner shown = new StringJoiner(separator);
        for (Object a : args) {
            shown.add(Values.format(a));
        }
        return shown.toString();
    }

    /**
     * Runs every step and prints one row each. The verdicts are informational while native families
     * are still being completed: an unfinished family answers its failure values and shows as FAIL.
     */
    static void sequence(PrintStream out) {
        List<Step> steps = FactorySequence.steps();
        Table table = new Table(new int[] {0, 0, 30, 34, 0, 0},
                "#", "method", "arguments", "answer", "verdict", "healthy answer");
        int passed = 0;
        for (int i = 0; i < steps.size(); i++) {
            Step step = steps.get(i);
            Outcome outcome = new Outcome(step);
            String[] logs = SimulatedDevice.takeLogs();
            String[] calls = SimulatedDevice.takeCalls();
            table.row(String.valueOf(i + 1), step.method, arguments(step.args, " "), outcome.shown,
                    outcome.healthy ? "PASS" : "FAIL", step.expect.shown);
            if (step.showCalls) {
                for (String call : calls) {
                    table.note("service received: " + call);
                }
            }
            if (step.showField != null) {
                table.note("MmiNativeManager." + step.showField + " = " + Values.format(staticField(step.showField)));
            }
            if (outcome.healthy) {
                passed++;
            } else {
                for (String line : logs) {
                    table.note("log: " + line);
                }
            }
        }
        long methods = steps.stream().map(s -> s.method).distinct().count();
        out.println("Factory-test sequence");
        table.print(out);
        out.println("sequence: " + passed + " passed, " + (steps.size() - passed) + " failed of " + steps.size()
                + " steps over " + methods + " methods");
    }

    private static Object staticField(String name) {
        try {
            return MmiNativeManager.class.getField(name).get(null);
        } catch (ReflectiveOperationException e) {
            throw new IllegalStateException(e);
        }
    }

    /**
     * Kills one service and revives it. Any death releases every handle, so while it is down every
     * probe that answered before must answer its failure value without reaching a service; after the
     * registration report every probe must answer as before.
     */
    static boolean drill(PrintStream out) {
        out.println("Service-death drill: kill " + DRILL_SERVICE + ", then revive it");
        SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();
        List<Probe> probes = FactorySequence.probes();
        Tally checks = new Tally();

        List<Outcome> before = new ArrayList<>();
        Table table = new Table(new int[6], "service", "request", "before", "while down", "after revive", "check");
        for (Probe p : probes) {
            before.add(new Outcome(p.step));
        }
        SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();

        SimulatedDevice.kill(DRILL_SERVICE);
        SimulatedDevice.waitIdle();
        String[] deathLogs = SimulatedDevice.takeLogs();
        List<Outcome> down = new ArrayList<>();
        for (Probe p : probes) {
            down.add(new Outcome(p.step));
        }
        String[] downLogs = SimulatedDevice.takeLogs();
        String[] downCalls = SimulatedDevice.takeCalls();

        SimulatedDevice.revive(DRILL_SERVICE);
        SimulatedDevice.waitIdle();
        String[] reviveLogs = SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();
        List<Outcome> after = new ArrayList<>();
        for (Probe p : probes) {
            after.add(new Outcome(p.step));
        }
        SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();

        int killedHealthy = 0;
        int othersHealthy = 0;
        for (int i = 0; i < probes.size(); i++) {
            Probe p = probes.get(i);
            String verdict;
            if (!before.get(i).healthy) {
                verdict = "not checked: failing before the kill";
            } else {
                if (p.service.equals(DRILL_SERVICE)) {
                    killedHealthy++;
                } else {
                    othersHealthy++;
                }
                boolean released = p.step.isFailureValue(down.get(i).answer);
                boolean restored = after.get(i).healthy && before.get(i).shown.equals(after.get(i).shown);
                verdict = released && restored ? "ok" : !released ? "FAIL: answered while down" : "FAIL: not restored";
                checks.count(released && restored);
            }
            table.row(p.service, p.step.method + "(" + arguments(p.step.args, ", ") + ")", before.get(i).shown,
                    down.get(i).shown, after.get(i).shown, verdict);
        }
        checks.line(killedHealthy > 0, killedHealthy + " request(s) of " + DRILL_SERVICE + " and " + othersHealthy
                + " of other services answered before the kill");
        checks.line(contains(deathLogs, "ProcessServiceDied"), "the death is reported");
        checks.line(downCalls.length == 0,
                "no service is called while the handles are released (" + downCalls.length + " calls)");
        checks.line(contains(reviveLogs, "ReinitHal"), "the new registration is reported");

        table.print(out);
        printLogs(out, "at the kill", deathLogs);
        printLogs(out, "while down", downLogs);
        printLogs(out, "at the revival", reviveLogs);
        for (String line : checks.lines) {
            out.println("  " + line);
        }
        out.println("drill: " + checks.passed + " of " + checks.total + " checks passed");
        return checks.passed == checks.total;
    }

    private static final class Tally {
        int total;
        int passed;
        final List<String> lines = new ArrayList<>();

        /** A check shown in a table row. */
        void count(boolean ok) {
            total++;
            passed += ok ? 1 : 0;
        }

        /** A check shown on a line of its own. */
        void line(boolean ok, String what) {
            count(ok);
            lines.add((ok ? "ok    " : "FAIL  ") + what);
        }
    }

    private static boolean contains(String[] lines, String text) {
        for (String line : lines) {
            if (line.contains(text)) {
                return true;
            }
        }
        return false;
    }

    private static void printLogs(PrintStream out, String when, String[] lines) {
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

        void print(PrintStream out) {
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
