package com.tavrin.mmitest.console;

import com.google.gson.FieldNamingPolicy;
import com.google.gson.Gson;
import com.google.gson.annotations.SerializedName;
import com.tavrin.mmitest.sim.LogLine;

import java.io.IOException;
import java.io.OutputStream;
import java.nio.charset.StandardCharsets;
import java.time.OffsetDateTime;
import java.time.format.DateTimeFormatter;
import java.time.temporal.ChronoUnit;
import java.util.ArrayList;
import java.util.IntSummaryStatistics;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.stream.Collectors;
import java.util.stream.Stream;

/**
 * What {@code ./mmi run} found, for the files a CI server or a script reads: the sequence's steps
 * and the drill's checks, as JUnit XML (one test case each) or as JSON. Both carry the console's
 * mark, so that a later run knows it may replace them.
 */
final class RunReport {
    /** A drill check's outcome: its word in the tables and the JUnit element that marks it (none when it passed). */
    enum Status {
        @SerializedName("ok") OK("PASS", null), @SerializedName("fail") FAIL("FAIL", "failure"),
        @SerializedName("skipped") SKIPPED("SKIP", "skipped");

        final String verdict;
        final String junit;

        Status(String verdict, String junit) {
            this.verdict = verdict;
            this.junit = junit;
        }
    }

    /**
     * One check of the drill: a probe's row (named SERVICE: REQUEST, its answers before, while down
     * and after as detail), or a check on a line of its own (no detail).
     */
    record DrillCheck(String name, Status status, String message, List<String> detail, double durationMs) {
        static DrillCheck line(boolean ok, String name, String message, double seconds) {
            return new DrillCheck(name, ok ? Status.OK : Status.FAIL, message, List.of(), ms(seconds));
        }

        /** A probe's row of the drill's table: verdict, service, request, answer while down and after. */
        String[] row() {
            List<String> cells = new ArrayList<>(List.of(status.verdict));
            cells.addAll(List.of(name.split(": ", 2)));
            detail.subList(1, 3).forEach(labelled -> cells.add(labelled.substring(labelled.indexOf(": ") + 2)));
            return cells.toArray(new String[0]);
        }
    }

    final String version;
    /** When the run started, with its offset, to the second: always with the seconds, which toString drops at :00. */
    final String started;
    /** The same local time without the offset, as JUnit's timestamp attribute takes it. */
    final String timestamp;
    /** The options that shaped the run, as typed: name and value. */
    final List<Option> options = new ArrayList<>();
    /** The numbers of the steps chosen to run, each run repeat times. */
    final List<Integer> selected = new ArrayList<>();
    int repeat = 1;
    /** Whether -x stopped the sequence at a failure. */
    boolean stopped;
    /** The service the drill kills and how, null when asked to run no drill; why it did not run when it did not. */
    String drillService;
    Drill.Fault drillFault = Drill.Fault.kill;
    String drillSkipped;
    /** From the start of the command to the end of the drill. */
    double seconds;
    List<LogLine> loadLogs = List.of();
    final List<StepRecord> steps = new ArrayList<>();
    final List<DrillCheck> checks = new ArrayList<>();
    List<LogLine> killLogs = List.of();
    List<LogLine> downLogs = List.of();
    List<LogLine> reviveLogs = List.of();

    RunReport(String version, OffsetDateTime start) {
        this.version = version;
        OffsetDateTime second = start.truncatedTo(ChronoUnit.SECONDS);
        started = second.format(DateTimeFormatter.ISO_OFFSET_DATE_TIME);
        timestamp = second.toLocalDateTime().format(DateTimeFormatter.ISO_LOCAL_DATE_TIME);
    }

    static double ms(double seconds) {
        return Math.round(seconds * 1e6) / 1e3;
    }

    int failedSteps() {
        return (int) steps.stream().filter(s -> !s.passed()).count();
    }

