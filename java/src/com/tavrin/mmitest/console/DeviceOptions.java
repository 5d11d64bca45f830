package com.tavrin.mmitest.console;

import com.tavrin.mmitest.sim.Catalogue;
import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.sim.SimulatedDevice;

import java.util.ArrayList;
import java.util.HashSet;
import java.util.Set;
import java.util.Iterator;
import java.util.Optional;
import java.util.List;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.TimeoutException;
import java.util.stream.Collectors;

import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.*;

/** How the simulated device deviates from a healthy one: the options run and call share. */
final class DeviceOptions {
    /** The command these options belong to: refusals and waits speak in its name. */
    @Spec(Spec.Target.MIXEE)
    CommandSpec command;
    @Option(names = "--absent", paramLabel = "SERVICE", converter = ServiceName.class,
            completionCandidates = ServiceName.class, description = "Leave the service unregistered.")
    List<String> absent = new ArrayList<>();
    @Option(names = "--only-1.0", paramLabel = "SERVICE", converter = ServiceName.class,
            completionCandidates = VersionedNames.class,
            description = "Offer only version 1.0 of a service that has a version 1.1.")
    List<String> onlyV10 = new ArrayList<>();

    @Option(names = "--answer", paramLabel = "SERVICE.OPERATION=ANSWER",
            description = "Program what the operation answers from now on; crash: the service dies in the middle "
                    + "of the call and restarts after the restart delay.")
    List<Answer> answers = new ArrayList<>();
    @Option(names = "--start-delay", paramLabel = "SERVICE=MS",
            description = "Register the service MS milliseconds after the device starts; the library's load waits "
                    + "for it.")
    List<StartDelay> startDelays = new ArrayList<>();
    /** How long a crashed service stays down when --restart-delay does not say: as the device would. */
    @Option(names = "--restart-delay", paramLabel = "MS|never", converter = RestartDelayConverter.class,
            defaultValue = "300",
            description = "How long a crashed service stays down before it registers again (default: "
                    + "${DEFAULT-VALUE}), or never.")
    long restartDelay;

    record StartDelay(String service, long ms) {
        static StartDelay parse(String option) {
            int eq = option.indexOf('=');
            if (eq <= 0) {
                throw new TypeConversionException("--start-delay takes SERVICE=MS, got " + option);
            }
            return new StartDelay(DeviceOptions.service(option.substring(0, eq)),
                    milliseconds(option.substring(eq + 1), "--start-delay", ""));
        }
    }

    record Answer(String service, String operation, String text) {
        static Answer parse(String option) {
            int eq = option.indexOf('=');
            int dot = eq < 0 ? -1 : option.lastIndexOf('.', eq);
            if (dot <= 0 || dot + 1 == eq) {
                throw new TypeConversionException("--answer takes SERVICE.OPERATION=ANSWER, got " + option);
            }
            return new Answer(DeviceOptions.service(option.substring(0, dot)), option.substring(dot + 1, eq),
                    option.substring(eq + 1));
        }

        @Override
        public String toString() {
            return service + "." + operation + "=" + text;
        }
    }

    /**
     * The device's description of itself, which names its services and answer keywords. Empty when
     * its library is not built yet: ./mmi's checks before the build then leave the names to the
     * console's second start.
     */
    static Optional<Catalogue> known() {
        try {
            return Optional.of(SimulatedDevice.catalogue());
        } catch (LinkageError e) {
            return Optional.empty();
        }
    }

    static List<String> serviceNames() {
        return known().map(Catalogue::serviceNames).orElse(List.of());
    }

    static List<String> versioned() {
        return known().map(c -> c.services().stream().filter(Catalogue.Service::hasV11).map(Catalogue.Service::name)
                .toList()).orElse(List.of());
    }

    /** Refuses options that contradict each other; needs no library. */
    void check() {
        List<String> versioned = versioned();
        for (String s : onlyV10) {
            refuseIf(!versioned.isEmpty() && !versioned.contains(s), s + " has no version 1.1 to withhold "
                    + "(--only-1.0 takes " + String.join(", ", versioned) + ")");
            refuseIf(absent.contains(s), "--absent " + s + " and --only-1.0 " + s
                    + " contradict each other: an absent service offers no version");
        }
        Set<String> late = new HashSet<>();
        for (StartDelay d : startDelays) {
            refuseIf(absent.contains(d.service()), "--absent " + d.service() + " and --start-delay "
                    + d.service() + "=" + d.ms() + " contradict each other: an absent service never registers");
            refuseIf(!late.add(d.service()), "--start-delay " + d.service()
                    + " is given twice; give one delay per service");
        }
        // Which answer would the device give? The last one, quietly: refuse rather than guess.
        Set<String> answered = new HashSet<>();
        for (Answer a : answers) {
            String operation = a.service() + "." + a.operation();
            refuseIf(!answered.add(operation), "--answer " + operation
                    + " is given twice; give one answer per operation");
        }
    }

