package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonElement;
import com.google.gson.JsonParser;
import com.tavrin.mmitest.sim.Call;

import java.nio.file.Files;
import java.nio.file.Path;
import java.time.OffsetDateTime;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;

import org.junit.jupiter.api.BeforeAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.w3c.dom.Document;
import org.w3c.dom.Element;

/** A report with every outcome, through both writers and back through a JSON and an XML parser. */
class RunReportTest {
    private static final String SMILE = new String(Character.toChars(0x1f600));
    @TempDir
    static Path dir;
    static StepRecord wrong;
    static Document junit;
    static JsonElement json;
    static String jsonText;

    private static StepRecord record(String method, Object result, boolean passed, String... logs) {
        StepRecord r = new StepRecord(method, new Object[] {"battery"});
        r.result = result;
        r.expected = "text";
        r.failedRuns = passed ? 0 : 1;
        r.logs = JunitCheck.logs(logs);
        r.calls = List.of(new Call("power", "getPowerState", 1, List.of("battery")));
        return r;
    }

    @BeforeAll
    static void writeBoth() throws Exception {
        RunReport report = new RunReport("1.2-test", OffsetDateTime.parse("2026-11-24T10:11:00.250+01:00"));
        report.drillService = "power";
        report.options.add(new RunReport.Option("--answer", "sensors.startSensorSelfTest=5"));
        report.options.add(new RunReport.Option("--absent", "light"));
        report.selected.addAll(List.of(1, 2, 3, 7));
        report.repeat = 2;
        StepRecord fine = record("getBsnNative", "KX1", true, "D fine");
        fine.fields.put("sTpCapacitanceFailInfo", "caf\u00e9");
        wrong = record("getPowerStateNative", "", false, "E ctrl \u0001 and \ud800 unpaired", "D " + SMILE);
        StepRecord threw = record("getPowerStateNative", null, false);
        threw.thrown = new IllegalStateException("boom");
        report.steps.addAll(List.of(fine, wrong, threw));
        for (int i = 0; i < report.steps.size(); i++) {
            report.steps.get(i).number = i + 1;
        }
        report.checks.add(new RunReport.DrillCheck("power: a()", RunReport.Status.FAIL, "FAIL: not restored",
                List.of("before: 1", "while down: -1", "after revive: -1"), 1.5));
        report.checks.add(new RunReport.DrillCheck("display: b()", RunReport.Status.SKIPPED, "failing before the kill",
                List.of(), 0));
        report.checks.add(RunReport.DrillCheck.line(true, "the death is reported", "the death is reported", 0.002));
        report.killLogs = JunitCheck.logs("W died");
        fine.seconds = 0.000250;
        assertEquals(null, OutputFiles.write(dir.resolve("r.xml"), report::writeJunit));
        assertEquals(null, OutputFiles.write(dir.resolve("r.json"), report::writeJson));
        junit = JunitCheck.parse(dir.resolve("r.xml"));
        jsonText = Files.readString(dir.resolve("r.json"));
        json = JsonParser.parseString(jsonText);
    }

    @Test
    void junitFileHasTheStructureCiServersRequire() {
        assertEquals(List.of(), JunitCheck.problems(junit));
    }

    @Test
    void oneJunitCasePerStepAndCheckWithItsOutcome() {
        List<String> outcomes = new ArrayList<>();
        for (Element c : JunitCheck.cases(junit)) {
            String outcome = "pass";
            for (Element o : JunitCheck.children(c)) {
                outcome = o.getTagName().startsWith("system-") ? outcome : o.getTagName();
            }
            outcomes.add(c.getAttribute("name") + " " + outcome);
        }
        assertEquals(List.of("01 getBsnNative pass", "02 getPowerStateNative failure", "03 getPowerStateNative error",
                "power: a() failure", "display: b() skipped", "the death is reported pass"), outcomes);
    }

    @ParameterizedTest
    @CsvSource(delimiter = '|', value = {"method: getPowerStateNative", "arguments: \"battery\"", "answer: \"\"",
        "log: E ctrl \\u0001 and \\ud800 unpaired", "log: D \ud83d\ude00", "after revive: -1", "log at the kill: W died"})
    void junitFailureTextsHold(String part) {
        StringBuilder failures = new StringBuilder();
        for (Element c : JunitCheck.cases(junit)) {
            for (Element o : JunitCheck.children(c)) {
                failures.append(o.getTagName().equals("failure") ? o.getTextContent() + "\n" : "");
            }
        }
        assertTrue(failures.toString().contains(part), failures.toString());
    }

    @Test
    void junitPropertiesRecordTheSetup() {
        List<String> p = JunitCheck.properties(junit);
        assertTrue(p.containsAll(List.of("version=1.2-test", "--answer=sensors.startSensorSelfTest=5",
                "--absent=light", "steps=1-3,7", "repeat=2", "drill=power kill")), p.toString());
        assertTrue(p.contains("started=2026-11-24T10:11:00+01:00"), p.toString());
    }

    @Test
    void junitTimeIsTheStepsDuration() {
        assertEquals("0.000250", JunitCheck.cases(junit).get(0).getAttribute("time"));
    }