    int countedChecks() {
        return (int) checks.stream().filter(c -> c.status() != Status.SKIPPED).count();
    }

    int passedChecks() {
        return (int) checks.stream().filter(c -> c.status() == Status.OK).count();
    }

    /** ", N not checked" for the drill's probes that failed before the kill; empty when there are none. */
    String notChecked() {
        return checks.size() > countedChecks() ? ", " + (checks.size() - countedChecks()) + " not checked" : "";
    }

    boolean passed() {
        return failedSteps() == 0 && passedChecks() == countedChecks();
    }

    static String count(int n, String noun) {
        return n + " " + noun + (n == 1 ? "" : "s");
    }

    /**
     * The closing summary before the verdict line: every failed step and drill check again, then
     * every probe that could not be checked. Each line is a verdict and a text, or a heading alone.
     */
    List<String[]> summary() {
        List<String[]> lines = new ArrayList<>();
        for (StepRecord s : steps) {
            if (!s.passed()) {
                lines.add(new String[] {"FAIL", "step " + s.number + " " + s.request() + ": " + s.runsFailed()
                        + s.why()});
            }
        }
        for (DrillCheck c : checks) {
            if (c.status() == Status.FAIL) {
                lines.add(new String[] {"FAIL", "drill " + c.name() + ": " + c.message()
                        + (c.detail().isEmpty() ? "" : " (" + String.join(", ", c.detail()) + ")")});
            }
        }
        if (!lines.isEmpty()) {
            lines.add(0, new String[] {"Failures:"});
        }
        List<String[]> skipped = checks.stream().filter(c -> c.status() == Status.SKIPPED)
                .map(c -> new String[] {"SKIP", "drill " + c.name() + ": " + c.message()}).toList();
        if (!skipped.isEmpty()) {
            lines.add(new String[] {"Not checked:"});
            lines.addAll(skipped);
        }
        return lines;
    }

    /** The last line: PASSED or FAILED, the counts of what ran and the time taken. */
    String verdictLine() {
        boolean passed = passed();
        int counted = countedChecks();
        String line = (passed ? "PASSED: " : "FAILED: ") + (passed ? steps.size() : failedSteps()) + " of "
                + count(steps.size(), "step");
        if (drillService != null && drillSkipped == null) {
            line += ", " + (passed ? counted : counted - passedChecks()) + " of " + count(counted, "drill check");
        }
        line += (passed ? " passed" : " failed") + notChecked();
        if (stopped) {
            line += ", stopped by -x";
        } else if (drillService != null && drillSkipped != null) {
            line += ", drill skipped: " + drillSkipped;
        }
        // The runs each step made, which -x may have cut short.
        IntSummaryStatistics runs = steps.stream().mapToInt(s -> s.runs).summaryStatistics();
        String each = runs.getMax() <= 1 ? "" : (runs.getMin() == runs.getMax() ? "" : runs.getMin() + "-")
                + runs.getMax() + " runs each, ";
        return line + String.format(Locale.ROOT, " (%s%.1f s)", each, seconds);
    }

    /**
     * The verdict once the results files are written: a run whose results were lost failed, whatever
     * its steps did, and its last line says so first, where a script reading it with tail -1 looks.
     */
    static String verdictLine(String verdict, List<String> unwritten) {
        if (unwritten.isEmpty()) {
            return verdict;
        }
        return "FAILED: results not written (" + String.join(", ", unwritten) + "); "
                + verdict.replaceFirst("^(PASSED|FAILED): ", "");
    }

    /** The run's setup, one name and value each, as JUnit properties carry it. */
    List<Option> properties() {
        List<Option> p = new ArrayList<>(List.of(new Option("version", version), new Option("started", started)));
        p.addAll(options);
        p.addAll(List.of(new Option("steps", ranges(selected)), new Option("repeat", String.valueOf(repeat)),
                new Option("drill", drillService == null ? "none" : drillService + " " + drillFault
                        + (drillSkipped == null ? "" : ", skipped: " + drillSkipped))));
        return p;
    }

