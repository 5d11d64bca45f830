package com.tavrin.mmitest.console;

import java.io.File;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.TimeUnit;

/**
 * The console as ./mmi runs it, in a JVM of its own per command line, against the library and the
 * simulated device. Arguments: the directory of the native libraries and mmi.jar.
 */
public final class ConsoleEndToEndTest {
    private static String libDir;
    private static String jar;

    private ConsoleEndToEndTest() {}

    public static void main(String[] args) {
        libDir = args[0];
        jar = args[1];
        Check.groups(List.of(ConsoleEndToEndTest::calls, ConsoleEndToEndTest::refusals, ConsoleEndToEndTest::run));
    }

    private static final class Result {
        int code;
        String out;
        String err;
    }

    private static Result console(String... args) {
        List<String> command = new ArrayList<>(List.of(
                System.getProperty("java.home") + File.separator + "bin" + File.separator + "java", "-Xss4m",
                "-Djava.library.path=" + libDir, "-cp", jar, "com.tavrin.mmitest.console.Console"));
        command.addAll(List.of(args));
        try {
            File out = File.createTempFile("console", ".out");
            File err = File.createTempFile("console", ".err");
            try {
                Process p = new ProcessBuilder(command).redirectOutput(out).redirectError(err).start();
                if (!p.waitFor(120, TimeUnit.SECONDS)) {
                    p.destroyForcibly();
                    throw new IllegalStateException("console did not finish: " + String.join(" ", args));
                }
                Result r = new Result();
                r.code = p.exitValue();
                r.out = Files.readString(out.toPath(), StandardCharsets.UTF_8);
                r.err = Files.readString(err.toPath(), StandardCharsets.UTF_8);
                return r;
            } finally {
                out.delete();
                err.delete();
            }
        } catch (IOException | InterruptedException e) {
            throw new IllegalStateException(e);
        }
    }

    private static void calls() {
        Check.group = "call";
        // As bash delivers: --answer power.getPowerState=5,"x" getPowerStateNative "battery"
        Result r = console("call", "--answer", "power.getPowerState=5,x", "getPowerStateNative", "battery");
        Check.eq(0, r.code, "exit code");
        Check.eq("result: \"\"\n"
                + "log: D KxMMITest_jni: GetPowerState, result code: 5, result info: \n"
                + "call: power.getPowerState(\"battery\")\n", r.out, "a failing code empties the power state");

        r = console("call", "--absent", "power", "getPowerStateNative", "\"battery\"");
        Check.eq("result: \"\"\nlog: E KxMMITest_jni: GetPowerState fail, g_kxPower is null\n", r.out,
                "an absent service is not called");

        r = console("call", "--only-1.0", "display", "getScreenFpsConfigNative");
        Check.that(r.out.startsWith("result: \"0\"\n"), "display 1.0 only: no multi-fps: " + r.out);

        r = console("call", "--answer", "touchscreen.getRotateCrownTestResult=true,crown ok",
                "getRotaryCrownSelfTestNative");
        Check.that(r.out.startsWith("result: \"crown ok\"\n"), "bare text with a blank reaches the device: " + r.out);

        r = console("call", "--answer", "power.getPowerState=0,\"caf\\u00e9\\n\"", "getPowerStateNative", "battery");
        Check.that(r.out.startsWith("result: \"caf\\u00e9\\n\"\n"), "escapes in the result: " + r.out);

        r = console("call", "sendBigDataOperationNative", "{mVersion:1, mBsn:\"B\\\"1\", mStation:S2}");
        Check.that(r.out.contains("call: factory.sendBigDataOperation({version: 1, commandId: 0, operation: 0, "
                + "cycle: 0, station: \"S2\", bsn: \"B\\\"1\"})"), "record as the service received it: " + r.out);

        r = console("call", "getVerifySignatureResultNative", "x007fa5ff");
        Check.that(r.out.startsWith("result: 0\n") && r.out.contains("call: factory.setFactoryInfo(11, \"007fa5ff\")"),
                "bytes reach the service as hex: " + r.out);

        r = console("call", "setApPressureCalibExternNative", "1", "11", "[1, -2, 3]");
        Check.that(r.out.contains("call: sensors.setApPressureCalibrationExtern(1, 11, [1, -2, 3])"),
                "int array argument: " + r.out);

        r = console("call", "--answer", "sensors.handleSensorParameter=0,\"\",[7,8]", "handleAmbientLightParameterNative",
                "5", "2", "0", "64");
        Check.that(r.out.startsWith("result: [7, 8, 0, 0,") && r.out.lines().findFirst().orElse("").split(",").length == 64,
                "int array result: " + r.out);

        r = console("call", "getTpPressureWaitingTimeNative");
        Check.that(r.out.startsWith("result: 5000\n"), "long result: " + r.out);
    }

    private static void refusals() {
        Check.group = "call refusals";
        Result r = console("call", "--answer", "power.getPowerStat=5", "getPowerStateNative", "battery");
        Check.eq(2, r.code, "unknown operation: exit code");
        Check.that(r.err.contains("getPowerStat") && r.out.isEmpty(), "unknown operation named: " + r.err);

        r = console("call", "--answer", "power.setPowerState=nocallback", "setPowerStateNative", "a", "b");
        Check.eq(2, r.code, "bad answer: exit code");
        Check.that(r.err.contains("nocallback"), "the device's reason is shown: " + r.err);

        r = console("call", "getPowerStateNative");
        Check.eq(2, r.code, "missing argument: exit code");
        Check.that(r.err.contains("takes 1 argument"), "missing argument named: " + r.err);

        r = console("call", "getPowerState", "battery");
        Check.eq(2, r.code, "unknown method: exit code");

        r = console("frobnicate");
        Check.eq(2, r.code, "unknown command: exit code");
        r = console("call");
        Check.that(r.code == 0 && r.out.contains("getPowerStateNative(String query) -> String"),
                "call without a method lists the methods");
    }

    private static void run() {
        Check.group = "run";
        Result r = console("run");
        Check.eq(0, r.code, "exit code");
        long rows = r.out.lines().filter(l -> l.matches("\\s+\\d+\\s+\\w+Native\\b.*\\b(PASS|FAIL)\\b.*")).count();
        Check.eq((long) FactorySequence.steps().size(), rows, "one row per step");
        Check.that(r.out.contains("sequence: " + rows + " passed, 0 failed"), "a healthy device passes every step");
        Check.that(r.out.contains("service received: factory.sendBigDataValue({version: 1"), "the record is shown");
        Check.that(r.out.matches("(?s).*\ndrill: (\\d+) of \\1 checks passed\n"), "the drill passes: " + r.out);
    }
}
