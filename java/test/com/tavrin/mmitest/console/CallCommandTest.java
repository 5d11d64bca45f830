package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.OutputStream;
import java.util.ArrayList;
import java.util.List;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

import picocli.CommandLine;
import picocli.CommandLine.ParameterException;

/** The command line of {@code call} and its answers, parsed without running anything. */
class CallCommandTest {
    /** Parses a command line as the console does, without running it; refusals as IllegalArgumentException. */
    static CallCommand parse(List<String> args) {
        CommandLine line = Console.commandLine(OutputStream.nullOutputStream(), OutputStream.nullOutputStream());
        List<String> all = new ArrayList<>(List.of("call"));
        all.addAll(args);
        try {
            line.parseArgs(all.toArray(new String[0]));
            CallCommand command = line.getSubcommands().get("call").getCommand();
            command.check();
            return command;
        } catch (ParameterException e) {
            throw new IllegalArgumentException(Console.reason(e, all));
        }
    }

    @Test
    void answerMethodAndArgument() {
        // As bash delivers: --answer power.getPowerState=5,"x" getPowerStateNative "battery"
        CallCommand r = parse(List.of("--answer", "power.getPowerState=5,x", "getPowerStateNative", "battery"));
        assertEquals("[power.getPowerState=5,x] getPowerStateNative [battery]",
                r.device.answers + " " + r.method.getName() + " " + List.of(r.arguments));
    }

    @Test
    void optionsAndTypedArguments() {
        CallCommand r = parse(List.of("--absent", "light", "--only-1.0=display",
                "--answer=factory.getFactoryInfo=0,\"a=b\"", "--json", "--", "sensorActivateNative", "5", "true", "-1"));
        assertEquals(List.of(List.of("light"), List.of("display"), "0,\"a=b\"", true, List.of(5, true, -1)),
                List.of(r.device.absent, r.device.onlyV10, r.device.answers.get(0).text(), r.json, List.of(r.arguments)));
    }

    @Test
    void lateAndRestartingServices() {
        CallCommand r = parse(List.of("--start-delay", "power=1500", "--start-delay=light=0",
                "--restart-delay", "never", "getBsnNative"));
        assertEquals(List.of("power=1500", "light=0", -1L), List.of(
                r.device.startDelays.get(0).service() + "=" + r.device.startDelays.get(0).ms(),
                r.device.startDelays.get(1).service() + "=" + r.device.startDelays.get(1).ms(), r.device.restartDelay));
        assertEquals(250L, parse(List.of("--restart-delay=250", "getBsnNative")).device.restartDelay);
    }

    @Test
    void optionsAfterTheMethod() {
        CallCommand r = parse(List.of("setTestCycleNative", "--absent", "light", "-3", "--json", "4"));
        assertEquals(List.of(List.of("light"), true, List.of(-3, 4)), List.of(r.device.absent, r.json, List.of(r.arguments)));
    }

    @Test
    void afterTwoDashesEverythingIsAnArgument() {
        CallCommand r = parse(List.of("getPowerStateNative", "--", "--answer"));
        assertEquals(List.of("--answer"), List.of(r.arguments));
    }

    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {
        "getBsnNative --bogus | goes after --: mmi call METHOD -- --bogus",
        "setTestCycleNative 2147483648 1 | 2147483648 is out of range for int",
        "--answer power=5 getBsnNative | SERVICE.OPERATION=ANSWER",
        "--absent | needs a value",
        "--bogus | unknown option --bogus",
        "--absent light | no method named",
        "getBsnNative2 | no native method getBsnNative2",
        "getPowerStateNative | takes 1 argument, got 0",
        "setMmiResultNative 1 two | argument 2",
        "--start-delay power getBsnNative | SERVICE=MS",
        "--start-delay power=-5 getBsnNative | milliseconds 0 to 60000, got -5",
        "--restart-delay soon getBsnNative | milliseconds 0 to 60000 or never, got soon"})
    void refused(String line, String reason) {
        IllegalArgumentException e = assertThrows(IllegalArgumentException.class,
                () -> parse(List.of(line.split(" "))));
        assertTrue(e.getMessage().contains(reason), e.getMessage());
    }
}
