package com.tavrin.mmitest.console;

import com.google.gson.JsonObject;
import com.google.gson.JsonParser;

import java.io.File;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;

import org.w3c.dom.Document;

/**
 * The console as ./mmi runs it, in a JVM of its own per command line, against the library and the
 * simulated device. Arguments: the directory of the native libraries and mmi.jar.
 */
public final class ConsoleEndToEndTest {
    private ConsoleEndToEndTest() {}

    public static void main(String[] args) {
        Check.groups(List.of(() -> {
            Check.group = "call";
            // As bash delivers: --answer power.getPowerState=5,"x" getPowerStateNative "battery"
            String[] r = console(args, "call", "--answer", "power.getPowerState=5,x", "getPowerStateNative", "battery");
            Check.eq("0", r[0], "exit code");
            Check.eq("result: \"\"\n"
                    + "log: D KxMMITest_jni: GetPowerState, result code: 5, result info: \n"
                    + "call: power.getPowerState(\"battery\")\n", r[1], "a failing code empties the power state");
            r = console(args, "call", "--answer", "power.getPowerStat=5", "getPowerStateNative", "battery");
            Check.that(r[0].equals("2") && r[1].isEmpty(), "an answer the device refuses ends the console: " + r[1]);
            // A written field is shown even when the text it wrote was already there.
            String[][] fields = {
                {"getCapacitanceTestResultNative", "field: sTpCapacitanceFailInfo = \"\"\n"},
                {"--answer", "touchscreen.getCapacitanceTestResult=3,open at 4", "getCapacitanceTestResultNative",
                    "field: sTpCapacitanceFailInfo = \"open at 4\"\n"},
                {"--answer", "otherdevices.getTouchkeyCapacitanceTestResult=1,\"k\\u00e9y\"", "getTouchKeyCapacitanceTestResultNative",
                    "field: sTouchKeyCapacitanceFailInfo = \"k\\u00e9y\"\n"},
                {"--absent", "touchscreen", "getCapacitanceTestResultNative", ""},
            };
            for (String[] c : fields) {
                List<String> line = new ArrayList<>(List.of("call"));
                line.addAll(List.of(c).subList(0, c.length - 1));
                r = console(args, line.toArray(new String[0]));
                String shown = String.join("", r[1].lines().filter(l -> l.startsWith("field: ")).map(l -> l + "\n")
                        .toArray(String[]::new));
                Check.eq(c[c.length - 1], shown, String.join(" ", line));
            }
            r = console(args, "call", "--json", "getBsnNative");
            JsonObject o = JsonParser.parseString(r[1]).getAsJsonObject();
            Check.that(r[0].equals("0") && r[1].lines().count() == 1 && o.get("method").getAsString().equals("getBsnNative")
                    && !o.get("result").getAsString().isEmpty() && o.getAsJsonArray("calls").size() == 1,
                    "call --json prints one object on one line: " + r[1]);
        }, () -> {
            Check.group = "run";
            File xml = Check.temp(".xml");
            File json = Check.temp(".json");
            String[] r = console(args, "run", "--junit", xml.getPath(), "--json", json.getPath());
            Check.eq("0", r[0], "exit code");
            Check.that(r[1].contains("sequence: " + FactorySequence.steps().size() + " passed, 0 failed"),
                    "a healthy device passes every step");
            Check.that(r[1].matches("(?s).*\ndrill: (\\d+) of \\1 checks passed\n"), "the drill passes: " + r[1]);
            Document doc = JunitCheck.parse(xml);
            Check.eq(List.of(), JunitCheck.problems(doc), "JUnit structure");
            Check.eq(List.of(String.valueOf(FactorySequence.steps().size() + FactorySequence.probes().size() + 4), "0", "0"),
                    List.of(doc.getDocumentElement().getAttribute("tests"), doc.getDocumentElement().getAttribute("failures"),
                            doc.getDocumentElement().getAttribute("skipped")), "a passing case per step and drill check");
            JsonObject report = JsonParser.parseString(Check.io(() -> Files.readString(json.toPath()))).getAsJsonObject();
            Check.that(report.get("passed").getAsBoolean() && report.getAsJsonObject("sequence").getAsJsonArray("steps")
                    .size() == FactorySequence.steps().size(), "JSON: passed, a step each");

            // A sensor that fails its self-test: that step fails, and so does the run.
            r = console(args, "run", "--answer", "sensors.startSensorSelfTest=5", "--junit", xml.getPath());
            Check.eq("1", r[0], "exit code of a failing run");
            Check.that(r[1].contains("sequence: " + (FactorySequence.steps().size() - 1) + " passed, 1 failed"),
                    "the failing step is counted");
            List<String> failed = JunitCheck.cases(JunitCheck.parse(xml)).stream()
                    .filter(c -> c.getElementsByTagName("failure").getLength() > 0).map(c -> c.getAttribute("name"))
                    .collect(Collectors.toList());
            int step = FactorySequence.steps().stream().map(s -> s.method).collect(Collectors.toList())
                    .indexOf("startSensorSelfTestNative") + 1;
            Check.eq(List.of(String.format("%02d startSensorSelfTestNative", step)), failed,
                    "the JUnit file names the failing step");
        }));
    }

    /** Exit code and standard output of one console command line; its errors go to ours. */
    private static String[] console(String[] dirs, String... args) {
        List<String> command = new ArrayList<>(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Xss4m", "-Djava.library.path=" + dirs[0], "-cp", dirs[1], "com.tavrin.mmitest.console.Console"));
        command.addAll(List.of(args));
        return Check.io(() -> {
            Process p = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT).start();
            String out = new String(p.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
            return new String[] {String.valueOf(p.waitFor()), out};
        });
    }
}
