package com.tavrin.mmitest.console;

import java.io.IOException;
import java.io.PrintWriter;
import java.io.StringWriter;
import java.io.UncheckedIOException;
import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.Iterator;
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
@Command(name = "call", sortOptions = false, versionProvider = Console.Version.class,
        header = "One native method against the simulated device",
        description = {"One native method. Prints 'result: VALUE', then 'field: NAME = VALUE' for each static field "
                + "of MmiNativeManager the call wrote, 'log: P TEXT' for every log line and "
                + "'call: SERVICE.OPERATION(ARGS)' for every call a service received. Options may come before "
                + "or after the method; arguments that begin with - go after --."},
        exitCodeListHeading = "%nExit codes:%n",
        exitCodeList = {"0:the method ran (whatever it answered)", "1:the library did not load, or the method threw",
            "2:the command line was refused"})
final class CallCommand implements Callable<Integer> {
    @Mixin
    DeviceOptions device = new DeviceOptions();

    @Option(names = "--json", description = "Print the same facts as one JSON object on one line.")
    boolean json;

    @Option(names = "--list-ops", arity = "0..1", paramLabel = "SERVICE", fallbackValue = "",
            completionCandidates = DeviceOptions.ServiceNames.class,
            description = "List the operations of every service (or of SERVICE) that --answer can program: the "
                    + "shape of their answer and the answer keywords they take.")
    String listOps;

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Print this help.")
    boolean help;

    @Option(names = {"-V", "--version"}, versionHelp = true, description = "Print the version.")
    boolean version;

    @Parameters(index = "0", arity = "0..1", paramLabel = "METHOD", completionCandidates = MethodNames.class,
            description = "A native method of MmiNativeManager.")
    String methodName;

    @Parameters(index = "1..*", paramLabel = "ARG", description = "One per parameter of the method.")
    List<String> argTexts = new ArrayList<>();

    /** What the shell completion offers for METHOD. */
    static final class MethodNames implements Iterable<String> {
        @Override
        public Iterator<String> iterator() {
            return Natives.all().stream().map(Method::getName).iterator();
        }
    }

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
            throw new IllegalArgumentException("no method named; ./mmi call --help lists the methods");
        }
        method = Natives.find(methodName);
        arguments = Natives.arguments(method, argTexts);
    }

    @Override
    public Integer call() {
        PrintWriter out = commandLine.getOut();
        PrintWriter err = commandLine.getErr();
        if (listOps != null) {
            try {
                listOperations(out, Terminal.of(System.getenv(), true), listOps.isEmpty() ? DeviceOptions.SERVICES
                        : List.of(DeviceOptions.service(listOps, DeviceOptions.SERVICES)));
            } catch (CommandLine.TypeConversionException e) {
                err.println("mmi call: --list-ops: " + e.getMessage());
                return Console.USAGE;
            }
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
        if (device.startNote() != null) {
            err.println("mmi call: " + device.startNote());
        }
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

    /** One row per operation: service, operation, what it answers and the answer keywords it takes. */
    static void listOperations(PrintWriter out, Terminal terminal, List<String> services) {
        // Each operation on a line of its own and its keywords under it, so nothing is cut at any
        // width; a line still too wide goes on on the next.
        for (String service : services) {
            String[] names = SimulatedDevice.operations(service);
            String[] shapes = SimulatedDevice.shapes(service);
            for (int i = 0; i < names.length; i++) {
                List<String> lines = new ArrayList<>(Table.wrap(Table.INDENT + service + "." + names[i] + "  "
                        + shapes[i], terminal.width));
                lines.addAll(Table.wrap(Table.INDENT + "  keywords: " + String.join(", ", Answers.keywords(shapes[i])),
                        terminal.width));
                lines.forEach(out::println);
            }
        }
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
