package com.tavrin.mmitest.console;

import java.io.IOException;
import java.io.PrintWriter;
import java.io.StringWriter;
import java.io.UncheckedIOException;
import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.Callable;

import com.google.gson.stream.JsonWriter;
import com.tavrin.mmitest.sim.SimulatedDevice;

import picocli.CommandLine;
import picocli.CommandLine.Command;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;

/** {@code ./mmi call}: one native method against a simulated device set up by the options. */
@Command(name = "call", sortOptions = false, header = "One native method against the simulated device",
        description = {"One native method. Prints 'result: VALUE', then 'field: NAME = VALUE' for each static field "
                + "of MmiNativeManager the call wrote, 'log: P TEXT' for every log line and "
                + "'call: SERVICE.OPERATION(ARGS)' for every call a service received."})
final class CallCommand implements Callable<Integer> {
    @Mixin
    DeviceOptions device = new DeviceOptions();

    @Option(names = "--json", description = "Print the same facts as one JSON object on one line.")
    boolean json;

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Print this help.")
    boolean help;

    @Parameters(index = "0", arity = "0..1", paramLabel = "METHOD", description = "A native method of MmiNativeManager.")
    String methodName;

    @Parameters(index = "1..*", paramLabel = "ARG", description = "One per parameter of the method.")
    List<String> argTexts = new ArrayList<>();

    /** The command line this command runs in; set when the console's command line is made. */
    CommandLine commandLine;

    Method method;
    Object[] arguments;

    /** Parses a command line as the console does, without running it; refusals as IllegalArgumentException. */
    static CallCommand parse(List<String> args) {
        CommandLine line = Console.commandLine();
        List<String> all = new ArrayList<>(List.of("call"));
        all.addAll(args);
        try {
            line.parseArgs(all.toArray(new String[0]));
        } catch (CommandLine.ParameterException e) {
            throw new IllegalArgumentException(Console.reason(e));
        }
        CallCommand command = line.getSubcommands().get("call").getCommand();
        command.resolve();
        return command;
    }

    /** Finds the method and reads its arguments. */
    void resolve() {
        if (methodName == null) {
            throw new IllegalArgumentException("no method named");
        }
        method = Natives.find(methodName);
        arguments = Natives.arguments(method, argTexts);
    }

    @Override
    public Integer call() {
        PrintWriter out = commandLine.getOut();
        PrintWriter err = commandLine.getErr();
        if (methodName == null && device.isEmpty() && !json) {
            commandLine.usage(out);
            return Console.OK;
        }
        try {
            resolve();
        } catch (IllegalArgumentException e) {
            err.println("mmi call: " + e.getMessage());
            return Console.USAGE;
        }
        String refused = device.apply();
        if (refused != null) {
            err.println("mmi call: " + refused);
            return Console.USAGE;
        }
        String[] loadLogs;
        try {
            loadLogs = Natives.startDevice();
        } catch (IllegalStateException e) {
            err.println("mmi call: " + e.getMessage());
            return Console.FAILED;
        }
        StepRecord r = StepRecord.invoke(method, arguments);
        // A crashed service's restart, and the reconnect it brings, belong to the call's story.
        SimulatedDevice.waitRestarts();
        List<String> logs = new ArrayList<>();
        if (device.lateStart()) {
            logs.addAll(List.of(loadLogs));  // the load waited for a late service
        }
        logs.addAll(List.of(r.logs));
        logs.addAll(List.of(SimulatedDevice.takeLogs()));
        r.logs = logs.toArray(new String[0]);
        if (r.thrown != null) {
            err.println("mmi call: " + method.getName() + " threw " + r.thrown);
            return Console.FAILED;
        }
        if (json) {
            out.println(json(r));
        } else {
            out.println("result: " + Values.format(r.result));
            r.detail().forEach(out::println);
        }
        return Console.OK;
    }

    static String json(StepRecord r) {
        StringWriter text = new StringWriter();
        try (JsonWriter w = Values.jsonWriter(text)) {
            r.writeJson(w);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return text.toString();
    }
}
