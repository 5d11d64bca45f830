package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonElement;
import com.google.gson.JsonParser;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

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
        r.passed = passed;
        r.logs = logs;
        r.calls = new String[] {"power.getPowerState(\"battery\")"};
        return r;
    }

    @BeforeAll
    static void writeBoth() throws Exception {
        RunReport report = new RunReport("1.2-test");
        report.drillService = "power";
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
                List.of("before: 1", "while down: -1", "after revive: -1")));
        report.checks.add(new RunReport.DrillCheck("display: b()", RunReport.Status.SKIPPED, "failing before the kill",
                List.of()));
        report.line(true, "the death is reported", "the death is reported");
        report.killLogs = new String[] {"W died"};
        report.writeJunit(dir.resolve("r.xml"));
        report.writeJson(dir.resolve("r.json"));
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
        "drill.checks.1.status | \"skipped\"", "drill.failed | 1", "drill.kill_logs.0.text | \"died\""})
    void jsonHolds(String path, String value) {
        JsonElement e = json;
        for (String key : path.split("\\.")) {
            e = e.isJsonArray() ? e.getAsJsonArray().get(Integer.parseInt(key)) : e.getAsJsonObject().get(key);
        }
        assertEquals(value, e.isJsonPrimitive() && e.getAsJsonPrimitive().isString() ? Values.quote(e.getAsString())
                : e.toString());
    }

    @Test
    void callJsonIsOneObjectOnOneLine() {
        String line = CallCommand.json(wrong);
        assertTrue(!line.contains("\n") && JsonParser.parseString(line).isJsonObject()
                && line.contains("\"logs\":[{\"priority\":\"E\",\"text\":\"ctrl \\u0001 and \\ud800 unpaired\"}"), line);
    }
}
