package com.tavrin.mmitest.console;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

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
        }, () -> {
            Check.group = "run";
            String[] r = console(args, "run");
            Check.eq("0", r[0], "exit code");
            Check.that(r[1].contains("sequence: " + FactorySequence.steps().size() + " passed, 0 failed"),
                    "a healthy device passes every step");
            Check.that(r[1].matches("(?s).*\ndrill: (\\d+) of \\1 checks passed\n"), "the drill passes: " + r[1]);
        }));
    }

    /** Exit code and standard output of one console command line; its errors go to ours. */
    private static String[] console(String[] dirs, String... args) {
        List<String> command = new ArrayList<>(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Xss4m", "-Djava.library.path=" + dirs[0], "-cp", dirs[1], "com.tavrin.mmitest.console.Console"));
        command.addAll(List.of(args));
        try {
            Process p = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT).start();
            String out = new String(p.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
            return new String[] {String.valueOf(p.waitFor()), out};
        } catch (IOException | InterruptedException e) {
            throw new IllegalStateException(e);
        }
    }
}
