package com.tavrin.mmitest.console;

import com.google.gson.stream.JsonWriter;

import java.io.IOException;
import java.io.OutputStream;
import java.io.Writer;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.LocalDateTime;
import java.time.format.DateTimeFormatter;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;

import javax.xml.stream.XMLOutputFactory;
import javax.xml.stream.XMLStreamException;
import javax.xml.stream.XMLStreamWriter;

/**
 * What {@code ./mmi run} found, for the files a CI server or a script reads: the sequence's steps
 * and the drill's checks, as JUnit XML (one test case each) or as JSON.
 */
final class RunReport {
    enum Status { OK, FAIL, SKIPPED }

    /** One check of the drill: a probe's row, or a check on a line of its own (no detail). */
    static final class DrillCheck {
        final String name;
        final Status status;
        final String message;
        final List<String> detail;

        DrillCheck(String name, Status status, String message, List<String> detail) {
            this.name = name;
            this.status = status;
            this.message = message;
            this.detail = detail;
        }
    }

    final String drillService;
    final String timestamp = LocalDateTime.now().format(DateTimeFormatter.ofPattern("yyyy-MM-dd'T'HH:mm:ss"));
    String[] loadLogs = new String[0];
    final List<StepRecord> steps = new ArrayList<>();
    final List<DrillCheck> checks = new ArrayList<>();
    String[] killLogs = new String[0];
    String[] downLogs = new String[0];
    String[] reviveLogs = new String[0];

    RunReport(String drillService) {
        this.drillService = drillService;
    }

    /** A check shown on a line of its own. */
    void line(boolean ok, String name, String message) {
        checks.add(new DrillCheck(name, ok ? Status.OK : Status.FAIL, message, List.of()));
    }

    int failedSteps() {
        return (int) steps.stream().filter(s -> !s.passed).count();
    }

    int countedChecks() {
        return (int) checks.stream().filter(c -> c.status != Status.SKIPPED).count();
    }

    int passedChecks() {
        return (int) checks.stream().filter(c -> c.status == Status.OK).count();
    }

    boolean passed() {
        return failedSteps() == 0 && passedChecks() == countedChecks();
    }

    void writeJson(Path file) throws IOException {
        try (Writer text = Files.newBufferedWriter(file, StandardCharsets.UTF_8);
                JsonWriter out = Values.jsonWriter(text)) {
            out.setIndent("  ");
            writeJson(out);
        }
    }

    void writeJson(JsonWriter out) throws IOException {
        out.beginObject();
        out.name("passed").value(passed());
        out.name("timestamp").value(timestamp);
        StepRecord.writeLogs(out, "load_logs", loadLogs);
        out.name("sequence").beginObject();
        out.name("passed").value(steps.size() - failedSteps());
        out.name("failed").value(failedSteps());
        out.name("steps").beginArray();
        for (StepRecord s : steps) {
            s.writeJson(out);
        }
        out.endArray();
        out.endObject();
        out.name("drill").beginObject();
        out.name("service").value(drillService);
        out.name("passed").value(passedChecks());
        out.name("failed").value(countedChecks() - passedChecks());
        out.name("checks").beginArray();
        for (DrillCheck c : checks) {
            out.beginObject();
            out.name("name").value(c.name);
            out.name("status").value(c.status.name().toLowerCase(Locale.ROOT));
            out.name("message").value(c.message);
            out.name("detail").beginArray();
            for (String line : c.detail) {
                out.value(line);
            }
            out.endArray();
            out.endObject();
        }
        out.endArray();
        StepRecord.writeLogs(out, "kill_logs", killLogs);
        StepRecord.writeLogs(out, "down_logs", downLogs);
        StepRecord.writeLogs(out, "revive_logs", reviveLogs);
        out.endObject();
        out.endObject();
    }

    void writeJunit(Path file) throws IOException, XMLStreamException {
        try (OutputStream bytes = Files.newOutputStream(file)) {
            XMLStreamWriter out = XMLOutputFactory.newFactory().createXMLStreamWriter(bytes, "UTF-8");
            writeJunit(out);
            out.close();
        }
    }

