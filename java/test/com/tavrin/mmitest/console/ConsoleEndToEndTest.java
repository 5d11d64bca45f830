package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonObject;
import com.google.gson.JsonParser;

import java.io.File;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.stream.Collectors;
import java.util.stream.Stream;

import org.junit.jupiter.api.Tag;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;
import org.w3c.dom.Document;

/**
 * The console as ./mmi runs it, in a JVM of its own per command line, against the library and the
 * simulated device. System properties: mmi.test.libdir, the directory of the native libraries, and
 * mmi.test.jar, the console's jar.
 */
@Tag("device")
class ConsoleEndToEndTest {
    private static final String SELF_TEST_FAILS = "sensors.startSensorSelfTest=5";
    private static final int STEPS = FactorySequence.steps().size();

    @TempDir
    Path dir;

    /** What one console command line did. */
    record Result(int code, String out, String err) {
        List<String> lines() {
            return out.lines().collect(Collectors.toList());
        }

        String last() {
            List<String> lines = lines();
            return lines.isEmpty() ? "" : lines.get(lines.size() - 1);
        }
    }

    /** Runs the console in the working directory dir (null: ours) with extra environment and JVM options. */
    static Result console(Path dir, Map<String, String> env, List<String> jvm, String... args) throws Exception {
        List<String> command = new ArrayList<>(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Xss4m", "-Djava.library.path=" + System.getProperty("mmi.test.libdir")));
        command.addAll(jvm);
        command.addAll(List.of("-cp", System.getProperty("mmi.test.jar"), "com.tavrin.mmitest.console.Console"));
        command.addAll(List.of(args));
        ProcessBuilder builder = new ProcessBuilder(command);
        builder.environment().remove("COLUMNS");
        builder.environment().remove("NO_COLOR");
        builder.environment().putAll(env);
        if (dir != null) {
            builder.directory(dir.toFile());
        }
        File err = File.createTempFile("mmi-err", ".txt");
        err.deleteOnExit();
        Process p = builder.redirectError(err).start();
        String out = new String(p.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        int code = p.waitFor();
        return new Result(code, out, Files.readString(err.toPath()));
    }

    static Result console(String... args) throws Exception {
        return console(null, Map.of(), List.of(), args);
    }

    static Stream<Arguments> callPrintsResultLogAndServiceCall() {
        // As bash delivers: --answer power.getPowerState=5,"x" getPowerStateNative "battery"
        return Stream.of(List.of("--answer", "power.getPowerState=5,x", "getPowerStateNative", "battery"),
                List.of("getPowerStateNative", "battery", "--answer", "power.getPowerState=5,x"),
                List.of("getPowerStateNative", "--answer=power.getPowerState=5,x", "--", "battery")).map(Arguments::of);
    }

    /** Options before the method, after it, and arguments after "--". */
    @ParameterizedTest(name = "{0}")
    @MethodSource
    void callPrintsResultLogAndServiceCall(List<String> line) throws Exception {
        List<String> args = new ArrayList<>(List.of("call"));
        args.addAll(line);
        Result r = console(args.toArray(new String[0]));
        assertEquals(0, r.code(), r.err());
        assertEquals("result: \"\"\n"
                + "log: D KxMMITest_jni: GetPowerState, result code: 5, result info: \n"
                + "call: power.getPowerState(\"battery\")\n", r.out(), "a failing code empties the power state");
    }

    /** What the user typed comes back with its control characters shown, not obeyed by the terminal. */
    @Test
    void refusalsEscapeControlCharacters() throws Exception {
        Result r = console("call", "get\u001b[31m");
        assertEquals(2, r.code(), r.err());
        assertTrue(r.err().contains("get\\u001b[31m") && !r.err().contains("\u001b"), r.err());
    }

    @Test
    void anAnswerTheDeviceRefusesEndsTheConsole() throws Exception {
        Result r = console("call", "--answer", "power.getPowerStat=5", "getPowerStateNative", "battery");
        assertEquals(List.of(2, ""), List.of(r.code(), r.out()));
        assertTrue(r.err().startsWith("mmi call: --answer power.getPowerStat=5: "), r.err());
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
        Result r = console(args.toArray(new String[0]));
        assertEquals(field, r.lines().stream().filter(l -> l.startsWith("field: ")).collect(Collectors.joining("\n")));
    }

    @Test
    void callJsonPrintsOneObjectOnOneLine() throws Exception {
        Result r = console("call", "--json", "getBsnNative");
        JsonObject o = JsonParser.parseString(r.out()).getAsJsonObject();
        assertTrue(r.code() == 0 && r.lines().size() == 1 && o.get("method").getAsString().equals("getBsnNative")
                && !o.get("result").getAsString().isEmpty() && o.getAsJsonArray("calls").size() == 1, r.out());
    }

    @Test
    void listOpsGivesEachOperationsAnswerShapeAndKeywords() throws Exception {
        Result r = console("call", "--list-ops", "power");
        assertEquals(0, r.code(), r.err());
        assertEquals(List.of("  power.getPowerState  callback: int32 code, string info",
                "    keywords: nocallback, transport-error, crash",
                "  power.setPowerState  value: int32 result",
                "    keywords: transport-error, crash",
                "  power.checkUsbSpeed  callback: int32 code, string info",
                "    keywords: nocallback, transport-error, crash"), r.lines());
    }

    /** Every operation whole, within the width where its words allow, no trailing spaces. */
    @ParameterizedTest(name = "COLUMNS={0}")
    @ValueSource(ints = {80, 50})
    void listOpsFitsTheWidth(int columns) throws Exception {
        Result r = console(null, Map.of("COLUMNS", String.valueOf(columns)), List.of(), "call", "--list-ops");
        assertTrue(r.out().contains("otherdevices.getTouchkeyCapacitanceTestResult"), r.out());
        for (String l : r.lines()) {
            assertTrue(l.length() <= columns && !l.endsWith(" ") || !l.strip().contains(" "), "'" + l + "'");
        }
    }

    @Test
    void healthyRunPassesEveryStepAndCheck() throws Exception {
        Path xml = dir.resolve("r.xml");
        Path json = dir.resolve("r.json");
        Result r = console("run", "--junit", xml.toString(), "--json", json.toString());
        assertEquals(0, r.code(), r.err());
        assertEquals("library loaded: 7 of 7 services connected", r.lines().get(0));
        assertTrue(r.out().contains("\nsequence: " + STEPS + " passed, 0 failed"), r.out());
        assertTrue(r.last().matches("PASSED: " + STEPS + " of " + STEPS + " steps, 12 of 12 drill checks passed "
                + "\\(\\d+\\.\\d s\\)"), r.last());
        Document doc = JunitCheck.parse(xml);
        assertEquals(List.of(), JunitCheck.problems(doc));
        assertEquals(List.of(String.valueOf(STEPS + FactorySequence.probes().size() + 4), "0", "0"),
                List.of(doc.getDocumentElement().getAttribute("tests"), doc.getDocumentElement().getAttribute("failures"),
                        doc.getDocumentElement().getAttribute("skipped")), "a passing case per step and drill check");
        JsonObject report = JsonParser.parseString(Files.readString(json)).getAsJsonObject();
        assertTrue(report.get("passed").getAsBoolean());
        assertEquals(STEPS, report.getAsJsonObject("sequence").getAsJsonArray("steps").size());
        assertEquals("mmi run: wrote JUnit XML to " + xml + "\nmmi run: wrote JSON to " + json + "\n", r.err());
    }

    @Test
    void aFailingRunEndsWithItsFailureListedAndAFailedVerdict() throws Exception {
        Path xml = dir.resolve("r.xml");
        Result r = console("run", "--answer", SELF_TEST_FAILS, "--junit", xml.toString());
        assertEquals(1, r.code());
        List<String> lines = r.lines();
        int step = FactorySequence.steps().stream().map(s -> s.method()).collect(Collectors.toList())
                .indexOf("startSensorSelfTestNative") + 1;
        assertEquals(List.of("Failures:", "  FAIL  step " + step + " startSensorSelfTestNative(1, 1): answered 5, "
                + "healthy answer 0"), lines.subList(lines.size() - 3, lines.size() - 1));
        assertTrue(r.last().startsWith("FAILED: 1 of " + STEPS + " steps, 0 of 12 drill checks failed ("), r.last());
        List<String> failed = JunitCheck.cases(JunitCheck.parse(xml)).stream()
                .filter(c -> c.getElementsByTagName("failure").getLength() > 0).map(c -> c.getAttribute("name"))
                .collect(Collectors.toList());
        assertEquals(List.of(String.format("%02d startSensorSelfTestNative", step)), failed);
    }

    /** Healthy, failing, missing a service, verbose cut nothing but the rest fits. */
    @ParameterizedTest(name = "COLUMNS={0} {1}")
    @CsvSource(delimiter = '|', value = {"80 | run", "80 | run --answer " + SELF_TEST_FAILS + " --absent display",
        "100 | run --answer " + SELF_TEST_FAILS, "80 | run --list", "70 | run --drill sensors", "80 | run -x --answer sensors.startSensorSelfTest=5",
        "80 | run --repeat 5 --absent otherdevices --answer " + SELF_TEST_FAILS})
    void noLineIsWiderThanTheTerminal(int columns, String line) throws Exception {
        Result r = console(null, Map.of("COLUMNS", String.valueOf(columns)), List.of(), line.split(" "));
        // All but the verdict line, which stays whole for tail -1 to read.
        for (String l : r.lines().subList(0, r.lines().size() - 1)) {
            assertTrue(Terminal.columns(l) <= columns, l.length() + " columns: " + l);
        }
    }

    /** Verbose cuts no cell, yet pads no row to the widest one: no padding past the width, no trailing spaces. */
    @ParameterizedTest(name = "{0}")
    @ValueSource(strings = {"run -v --no-drill", "run --list -v"})
    void verboseRowsAreNotPadded(String line) throws Exception {
        Result r = console(null, Map.of("COLUMNS", "80"), List.of(), line.split(" "));
        assertTrue(r.out().contains("setPowerStateNative"), r.out());
        for (String l : r.lines()) {
            boolean padded = l.endsWith(" ") || l.length() > 80 && l.substring(80).contains("   ");
            assertTrue(l.contains("log: ") || !padded, "padded: '" + l + "'");
        }
    }

    @ParameterizedTest(name = "tty={0} NO_COLOR={1} {2}")
    @CsvSource({"true, -, run, true", "false, -, run, false", "true, 1, run, false", "true, -, run --no-color, false"})
    void colourOnlyOnATerminalWithoutNoColor(boolean tty, String noColor, String line, boolean coloured)
            throws Exception {
        String[] args = (line + " --step 1 --no-drill").split(" ");
        Result r = console(null, noColor.equals("-") ? Map.of() : Map.of("NO_COLOR", noColor),
                List.of("-Dmmi.stdout.tty=" + tty), args);
        assertEquals(coloured, r.out().contains("\033[32mPASS\033[0m"), r.out());
        assertEquals(coloured, r.out().contains("\033["), r.out());
    }

    /** A late service: the wait is announced before it starts, the platform's wait line shows, the answer is healthy. */
    @Test
    void aLateServiceIsWaitedForAndTheWaitIsSaid() throws Exception {
        Result r = console("call", "--start-delay", "power=1200", "getPowerStateNative", "battery");
        assertEquals(0, r.code(), r.err());
        assertTrue(r.err().startsWith("mmi call: the library's load waits for the late services to register "
                + "(power after 1200 ms)"), r.err());
        assertTrue(r.out().startsWith("result: \"capacity=85,status=charging\""), r.out());
        assertTrue(r.out().contains("log: W HidlServiceManagement: Waited one second for "
                + "vendor.tavrin.hardware.power@1.0::IKXPower/default"), r.out());
    }

    /** A bad command line or output file stops the run before the device starts: one line, exit 2, the file untouched. */
    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {"--junit no/such/r.xml | --junit no/such/r.xml: folder no/such does not exist",
        "--json capture.txt | --json capture.txt: the file exists and holds something other than results",
        "--junit . | --junit .: is a folder",
        "--junit r --json r | --junit and --json name the same file r",
        "--step abc | --step takes numbers from --list, got 'abc'",
        "--drill-fault bogus | --drill-fault takes kill or crash, got 'bogus'",
        "--drill nosuch | --drill: unknown service 'nosuch'; the services are factory, display,",
        "--restart-delay abc | --restart-delay takes milliseconds 0 to 60000 or never, got abc",
        "--start-delay power=60001 | --start-delay takes milliseconds 0 to 60000, got 60001",
        "--list -x | --list runs nothing, so --exitfirst has no effect",
        "--list --json r.json | --list runs nothing, so --json r.json has no effect",
        "--only-1.0 power | power has no version 1.1 to withhold (--only-1.0 takes factory, display, sensors)",
        "--drill powr | --drill: unknown service 'powr' (did you mean power?)",
        "--absent powr | --absent: unknown service 'powr' (did you mean power?)"})
    void badLinesAreRefusedBeforeAnythingRuns(String options, String reason) throws Exception {
        Files.writeString(dir.resolve("capture.txt"), "1000\n");
        List<String> args = new ArrayList<>(List.of("run"));
        args.addAll(List.of(options.split(" ")));
        Result r = console(dir, Map.of(), List.of(), args.toArray(new String[0]));
        assertEquals(List.of(2, ""), List.of(r.code(), r.out()));
        assertEquals(1, r.err().lines().count(), r.err());
        assertTrue(r.err().startsWith("mmi run: " + reason), r.err());
        assertFalse(r.err().contains("Exception"), r.err());
        assertEquals("1000\n", Files.readString(dir.resolve("capture.txt")));
    }

    @Test
    void relativeFilesAreInTheWorkingDirectory() throws Exception {
        Files.createDirectory(dir.resolve("out"));
        Result r = console(dir, Map.of(), List.of(), "run", "--step", "1", "--no-drill", "-q", "--junit", "r.xml",
                "--json", "out/r.json");
        assertEquals(0, r.code(), r.err());
        assertTrue(Files.size(dir.resolve("r.xml")) > 0 && Files.size(dir.resolve("out/r.json")) > 0);
        assertEquals("mmi run: wrote JUnit XML to r.xml\nmmi run: wrote JSON to out/r.json\n", r.err());
    }

    @Test
    void repeatedStepsCountTheirFailedRuns() throws Exception {
        Result r = console(null, Map.of("COLUMNS", "120"), List.of(), "run", "--step", "37", "-k", "sensor", "--repeat",
                "3", "--no-drill", "-q", "--answer", SELF_TEST_FAILS);
        assertEquals(1, r.code());
        assertEquals(List.of("Failures:",
                "  FAIL  step 37 startSensorSelfTestNative(1, 1): 3 of 3 runs failed; answered 5, healthy answer 0"),
                r.lines().subList(0, 2));
        assertTrue(r.last().startsWith("FAILED: 1 of 1 step failed (3 runs each, "), r.last());
        assertEquals(3, r.err().lines().filter(l -> l.matches("mmi run: round \\d of 3: 1 of 1 step failed")).count(),
                r.err());
    }

    @Test
    void listShowsTheChosenStepsWithoutRunningThem() throws Exception {
        Result r = console("run", "--list", "-k", "SelfTest");
        assertEquals(List.of("31", "36", "37", "38"), r.lines().stream().skip(1).map(l -> l.strip().split(" ")[0])
                .collect(Collectors.toList()));
    }

    @Test
    void exitFirstStopsAtTheFirstFailureAndSkipsTheDrill() throws Exception {
        Result r = console("run", "-x", "--answer", SELF_TEST_FAILS);
        assertEquals(1, r.code());
        assertTrue(r.last().startsWith("FAILED: 1 of 37 steps failed, stopped by -x ("), r.last());
        assertFalse(r.out().contains("Service-death drill"), r.out());
    }

    @Test
    void theDrillIsSkippedWhenItsServiceIsAbsent() throws Exception {
        Path xml = dir.resolve("r.xml");
        Result r = console("run", "--absent", "sensors", "--drill", "sensors", "--junit", xml.toString());
        assertTrue(r.out().contains("\ndrill: skipped, sensors is absent\n"), r.out());
        assertFalse(r.out().contains("Service-death drill"), r.out());
        assertTrue(r.last().contains(", drill skipped: sensors is absent"), r.last());
        Document doc = JunitCheck.parse(xml);
        assertEquals(List.of(), JunitCheck.problems(doc));
        assertEquals("1", doc.getDocumentElement().getAttribute("skipped"));
    }

    @Test
    void theDrillKillsTheServiceAsked() throws Exception {
        Result r = console("run", "--drill", "light", "-k", "Light");
        assertEquals(0, r.code(), r.out());
        assertTrue(r.out().contains("Service-death drill: kill light, then revive it"), r.out());
        assertTrue(r.out().contains("PASS  1 request(s) of light and 7 of other services answered before the kill"),
                r.out());
    }

    /** A crash in the middle of a call, a restart after the delay, and the programmed answer back. */
    @ParameterizedTest(name = "{0}")
    @CsvSource({"--restart-delay=50, let it restart, 12", "--restart-delay=never, revive it (it never restarts), 13"})
    void theDrillCanCrashItsServiceInACall(String restart, String then, int checks) throws Exception {
        Path xml = dir.resolve("r.xml");
        Result r = console("run", "--drill-fault", "crash", restart, "--step", "1", "-v", "--answer",
                "power.getPowerState=0,\"state=x\"", "--junit", xml.toString());
        assertEquals(0, r.code(), r.out());
        assertTrue(r.out().contains("Service-death drill: crash power in a call, then " + then), r.out());
        assertTrue(r.out().contains("drill: " + checks + " of " + checks + " checks passed"), r.out());
        assertEquals(checks == 13, r.out().contains(
                "PASS  power stays down until the drill revives it (--restart-delay never)"), r.out());
        assertTrue(r.out().contains("GetPowerState fail, transport error"), r.out());
        assertTrue(r.out().matches("(?s).*  PASS  power +getPowerStateNative\\(\"battery\"\\) +\"\" +\"state=x\"\n.*"),
                r.out());
        assertTrue(JunitCheck.properties(JunitCheck.parse(xml)).contains("drill=power crash"));
    }

    @Test
    void theResultsRecordTheSetupAsTypedAndTheVersion() throws Exception {
        Path xml = dir.resolve("r.xml");
        Result r = console(null, Map.of(), List.of("-Dmmi.version=9.9-test"), "run", "--step=1,3", "--absent", "light",
                "--answer", SELF_TEST_FAILS, "--repeat", "2", "--drill", "factory", "--junit", xml.toString());
        assertEquals(0, r.code(), r.err());
        List<String> p = JunitCheck.properties(JunitCheck.parse(xml));
        assertTrue(p.containsAll(List.of("version=9.9-test", "--step=1,3", "--absent=light",
                "--answer=" + SELF_TEST_FAILS, "--repeat=2", "--drill=factory", "steps=1,3", "repeat=2",
                "drill=factory kill")), p.toString());
        assertFalse(p.stream().anyMatch(e -> e.startsWith("--junit")), p.toString());
    }

    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {"run --help | Exit codes:", "call --help | Exit codes:",
        "run --version | mmi 9.9-test", "--help | Exit codes:", "call -V | mmi 9.9-test"})
    void helpAndVersionExitZero(String line, String shown) throws Exception {
        Result r = console(null, Map.of(), List.of("-Dmmi.version=9.9-test"), line.split(" "));
        assertEquals(0, r.code(), r.err());
        assertTrue(r.out().contains(shown), r.out());
        // The notes after the options are laid out by hand for 80 columns: a line the help wraps
        // leaves a fragment at the margin, outside the notes' indentation.
        List<String> notes = r.lines().stream().dropWhile(l -> !l.startsWith("SERVICE")).collect(Collectors.toList());
        assertEquals(List.of(), notes.stream()
                .filter(l -> !l.isEmpty() && !l.startsWith(" ") && !Character.isUpperCase(l.charAt(0)))
                .collect(Collectors.toList()));
    }