    @Test
    void jsonFileIsAscii() {
        assertTrue(jsonText.chars().allMatch(c -> c < 0x7f), jsonText);
    }

    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {"passed | false", "sequence.failed | 2",
        "sequence.steps.0.fields.sTpCapacitanceFailInfo | \"caf\\u00e9\"",
        "sequence.steps.1.arguments.0 | \"battery\"", "sequence.steps.1.result | \"\"",
        "sequence.steps.1.passed | false", "sequence.steps.1.logs.0.priority | \"E\"",
        "sequence.steps.1.logs.0.text | \"ctrl \\u0001 and \\ud800 unpaired\"",
        "sequence.steps.2.threw | \"java.lang.IllegalStateException: boom\"",
        "drill.checks.1.status | \"skipped\"", "drill.failed | 1", "drill.kill_logs.0.text | \"died\"",
        "version | \"1.2-test\"", "setup.options.0.option | \"--answer\"",
        "setup.options.0.value | \"sensors.startSensorSelfTest=5\"", "setup.options.1.value | \"light\"",
        "setup.steps | [1,2,3,7]", "setup.repeat | 2", "setup.drill | \"power\"", "sequence.steps.0.duration_ms | 0.25",
        "sequence.steps.1.number | 2", "started | \"2026-11-24T10:11:00+01:00\"",
        "timestamp | \"2026-11-24T10:11:00\""})
    void jsonHolds(String path, String value) {
        JsonElement e = json;
        for (String key : path.split("\\.")) {
            e = e.isJsonArray() ? e.getAsJsonArray().get(Integer.parseInt(key)) : e.getAsJsonObject().get(key);
        }
        assertEquals(value, e.isJsonPrimitive() && e.getAsJsonPrimitive().isString() ? Values.format(e.getAsString())
                : e.toString());
    }

    @Test
    void callJsonIsOneObjectOnOneLine() {
        String line = Values.json(wrong);
        assertTrue(!line.contains("\n") && JsonParser.parseString(line).isJsonObject()
                && line.contains("\"logs\":[{\"priority\":\"E\",\"text\":\"ctrl \\u0001 and \\ud800 unpaired\"}"), line);
    }

    /** A report with the given counts, for the closing lines. */
    private static RunReport counts(int steps, int failedSteps, int ok, int failed, int skipped, String drill) {
        RunReport r = new RunReport("v", OffsetDateTime.now());
        for (int i = 0; i < steps; i++) {
            StepRecord s = record("getBsnNative", i < failedSteps ? "" : "KX", i >= failedSteps);
            s.number = i + 1;
            r.steps.add(s);
        }
        for (int i = 0; i < ok + failed + skipped; i++) {
            RunReport.Status status = i < ok ? RunReport.Status.OK : i < ok + failed ? RunReport.Status.FAIL
                    : RunReport.Status.SKIPPED;
            r.checks.add(new RunReport.DrillCheck("c" + i, status, "why", List.of(), 0));
        }
        r.drillService = drill.equals("none") ? null : "power";
        r.drillSkipped = drill.equals("skipped") ? "power is absent" : null;
        r.seconds = 0.84;
        return r;
    }

    @ParameterizedTest(name = "{6}")
    @CsvSource(delimiter = '|', value = {
        "54 | 0 | 12 | 0 | 0 | ran | PASSED: 54 of 54 steps, 12 of 12 drill checks passed (0.8 s)",
        "54 | 1 | 11 | 0 | 1 | ran | FAILED: 1 of 54 steps, 0 of 11 drill checks failed, 1 not checked (0.8 s)",
        "54 | 0 | 10 | 2 | 0 | ran | FAILED: 0 of 54 steps, 2 of 12 drill checks failed (0.8 s)",
        "1 | 0 | 0 | 0 | 0 | none | PASSED: 1 of 1 step passed (0.8 s)",
        "54 | 3 | 0 | 0 | 0 | skipped | FAILED: 3 of 54 steps failed, drill skipped: power is absent (0.8 s)"})
    void verdictLine(int steps, int failedSteps, int ok, int failed, int skipped, String drill, String line) {
        assertEquals(line, counts(steps, failedSteps, ok, failed, skipped, drill).verdictLine());
    }

    /** Five runs of step 2, the third and fourth failing: the first failure stands for the step. */
    @Test
    void repeatedRunsAreCountedInTheSummary() {
        RunReport r = counts(2, 0, 0, 0, 0, "none");
        r.repeat = 5;
        r.steps.get(0).runs = 5;
        StepRecord merged = r.steps.get(1);
        for (boolean passed : new boolean[] {true, false, false, true}) {
            StepRecord next = record("startSensorSelfTestNative", passed ? 0 : 5, passed);
            next.failedRuns = passed ? 0 : 1;
            merged = StepRecord.merge(merged, next);
        }
        r.steps.set(1, merged);
        assertEquals("FAILED: 1 of 2 steps failed (5 runs each, 0.8 s)", r.verdictLine());
        assertEquals("step 2 startSensorSelfTestNative(\"battery\"): 2 of 5 runs failed; answered 5, healthy answer text",
                r.summary().get(1)[1]);
    }

    @Test
    void summaryListsEveryFailureThenWhatWasNotChecked() {
        RunReport r = counts(3, 1, 1, 1, 1, "ran");
        List<String> lines = r.summary().stream().map(l -> String.join(" ", l)).collect(Collectors.toList());
        assertEquals(List.of("Failures:", "FAIL step 1 getBsnNative(\"battery\"): answered \"\", healthy answer text",
                "FAIL drill c1: why", "Not checked:", "SKIP drill c2: why"), lines);
        assertEquals(List.of(), counts(3, 0, 1, 0, 0, "ran").summary());
    }
}