    /**
     * The layout CI servers read: testsuites, one testsuite per part with its counts, one testcase
     * per step or check with a failure, error or skipped child when it did not pass.
     */
    void writeJunit(XMLStreamWriter out) throws XMLStreamException {
        int stepErrors = (int) steps.stream().filter(s -> s.thrown != null).count();
        int stepFailures = failedSteps() - stepErrors;
        int checkFailures = countedChecks() - passedChecks();
        int skipped = checks.size() - countedChecks();
        double seconds = steps.stream().mapToDouble(s -> s.seconds).sum();

        out.writeStartDocument("UTF-8", "1.0");
        out.writeCharacters("\n");
        out.writeStartElement("testsuites");
        out.writeAttribute("name", "mmi run");
        counts(out, steps.size() + checks.size(), stepFailures + checkFailures, stepErrors, skipped, seconds);

        suite(out, 0, "factory-test sequence", steps.size(), stepFailures, stepErrors, 0, seconds);
        for (int i = 0; i < steps.size(); i++) {
            StepRecord s = steps.get(i);
            testcase(out, "mmi.sequence", String.format(Locale.ROOT, "%02d %s", i + 1, s.method), s.seconds);
            if (!s.passed) {
                List<String> text = new ArrayList<>(List.of("method: " + s.method,
                        "arguments: " + s.shownArguments(" "), "answer: " + s.shown(), "healthy answer: " + s.expected));
                text.addAll(s.detail());
                String message = s.method + " answered " + s.shown() + ", healthy answer " + s.expected;
                outcome(out, s.thrown != null ? "error" : "failure", message, String.join("\n", text));
            }
            element(out, "system-out", String.join("\n", s.detail()));
            out.writeEndElement();
            out.writeCharacters("\n");
        }
        out.writeEndElement();
        out.writeCharacters("\n");

        suite(out, 1, "service-death drill: kill " + drillService + ", then revive it", checks.size(), checkFailures,
                0, skipped, 0);
        for (DrillCheck c : checks) {
            testcase(out, "mmi.drill", c.name, 0);
            if (c.status == Status.SKIPPED) {
                out.writeEmptyElement("skipped");
                out.writeAttribute("message", xmlText(c.message));
            } else if (c.status == Status.FAIL) {
                List<String> text = new ArrayList<>(c.detail);
                addLogs(text, "at the kill", killLogs);
                addLogs(text, "while down", downLogs);
                addLogs(text, "at the revival", reviveLogs);
                outcome(out, "failure", c.message, String.join("\n", text));
            }
            out.writeEndElement();
            out.writeCharacters("\n");
        }
        out.writeEndElement();
        out.writeCharacters("\n");
        out.writeEndElement();
        out.writeCharacters("\n");
        out.writeEndDocument();
    }

    private void suite(XMLStreamWriter out, int id, String name, int tests, int failures, int errors, int skipped,
            double seconds) throws XMLStreamException {
        out.writeCharacters("\n");
        out.writeStartElement("testsuite");
        out.writeAttribute("id", String.valueOf(id));
        out.writeAttribute("name", name);
        out.writeAttribute("package", "mmi");
        out.writeAttribute("hostname", "localhost");
        out.writeAttribute("timestamp", timestamp);
        counts(out, tests, failures, errors, skipped, seconds);
        out.writeCharacters("\n");
    }

    private static void counts(XMLStreamWriter out, int tests, int failures, int errors, int skipped, double seconds)
            throws XMLStreamException {
        out.writeAttribute("tests", String.valueOf(tests));
        out.writeAttribute("failures", String.valueOf(failures));
        out.writeAttribute("errors", String.valueOf(errors));
        out.writeAttribute("skipped", String.valueOf(skipped));
        out.writeAttribute("time", String.format(Locale.ROOT, "%.3f", seconds));
    }

    private static void testcase(XMLStreamWriter out, String classname, String name, double seconds)
            throws XMLStreamException {
        out.writeCharacters("  ");
        out.writeStartElement("testcase");
        out.writeAttribute("classname", classname);
        out.writeAttribute("name", xmlText(name));
        out.writeAttribute("time", String.format(Locale.ROOT, "%.3f", seconds));
    }

    private static void outcome(XMLStreamWriter out, String kind, String message, String text)
            throws XMLStreamException {
        out.writeStartElement(kind);
        out.writeAttribute("message", xmlText(message));
        out.writeAttribute("type", kind.equals("error") ? "exception" : "verdict");
        out.writeCharacters(xmlText(text));
        out.writeEndElement();
    }

    private static void element(XMLStreamWriter out, String name, String text) throws XMLStreamException {
        if (!text.isEmpty()) {
            out.writeStartElement(name);
            out.writeCharacters(xmlText(text));
            out.writeEndElement();
        }
    }

    private static void addLogs(List<String> text, String when, String[] lines) {
        for (String line : lines) {
            text.add("log " + when + ": " + line);
        }
    }

    /**
     * The text with every character XML 1.0 cannot carry (controls other than tab and line breaks,
     * unpaired surrogates, U+FFFE and U+FFFF) written as \\uXXXX: a device may answer anything.
     */
    static String xmlText(String s) {
        StringBuilder out = new StringBuilder(s.length());
        for (int i = 0; i < s.length(); i++) {
            char c = s.charAt(i);
            boolean pair = Character.isHighSurrogate(c) && i + 1 < s.length() && Character.isLowSurrogate(s.charAt(i + 1));
            if (pair) {
                out.append(c).append(s.charAt(++i));
            } else if ((c < 0x20 && c != '\t' && c != '\n' && c != '\r') || Character.isSurrogate(c) || c >= 0xfffe) {
                out.append(String.format("\\u%04x", (int) c));
            } else {
                out.append(c);
            }
        }
        return out.toString();
    }
}