    /** A service's escape sequences reach the user's terminal as text, in every line that shows them. */
    @Test
    void controlBytesFromAServiceAreShownNotObeyed() throws Exception {
        Result r = console("call", "--answer", "power.getPowerState=0,\"\\u001b]0;owned\\u0007\"", "getPowerStateNative",
                "battery");
        assertEquals(0, r.code(), r.err());
        assertTrue(r.out().contains("log: D KxMMITest_jni: GetPowerState, result code: 0, result info: \\u001b]0;owned"
                + "\\u0007") && !r.out().contains("\u001b") && !r.out().contains("\u0007"), r.out());
    }

    /** Output that never reached its reader is a failure, said on stderr. */
    @ParameterizedTest(name = "{0}")
    @ValueSource(strings = {"call getBsnNative", "run --step 1 --no-drill", "--version", "call --list-ops power"})
    void aFailedWriteOnStandardOutputExitsOne(String line) throws Exception {
        Process p = new ProcessBuilder(console(line)).redirectOutput(new File("/dev/full")).start();
        String err = new String(p.getErrorStream().readAllBytes(), StandardCharsets.UTF_8);
        assertEquals(1, p.waitFor(), err);
        assertTrue(err.endsWith("mmi: cannot write standard output: no space left on device\n"), err);
    }

