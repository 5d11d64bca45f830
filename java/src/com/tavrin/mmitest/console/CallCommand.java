package com.tavrin.mmitest.console;

import java.io.PrintWriter;
import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.Iterator;
import java.util.List;
import java.util.concurrent.Callable;

import com.tavrin.mmitest.sim.Catalogue;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.sim.SimulatedDevice;

import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.*;

/** {@code ./mmi call}: one native method against a simulated device set up by the options. */
@Command(name = "call",
        header = "One native method against the simulated device",
        description = {"One native method. Prints 'result: VALUE', then 'field: NAME = VALUE' for each static field "
                + "of MmiNativeManager the call wrote, 'log: P TEXT' for every log line and "
                + "'call: SERVICE.OPERATION(ARGS)' for every call a service received. Options may come before "
                + "or after the method; arguments that begin with - go after --."},
        exitCodeList = {"0:the method ran (whatever it answered)", "1:the library did not load, or the method threw",
            "2:the command line was refused"})
final class CallCommand implements Callable<Integer> {
    @Spec
    CommandSpec command;
    @Mixin
    DeviceOptions device = new DeviceOptions();
    @Option(names = "--json", description = "Print the same facts as one JSON object on one line.")
    boolean json;
    @Option(names = "--list-ops", arity = "0..1", paramLabel = "SERVICE", fallbackValue = "",
            completionCandidates = DeviceOptions.ServiceName.class,
            description = "List the operations of every service (or of SERVICE) that --answer can program: the "
                    + "shape of their answer and the answer keywords they take.")
    String listOps;
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

    Method method;
    Object[] arguments;
    List<String> listed;

    /** Every check that needs no library: the options, the method and its arguments. */
    void check() {
        device.check();
        try {
            if (listOps != null && json) {
                throw new IllegalArgumentException("--list-ops prints a list, not JSON, so --json has no effect; "
                        + "give one or the other");
            } else if (listOps != null && methodName != null) {
                throw new IllegalArgumentException("--list-ops takes one service and calls no method, so '"
                        + methodName + "' has no place; give --list-ops SERVICE alone");
            } else if (listOps != null) {
                listed = listOps.isEmpty() ? DeviceOptions.serviceNames() : List.of(DeviceOptions.service(listOps));
            } else if (methodName == null) {
                throw new IllegalArgumentException("no method named; ./mmi call --help lists the methods");
            } else {
                method = Natives.find(methodName);
                arguments = Natives.arguments(method, argTexts);
            }
        } catch (TypeConversionException e) {
            throw new ParameterException(command.commandLine(), "--list-ops: " + e.getMessage());
        }
    }

    @Override
    public Integer call() {
        PrintWriter out = command.commandLine().getOut();
        check();
        if (Console.CHECK_ONLY) {
            return Console.OK;
        }
        if (listed != null) {
            listOperations(new Table.Screen(out, Terminal.of(System.getenv(), System::getProperty, true), false),
                    listed);
            return Console.OK;
        }
        List<LogLine> loadLogs = device.start();
        StepRecord r = StepRecord.invoke(method, arguments);
        if (r.thrown != null) {
            throw new Console.Failure(method.getName() + " threw " + r.thrown);
        }
        // The load's lines belong to the call's story when the load waited for a late service.
        List<LogLine> logs = new ArrayList<>(!device.startDelays.isEmpty() ? loadLogs : List.of());
        logs.addAll(r.logs);
        r.logs = logs;
        if (!json) {
            // The answer as soon as it is known; a crashed service's restart is told after it.
            out.println("result: " + Values.format(r.result));
            r.detail().forEach(line -> out.println(Terminal.printable(line)));
        }
        List<LogLine> restart = awaitRestart();
        if (json) {
            logs.addAll(restart);
            out.println(Values.json(r));
        } else {
            restart.forEach(line -> out.println(Terminal.printable("log: " + line)));
        }
        return Console.OK;
    }

    /** Waits for a service that crashed in the call to register again; the log lines its return brought. */
    private List<LogLine> awaitRestart() {
        List<String> pending = SimulatedDevice.pendingRegistrations();
        long delay = device.restartDelay;
        return device.awaitRestart(String.join(", ", pending) + " to restart", pending.isEmpty() ? 0 : delay, () -> {
            if (!SimulatedDevice.waitRestarts(delay + SimulatedDevice.DEFAULT_WAIT_MS)) {
                throw new Console.Failure("gave up waiting for " + SimulatedDevice.waitingFor());
            }
            return SimulatedDevice.takeLogLines();
        });
    }

    /** One row per operation: service, operation, what it answers and the answer keywords it takes. */
    static void listOperations(Table.Screen out, List<String> services) {
        // Each operation on a line of its own and its keywords under it, so nothing is cut at any
        // width; a line still too wide goes on on the next.
        Catalogue catalogue = SimulatedDevice.catalogue();
        for (String name : services) {
            for (Catalogue.Operation op : catalogue.service(name).orElseThrow().operations()) {
                out.wrap(Table.INDENT + name + "." + op.name() + "  " + op.shape());
                out.wrap(Table.INDENT + "  keywords: " + String.join(", ", catalogue.keywordsFor(op).stream()
                        .map(Catalogue.Keyword::word).toList()));
            }
        }
    }
}