    /** Numbers as 1-12,15,20-22, the form --step reads. */
    static String ranges(List<Integer> numbers) {
        List<String> parts = new ArrayList<>();
        for (int i = 0; i < numbers.size(); i++) {
            int first = numbers.get(i);
            while (i + 1 < numbers.size() && numbers.get(i + 1) == numbers.get(i) + 1) {
                i++;
            }
            parts.add(first == numbers.get(i) ? String.valueOf(first) : first + "-" + numbers.get(i));
        }
        return String.join(",", parts);
    }

    /** The JSON file's layout; names are written in snake case. */
    record Json(String generator, boolean passed, String version, String timestamp, String started, long durationMs,
            Setup setup, List<Log> loadLogs, Sequence sequence, DrillJson drill) {}

    record Setup(List<Option> options, List<Integer> steps, int repeat, String drill, Drill.Fault drillFault) {}

    /** A name and a value of the run's setup: an option as typed, or a JUnit property. */
    record Option(String option, String value) {}

    record Sequence(int passed, int failed, boolean stoppedAtFirstFailure, List<StepRecord> steps) {}

    record DrillJson(String service, Drill.Fault fault, String skipped, int passed, int failed, double durationMs,
            List<DrillCheck> checks, List<Log> killLogs, List<Log> downLogs, List<Log> reviveLogs) {}

    /** A log line as its priority letter and its text, the tag in front. */
    record Log(String priority, String text) {
        static List<Log> of(List<LogLine> lines) {
            return lines.stream().map(l -> new Log(String.valueOf(l.priority()),
                    (l.tag().isEmpty() ? "" : l.tag() + ": ") + l.text())).toList();
        }
    }

    private static final Gson GSON = Values.GSON.newBuilder().setPrettyPrinting()
            .setFieldNamingPolicy(FieldNamingPolicy.LOWER_CASE_WITH_UNDERSCORES).create();

    Json json() {
        DrillJson drill = drillService == null ? null : new DrillJson(drillService, drillFault, drillSkipped,
                passedChecks(), countedChecks() - passedChecks(),
                checks.stream().mapToDouble(DrillCheck::durationMs).sum(), checks, Log.of(killLogs), Log.of(downLogs),
                Log.of(reviveLogs));
        return new Json(OutputFiles.MARK, passed(), version, timestamp, started, Math.round(seconds * 1e3),
                new Setup(options, selected, repeat, drillService, drillFault), Log.of(loadLogs),
                new Sequence(steps.size() - failedSteps(), failedSteps(), stopped, steps), drill);
    }

    void writeJson(OutputStream bytes) throws IOException {
        bytes.write((Values.ascii(GSON.toJson(json())) + "\n").getBytes(StandardCharsets.US_ASCII));
    }

    /** One test case: how it did not pass (failure, error or skipped) and why, or a null kind. */
    private record Case(String classname, String name, double seconds, String kind, String message,
            List<String> text, List<String> out) {}

    /**
     * The layout CI servers read: testsuites, one testsuite per part with its counts, one testcase
     * per step or check with a failure, error or skipped child when it did not pass.
     */
    void writeJunit(OutputStream bytes) throws IOException {
        List<Case> sequence = steps.stream().map(RunReport::stepCase).toList();
        List<Case> drill = drillService == null ? List.of() : drillSkipped == null
                ? checks.stream().map(this::checkCase).toList()
                : List.of(new Case("mmi.drill", "drill", 0, "skipped", "skipped: " + drillSkipped, null, List.of()));
        StringBuilder xml = new StringBuilder("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\""
                + OutputFiles.MARK + "\"" + counts(Stream.concat(sequence.stream(), drill.stream()).toList()) + ">\n");
        xml.append(suite(0, "factory-test sequence", sequence));
        if (drillService != null) {
            xml.append("\n").append(suite(1, "service-death drill: " + drillFault + " " + drillService
                    + ", then revive it", drill));
        }
        bytes.write(xml.append("</testsuites>\n").toString().getBytes(StandardCharsets.UTF_8));
    }

