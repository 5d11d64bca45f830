package com.tavrin.mmitest.console;

import com.tavrin.mmitest.sim.SimulatedDevice;

import java.util.ArrayList;
import java.util.Iterator;
import java.util.List;
import java.util.StringJoiner;

import picocli.CommandLine.ITypeConverter;
import picocli.CommandLine.Option;
import picocli.CommandLine.TypeConversionException;

/** How the simulated device deviates from a healthy one: the options run and call share. */
final class DeviceOptions {
    static final List<String> SERVICES =
            List.of("factory", "display", "touchscreen", "sensors", "power", "light", "otherdevices");
    /** The services with a version 1.1 that --only-1.0 can withhold. */
    static final List<String> VERSIONED = List.of("factory", "display", "sensors");

    @Option(names = "--absent", paramLabel = "SERVICE", converter = AnyService.class,
            completionCandidates = ServiceNames.class,
            description = "Leave the service unregistered.")
    List<String> absent = new ArrayList<>();

    @Option(names = "--only-1.0", paramLabel = "SERVICE", converter = VersionedService.class,
            completionCandidates = VersionedNames.class,
            description = "Offer only version 1.0 of the service: factory, display or sensors.")
    List<String> onlyV10 = new ArrayList<>();

    @Option(names = "--answer", paramLabel = "SERVICE.OPERATION=ANSWER", converter = AnswerConverter.class,
            description = "Program what the operation answers from now on; crash: the service dies in the middle "
                    + "of the call and restarts after the restart delay.")
    List<Answer> answers = new ArrayList<>();

    @Option(names = "--start-delay", paramLabel = "SERVICE=MS", converter = StartDelayConverter.class,
            description = "Register the service MS milliseconds after the device starts; the library's load waits "
                    + "for it.")
    List<StartDelay> startDelays = new ArrayList<>();

    @Option(names = "--restart-delay", paramLabel = "MS|never", converter = RestartDelayConverter.class,
            description = "How long a crashed service stays down before it registers again (default: 300), or never.")
    Long restartDelay;

    static final class StartDelay {
        final String service;
        final long ms;

        StartDelay(String service, long ms) {
            this.service = service;
            this.ms = ms;
        }
    }

    static final class Answer {
        final String service;
        final String operation;
        final String text;

        Answer(String service, String operation, String text) {
            this.service = service;
            this.operation = operation;
            this.text = text;
        }

        @Override
        public String toString() {
            return service + "." + operation + "=" + text;
        }
    }

    /** Sets the device up before it starts; null when done, else what it refused. */
    String apply() {
        for (String service : absent) {
            SimulatedDevice.setAbsent(service, true);
        }
        for (String service : onlyV10) {
            SimulatedDevice.setOnlyV10(service, true);
        }
        for (StartDelay delay : startDelays) {
            SimulatedDevice.setStartDelay(delay.service, delay.ms);
        }
        if (restartDelay != null) {
            SimulatedDevice.setRestartDelay(restartDelay);
        }
        for (Answer answer : answers) {
            String error = program(answer);
            if (error != null) {
                return "--answer " + answer + ": " + error;
            }
        }
        return null;
    }

    /** Programs an answer as typed, or with its bare words quoted; null when accepted, else why not. */
    static String program(Answer answer) {
        String error = SimulatedDevice.program(answer.service, answer.operation, answer.text);
        if (error == null) {
            return null;
        }
        String requoted = Answers.requote(answer.text);
        if (requoted.equals(answer.text)) {
            return Answers.explain(answer.text, error);
        }
        String again = SimulatedDevice.program(answer.service, answer.operation, requoted);
        return again == null ? null : Answers.explain(answer.text, error + "; quoted as " + requoted + ": " + again);
    }

    static String service(String name, List<String> allowed) {
        if (!allowed.contains(name)) {
            throw new TypeConversionException("unknown service '" + name + "'; the services are "
                    + String.join(", ", allowed));
        }
        return name;
    }

    /** What the shell completion offers where a service is named. */
    static final class ServiceNames implements Iterable<String> {
        @Override
        public Iterator<String> iterator() {
            return SERVICES.iterator();
        }
    }

    static final class VersionedNames implements Iterable<String> {
        @Override
        public Iterator<String> iterator() {
            return VERSIONED.iterator();
        }
    }

    static final class AnyService implements ITypeConverter<String> {
        @Override
        public String convert(String value) {
            return service(value, SERVICES);
        }
    }

    static final class VersionedService implements ITypeConverter<String> {
        @Override
        public String convert(String value) {
            if (SERVICES.contains(value) && !VERSIONED.contains(value)) {
                throw new TypeConversionException(value + " has no version 1.1 to withhold (--only-1.0 takes "
                        + String.join(", ", VERSIONED) + ")");
            }
            return service(value, VERSIONED);
        }
    }

    /**
     * What the load will wait for, said before it starts so that the wait is never silent; null
     * when no service starts late.
     */
    String startNote() {
        if (startDelays.isEmpty()) {
            return null;
        }
        StringJoiner late = new StringJoiner(", ");
        for (StartDelay delay : startDelays) {
            late.add(delay.service + " after " + delay.ms + " ms");
        }
        return "the library's load waits for the late services to register (" + late + ")";
    }

    /** Whether a service starts late, so that what the library's load went through is worth showing. */
    boolean lateStart() {
        return !startDelays.isEmpty();
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

    static final class StartDelayConverter implements ITypeConverter<StartDelay> {
        @Override
        public StartDelay convert(String option) {
            int eq = option.indexOf('=');
            if (eq <= 0) {
                throw new TypeConversionException("--start-delay takes SERVICE=MS, got " + option);
            }
            return new StartDelay(service(option.substring(0, eq), SERVICES),
                    milliseconds(option.substring(eq + 1), "--start-delay", ""));
        }
    }

    static final class RestartDelayConverter implements ITypeConverter<Long> {
        @Override
        public Long convert(String value) {
            return value.equals("never") ? -1L : milliseconds(value, "--restart-delay", " or never");
        }
    }

    static final class AnswerConverter implements ITypeConverter<Answer> {
        @Override
        public Answer convert(String option) {
            int eq = option.indexOf('=');
            int dot = eq < 0 ? -1 : option.lastIndexOf('.', eq);
            if (dot <= 0 || dot + 1 == eq) {
                throw new TypeConversionException("--answer takes SERVICE.OPERATION=ANSWER, got " + option);
            }
            return new Answer(service(option.substring(0, dot), SERVICES), option.substring(dot + 1, eq),
                    option.substring(eq + 1));
        }
    }
}
