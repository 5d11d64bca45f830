package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonObject;
import com.google.gson.JsonParser;

import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;
import org.w3c.dom.Document;

/**
 * The console as ./mmi runs it, in a JVM of its own per command line, against the library and the
 * simulated device. System properties: mmi.test.libdir, the directory of the native libraries, and
 * mmi.test.jar, the console's jar.
 */
class ConsoleEndToEndTest {
    @TempDir
    Path dir;

    /** Exit code and standard output of one console command line; its errors go to ours. */
    static String[] console(String... args) throws Exception {
        List<String> command = new ArrayList<>(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Xss4m", "-Djava.library.path=" + System.getProperty("mmi.test.libdir"),
                "-cp", System.getProperty("mmi.test.jar"), "com.tavrin.mmitest.console.Console"));
        command.addAll(List.of(args));
        Process p = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT).start();
        String out = new String(p.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        return new String[] {String.valueOf(p.waitFor()), out};
    }

    @Test
    void callPrintsResultLogAndServiceCall() throws Exception {
        // As bash delivers: --answer power.getPowerState=5,"x" getPowerStateNative "battery"
        String[] r = console("call", "--answer", "power.getPowerState=5,x", "getPowerStateNative", "battery");
        assertEquals("0", r[0]);
        assertEquals("result: \"\"\n"
                + "log: D KxMMITest_jni: GetPowerState, result code: 5, result info: \n"
                + "call: power.getPowerState(\"battery\")\n", r[1], "a failing code empties the power state");
    }

    @Test
    void anAnswerTheDeviceRefusesEndsTheConsole() throws Exception {
        String[] r = console("call", "--answer", "power.getPowerStat=5", "getPowerStateNative", "battery");
        assertEquals(List.of("2", ""), List.of(r));
    }

    static Stream<Arguments> writtenFieldsAreShown() {
        return Stream.of(
                Arguments.of(List.of("getCapacitanceTestResultNative"), "field: sTpCapacitanceFailInfo = \"\""),
                Arguments.of(List.of("--answer", "touchscreen.getCapacitanceTestResult=3,open at 4",
                        "getCapacitanceTestResultNative"), "field: sTpCapacitanceFailInfo = \"open at 4\""),
                Arguments.of(List.of("--answer", "otherdevices.getTouchkeyCapacitanceTestResult=1,\"k\\u00e9y\"",
                        "getTouchKeyCapacitanceTestResultNative"), "field: sTouchKeyCapacitanceFailInfo = \"k\\u00e9y\""),
                Arguments.of(List.of("--absent", "touchscreen", "getCapacitanceTestResultNative"), ""));
    }

    /** A written field is shown even when the text it wrote was already there. */
    @ParameterizedTest(name = "{0}")
    @MethodSource
    void writtenFieldsAreShown(List<String> line, String field) throws Exception {
        List<String> args = new ArrayList<>(List.of("call"));
        args.addAll(line);
        String[] r = console(args.toArray(new String[0]));
        assertEquals(field, r[1].lines().filter(l -> l.startsWith("field: ")).collect(Collectors.joining("\n")));
    }

    @Test
    void callJsonPrintsOneObjectOnOneLine() throws Exception {
        String[] r = console("call", "--json", "getBsnNative");
        JsonObject o = JsonParser.parseString(r[1]).getAsJsonObject();
        assertTrue(r[0].equals("0") && r[1].lines().count() == 1 && o.get("method").getAsString().equals("getBsnNative")
                && !o.get("result").getAsString().isEmpty() && o.getAsJsonArray("calls").size() == 1, r[1]);
    }

    @Test
    void healthyRunPassesEveryStepAndCheck() throws Exception {
        Path xml = dir.resolve("r.xml");
        Path json = dir.resolve("r.json");
        String[] r = console("run", "--junit", xml.toString(), "--json", json.toString());
        assertEquals("0", r[0]);
        assertTrue(r[1].contains("sequence: " + FactorySequence.steps().size() + " passed, 0 failed"), r[1]);
        assertTrue(r[1].matches("(?s).*\ndrill: (\\d+) of \\1 checks passed\n.*"), r[1]);
        Document doc = JunitCheck.parse(xml);
        assertEquals(List.of(), JunitCheck.problems(doc));
        assertEquals(List.of(String.valueOf(FactorySequence.steps().size() + FactorySequence.probes().size() + 4), "0", "0"),
                List.of(doc.getDocumentElement().getAttribute("tests"), doc.getDocumentElement().getAttribute("failures"),
                        doc.getDocumentElement().getAttribute("skipped")), "a passing case per step and drill check");
        JsonObject report = JsonParser.parseString(Files.readString(json)).getAsJsonObject();
        assertTrue(report.get("passed").getAsBoolean());
        assertEquals(FactorySequence.steps().size(), report.getAsJsonObject("sequence").getAsJsonArray("steps").size());
    }

    @Test
    void aFailingSelfTestFailsItsStepAndTheRun() throws Exception {
        Path xml = dir.resolve("r.xml");
        String[] r = console("run", "--answer", "sensors.startSensorSelfTest=5", "--junit", xml.toString());
        assertEquals("1", r[0]);
        assertTrue(r[1].contains("sequence: " + (FactorySequence.steps().size() - 1) + " passed, 1 failed"), r[1]);
        List<String> failed = JunitCheck.cases(JunitCheck.parse(xml)).stream()
                .filter(c -> c.getElementsByTagName("failure").getLength() > 0).map(c -> c.getAttribute("name"))
                .collect(Collectors.toList());
        int step = FactorySequence.steps().stream().map(s -> s.method).collect(Collectors.toList())
                .indexOf("startSensorSelfTestNative") + 1;
        assertEquals(List.of(String.format("%02d startSensorSelfTestNative", step)), failed);
    }
}