    /** Results that could not be written fail the run, and the verdict line, which scripts read, says so first. */
    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {
        "--step 1 --junit /dev/full | FAILED: results not written (--junit /dev/full); 1 of 1 step passed (",
        "--step 37 --json /dev/full --answer " + SELF_TEST_FAILS + " | FAILED: results not written (--json /dev/full); "
            + "1 of 1 step failed ("})
    void anUnwrittenResultsFileFailsTheVerdict(String options, String verdict) throws Exception {
        List<String> args = new ArrayList<>(List.of("run", "--no-drill", "-q"));
        args.addAll(List.of(options.split(" ")));
        Result r = console(args.toArray(new String[0]));
        assertEquals(1, r.code(), r.err());
        assertTrue(r.last().startsWith(verdict), r.last());
        assertTrue(r.err().contains("mmi run: cannot write /dev/full: no space left on device"), r.err());
    }

    /**
     * A results file that is standard output under another name would mix into the table or
     * replace it: refused before anything runs, the output untouched.
     */
    @ParameterizedTest(name = "{0}")
    @ValueSource(strings = {"--json OUT", "--junit /dev/stdout", "--junit r.xml --json /dev/fd/1"})
    void resultsGoingToStandardOutputAreRefused(String options, @TempDir Path dir) throws Exception {
        Path out = dir.resolve("out.txt");
        Process p = new ProcessBuilder(console("run --no-drill --step 1 " + options.replace("OUT", out.toString())))
                .directory(dir.toFile()).redirectOutput(out.toFile()).start();
        String err = new String(p.getErrorStream().readAllBytes(), StandardCharsets.UTF_8);
        assertEquals(2, p.waitFor(), err);
        assertTrue(err.contains("is where standard output goes (the table); name another file"), err);
        assertEquals(List.of(), Files.readAllLines(out));
    }

    /** A reader that stopped early (| head -1) ends the command without a word: it has what it wanted. */
    @Test
    void aReaderThatStoppedEarlyIsNotAnError() throws Exception {
        Process p = new ProcessBuilder(console("call --list-ops")).start();
        p.getInputStream().close();
        String err = new String(p.getErrorStream().readAllBytes(), StandardCharsets.UTF_8);
        assertEquals(List.of(1, ""), List.of(p.waitFor(), err));
    }

    private static List<String> console(String line) {
        List<String> command = new ArrayList<>(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Djava.library.path=" + System.getProperty("mmi.test.libdir"), "-cp", System.getProperty("mmi.test.jar"),
                "com.tavrin.mmitest.console.Console"));
        command.addAll(List.of(line.split(" ")));
        return command;
    }

    /**
     * The answer comes as soon as the call returns; the restart of the service it crashed is waited
     * for after, and said to be.
     */
    @Test
    void callPrintsItsAnswerBeforeWaitingForTheRestart() throws Exception {
        List<String> command = new ArrayList<>(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Djava.library.path=" + System.getProperty("mmi.test.libdir"), "-cp", System.getProperty("mmi.test.jar"),
                "com.tavrin.mmitest.console.Console", "call", "--answer", "power.getPowerState=crash", "--restart-delay",
                "6000", "getPowerStateNative", "battery"));
        File err = File.createTempFile("mmi-err", ".txt");
        err.deleteOnExit();
        Process p = new ProcessBuilder(command).redirectError(err).start();
        java.io.BufferedReader out = new java.io.BufferedReader(new java.io.InputStreamReader(p.getInputStream(),
                StandardCharsets.UTF_8));
        String first = out.readLine();
        long answered = System.nanoTime();
        String rest = out.lines().collect(Collectors.joining("\n"));
        assertEquals(0, p.waitFor());
        assertEquals("result: \"\"", first);
        assertTrue((System.nanoTime() - answered) / 1e9 > 4, "the answer came with the restart, not before it");
        assertTrue(rest.contains("log: W KxMMITest_jni: ReinitHal"), rest);
        assertTrue(Files.readString(err.toPath()).startsWith("mmi call: waiting for power to restart (--restart-delay "
                + "6000 ms)\n"), Files.readString(err.toPath()));
    }

    /** Steps whose version 1.1 is withheld do not pass, and the error lines of the calls show why. */
    @Test
    void withheldVersionsFailTheStepsThatNeedThem() throws Exception {
        Result r = console(null, Map.of("COLUMNS", "200"), List.of(), "run", "-q", "--no-drill", "--only-1.0", "display");
        assertEquals(1, r.code());
        assertEquals(List.of("Failures:", "  FAIL  step 46 getScreenFpsConfigNative(): answered \"0\", healthy answer rates "
                + "such as 60,90; logged E KxMMITest_jni: GetScreenFpsConfig fail, kxDisplayNew is null, not support "
                + "multi fps", "  FAIL  step 47 setScreenFpsNative(1): answered true, healthy answer true; logged E "
                + "KxMMITest_jni: SetScreenFps fail, kxDisplayNew is null, not support multi fps"), r.lines().subList(0, 3));
    }

    /** However often and however briefly the crashed service stays down, the drill's verdict is the same. */
    @ParameterizedTest(name = "--restart-delay {0}")
    @ValueSource(strings = {"0", "0", "0", "1", "1", "1", "2"})
    void theCrashDrillGivesOneVerdictForEveryRestartDelay(String delay) throws Exception {
        Result r = console("run", "-q", "--step", "1", "--drill-fault", "crash", "--restart-delay", delay);
        assertEquals(0, r.code(), r.out());
    }
}
