package com.tavrin.mmitest.console;

import com.tavrin.mmitest.sim.SimulatedDevice;

import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.PrintStream;
import java.lang.reflect.Method;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;

/**
 * The factory-test console: the native library in front of the simulated device.
 *
 * <pre>
 * run                          the factory-test sequence, then a service-death drill
 * call [OPTIONS] METHOD ARGS   one native method; prints its result, log lines and service calls
 * </pre>
 *
 * Exit codes: 0 done, 1 the library or the drill failed, 2 a command line the console refuses.
 */
public final class Console {
    static final int OK = 0;
    static final int FAILED = 1;
    static final int USAGE = 2;

    private Console() {}

    public static void main(String[] args) {
        // UTF-8 whatever the locale: device texts and log lines may carry any character.
        PrintStream out = new PrintStream(new FileOutputStream(FileDescriptor.out), true, StandardCharsets.UTF_8);
        PrintStream err = new PrintStream(new FileOutputStream(FileDescriptor.err), true, StandardCharsets.UTF_8);
        int code;
        if (args.length == 0 || args[0].equals("help") || args[0].equals("--help") || args[0].equals("-h")) {
            usage(out);
            code = OK;
        } else if (args[0].equals("run") && args.length == 1) {
            code = FactoryRun.run(out, err);
        } else if (args[0].equals("call")) {
            code = call(Arrays.asList(args).subList(1, args.length), out, err);
        } else {
            err.println("mmi: unknown command: " + String.join(" ", args));
            usage(err);
            code = USAGE;
        }
        out.flush();
        err.flush();
        System.exit(code);
    }

    static void usage(PrintStream out) {
        out.println("usage: ./mmi run");
        out.println("       ./mmi call [--absent SERVICE]... [--only-1.0 SERVICE]... "
                + "[--answer SERVICE.OPERATION=ANSWER]... METHOD [ARG]...");
        out.println();
        out.println("run   the factory-test sequence over every native method against a healthy simulated");
        out.println("      device, then a drill that kills and revives the power service");
        out.println("call  one native method; prints 'result: VALUE', then 'log: P TEXT' for every log line");
        out.println("      and 'call: SERVICE.OPERATION(ARGS)' for every call a service received");
        out.println();
        out.println("SERVICE    " + String.join(", ", CallRequest.SERVICES)
                + " (--only-1.0: " + String.join(", ", CallRequest.VERSIONED) + ")");
        out.println("ANSWER     nocallback, transport-error, or values separated by commas: 7, true,");
        out.println("           \"text\", [1,2,3]; quote the whole option for the shell to keep the quotes");
        out.println("           (a bare word is taken as text: power.getPowerState=5,x)");
        out.println("ARG        int, long: -12   boolean: true   String: '\"a\\u00e9\\n\"', a bare word, or null");
        out.println("           int[]: '[1,2,3]'   byte[]: x007fa5ff   BigDataValue, BigDataOperation:");
        out.println("           '{\"mVersion\":1,\"mBsn\":\"X\"}' (fields left out keep their defaults)");
        out.println();
        out.println("METHOD");
        for (Method m : Natives.all()) {
            out.println("  " + Natives.signature(m));
        }
    }

    static int call(List<String> args, PrintStream out, PrintStream err) {
        if (args.isEmpty() || args.get(0).equals("--help") || args.get(0).equals("-h")) {
            usage(out);
            return OK;
        }
        CallRequest request;
        try {
            request = CallRequest.parse(args);
        } catch (IllegalArgumentException e) {
            err.println("mmi call: " + e.getMessage());
            return USAGE;
        }
        for (String service : request.absent) {
            SimulatedDevice.setAbsent(service, true);
        }
        for (String service : request.onlyV10) {
            SimulatedDevice.setOnlyV10(service, true);
        }
        for (CallRequest.Answer answer : request.answers) {
            String error = program(answer);
            if (error != null) {
                err.println("mmi call: --answer " + answer + ": " + error);
                return USAGE;
            }
        }
        SimulatedDevice.captureLogs();
        SimulatedDevice.start();
        try {
            Natives.load();
        } catch (IllegalStateException e) {
            err.println("mmi call: " + e.getMessage());
            return FAILED;
        }
        SimulatedDevice.waitIdle();
        // What loading wrote and called is not the method's doing.
        SimulatedDevice.takeLogs();
        SimulatedDevice.takeCalls();
        Object result;
        try {
            result = Natives.invoke(request.method, request.arguments);
        } catch (Throwable t) {
            err.println("mmi call: " + request.method.getName() + " threw " + t);
            return FAILED;
        }
        SimulatedDevice.waitIdle();
        out.println("result: " + Values.format(result));
        for (String line : SimulatedDevice.takeLogs()) {
            out.println("log: " + line);
        }
        for (String line : SimulatedDevice.takeCalls()) {
            out.println("call: " + line);
        }
        return OK;
    }

    /** Programs an answer as typed, or with its bare words quoted; null when accepted, else why not. */
    static String program(CallRequest.Answer answer) {
        String error = SimulatedDevice.program(answer.service, answer.operation, answer.text);
        if (error == null) {
            return null;
        }
        String requoted = Answers.requote(answer.text);
        if (requoted.equals(answer.text)) {
            return error;
        }
        String again = SimulatedDevice.program(answer.service, answer.operation, requoted);
        return again == null ? null : error + "; quoted as " + requoted + ": " + again;
    }
}