    private void refuseIf(boolean refused, String message) {
        if (refused) {
            throw new ParameterException(command.commandLine(), message);
        }
    }

    /**
     * Sets the device up, starts it and loads the library in front of it, saying first what the
     * load waits for when a service starts late. Returns the log lines loading wrote; the calls it
     * made are dropped, as no request made them.
     */
    List<LogLine> start() {
        try {
            SimulatedDevice.catalogue();
        } catch (LinkageError e) {
            throw new Console.Failure("cannot load the simulated device: " + e.getMessage());
        }
        absent.forEach(s -> SimulatedDevice.setAbsent(s, true));
        onlyV10.forEach(s -> SimulatedDevice.setOnlyV10(s, true));
        startDelays.forEach(d -> SimulatedDevice.setStartDelay(d.service(), d.ms()));
        SimulatedDevice.setRestartDelay(restartDelay);
        programAnswers();
        if (!startDelays.isEmpty()) {
            say("the library's load waits for the late services to register (" + startDelays.stream()
                    .map(d -> d.service() + " after " + d.ms() + " ms").collect(Collectors.joining(", ")) + ")");
        }
        long longest = startDelays.stream().mapToLong(StartDelay::ms).max().orElse(0);
        return await("the late services to register", longest, () -> {
            SimulatedDevice.captureLogs();
            SimulatedDevice.start();
            Natives.load();
            SimulatedDevice.waitIdle();
            SimulatedDevice.takeCallRecords();
            return SimulatedDevice.takeLogLines();
        });
    }

    /** Programs every --answer as typed: the device reads a bare word as text, as the shell leaves it. */
    void programAnswers() {
        for (Answer a : answers) {
            String error = SimulatedDevice.program(a.service(), a.operation(), a.text());
            if (error != null) {
                throw new IllegalArgumentException("--answer " + a + ": " + error);
            }
        }
    }

    static String service(String name) {
        List<String> names = serviceNames();
        if (names.isEmpty() || names.contains(name)) {
            return name;
        }
        throw new TypeConversionException("unknown service '" + name + "'" + Console.didYouMean(name, names,
                "; the services are " + String.join(", ", names)));
    }

    /** A service named on the command line, and what the shell completion offers there. */
    static final class ServiceName implements ITypeConverter<String>, Iterable<String> {
        @Override
        public String convert(String name) {
            return service(name);
        }

        @Override
        public Iterator<String> iterator() {
            return serviceNames().iterator();
        }
    }

    static final class VersionedNames implements Iterable<String> {
        @Override
        public Iterator<String> iterator() {
            return versioned().iterator();
        }
    }

    /** Waits for a crashed service to restart, saying so first when that takes longer than a moment. */
    <T> T awaitRestart(String what, long ms, Callable<T> work) {
        if (ms > 2000) {
            say("waiting for " + what + " (--restart-delay " + restartDelay + " ms)");
        }
        return await(what, ms, work);
    }

    /**
     * Does work that may wait on another thread and returns what it returns; a wait longer than
     * two seconds says every five how long it has waited, so that no wait is silent.
     */
    private <T> T await(String what, long expectedMs, Callable<T> work) {
        FutureTask<T> done = new FutureTask<>(work);
        Thread worker = new Thread(done, "mmi " + what);
        worker.setDaemon(true);
        worker.start();
        long start = System.nanoTime();
        for (long next = 2000; ; next += 5000) {
            try {
                return done.get(Math.max(1, next - (System.nanoTime() - start) / 1_000_000), TimeUnit.MILLISECONDS);
            } catch (TimeoutException e) {
                say("still waiting for " + what + " (" + (System.nanoTime() - start) / 1_000_000_000 + " s"
                        + (expectedMs > 0 ? " of about " + (expectedMs + 999) / 1000 + " s" : "") + ")");
            } catch (InterruptedException e) {
                Thread.currentThread().interrupt();
                throw new Console.Failure("interrupted while waiting for " + what);
            } catch (ExecutionException e) {
                throw e.getCause() instanceof RuntimeException r ? r : new Console.Failure(e.getCause().toString());
            }
        }
    }

    /** A line on stderr in the command's name. */
    private void say(String message) {
        command.commandLine().getErr().println(Console.prefix(command.commandLine()) + message);
    }

    /** The longest a delay may be: longer ones would look like a hang. */
    static final long MAX_DELAY_MS = 60_000;

    static long milliseconds(String text, String option, String or) {
        try {
            long ms = Long.parseLong(text);
            if (ms >= 0 && ms <= MAX_DELAY_MS) {
                return ms;
            }
        } catch (NumberFormatException e) {
            // reported below
        }
        throw new TypeConversionException(option + " takes milliseconds 0 to " + MAX_DELAY_MS + or + ", got "
                + text);
    }

    static final class RestartDelayConverter implements ITypeConverter<Long> {
        @Override
        public Long convert(String value) {
            return value.equals("never") ? -1L : milliseconds(value, "--restart-delay", " or never");
        }
    }
}