    private static Case stepCase(StepRecord s) {
        List<String> text = new ArrayList<>(List.of("method: " + s.method,
                "arguments: " + StepRecord.shownArguments(s.args, " "), "answer: " + s.shown(),
                "healthy answer: " + s.expected));
        text.addAll(s.detail());
        return new Case("mmi.sequence", String.format(Locale.ROOT, "%02d %s", s.number, s.method), s.seconds,
                s.passed() ? null : s.thrown != null ? "error" : "failure", s.runsFailed() + s.method + " " + s.why(),
                text, s.detail());
    }

    private Case checkCase(DrillCheck c) {
        List<String> text = new ArrayList<>(c.detail());
        killLogs.forEach(line -> text.add("log at the kill: " + line));
        downLogs.forEach(line -> text.add("log while down: " + line));
        reviveLogs.forEach(line -> text.add("log at the revival: " + line));
        return new Case("mmi.drill", c.name(), c.durationMs() / 1e3, c.status().junit, c.message(), text, List.of());
    }

    private String suite(int id, String name, List<Case> cases) {
        StringBuilder xml = new StringBuilder("<testsuite id=\"" + id + "\" name=" + attribute(name)
                + " package=\"mmi\" hostname=\"localhost\" timestamp=\"" + timestamp + "\"" + counts(cases)
                + ">\n  <properties>");
        properties().forEach(p -> xml.append("<property name=" + attribute(p.option()) + " value="
                + attribute(p.value()) + "/>"));
        xml.append("</properties>\n");
        for (Case c : cases) {
            String outcome = c.kind() == null ? "" : "<" + c.kind() + " message=" + attribute(c.message())
                    + (c.kind().equals("skipped") ? "/>" : " type=\"" + (c.kind().equals("error") ? "exception"
                    : "verdict") + "\">" + escape(String.join("\n", c.text()), false) + "</" + c.kind() + ">");
            String out = c.out().isEmpty() ? "" : "<system-out>" + escape(String.join("\n", c.out()), false)
                    + "</system-out>";
            xml.append(String.format(Locale.ROOT, "  <testcase classname=\"%s\" name=%s time=\"%.6f\">%s%s"
                    + "</testcase>\n", c.classname(), attribute(c.name()), c.seconds(), outcome, out));
        }
        return xml.append("</testsuite>\n").toString();
    }

    /** The counts of a suite or of the whole file, from its cases. */
    private static String counts(List<Case> cases) {
        Map<String, Long> kinds = cases.stream().filter(c -> c.kind() != null)
                .collect(Collectors.groupingBy(Case::kind, Collectors.counting()));
        return String.format(Locale.ROOT, " tests=\"%d\" failures=\"%d\" errors=\"%d\" skipped=\"%d\" time=\"%.6f\"",
                cases.size(), kinds.getOrDefault("failure", 0L), kinds.getOrDefault("error", 0L),
                kinds.getOrDefault("skipped", 0L), cases.stream().mapToDouble(Case::seconds).sum());
    }

    private static String attribute(String value) {
        return "\"" + escape(value, true) + "\"";
    }

    /**
     * Text for an XML document: markup characters as entities, and every character XML 1.0 cannot
     * carry (controls other than tab and line breaks, unpaired surrogates, U+FFFE and U+FFFF) as
     * \\uXXXX: a device may answer anything.
     */
    static String escape(String text, boolean attribute) {
        String s = Terminal.escape(text.codePoints(), c -> (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
                || (c >= Character.MIN_SURROGATE && c <= Character.MAX_SURROGATE) || c == 0xfffe || c == 0xffff)
                .replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;");
        return attribute ? s.replace("\"", "&quot;") : s;
    }
}
