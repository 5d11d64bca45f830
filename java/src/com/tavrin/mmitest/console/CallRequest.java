package com.tavrin.mmitest.console;

import java.lang.reflect.Method;
import java.util.ArrayList;
import java.util.List;

/** One {@code call} command line, checked as far as it can be before the device starts. */
final class CallRequest {
    static final List<String> SERVICES =
            List.of("factory", "display", "touchscreen", "sensors", "power", "light", "otherdevices");
    /** The services with a version 1.1 that --only-1.0 can withhold. */
    static final List<String> VERSIONED = List.of("factory", "display", "sensors");

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

    final List<String> absent = new ArrayList<>();
    final List<String> onlyV10 = new ArrayList<>();
    final List<Answer> answers = new ArrayList<>();
    Method method;
    Object[] arguments;

    static CallRequest parse(List<String> args) {
        CallRequest request = new CallRequest();
        int i = 0;
        while (i < args.size() && args.get(i).startsWith("--")) {
            String option = args.get(i++);
            if (option.equals("--")) {
                break;
            }
            String value;
            int eq = option.indexOf('=');
            if (eq >= 0) {
                value = option.substring(eq + 1);
                option = option.substring(0, eq);
            } else if (i < args.size()) {
                value = args.get(i++);
            } else {
                throw new IllegalArgumentException(option + " needs a value");
            }
            switch (option) {
                case "--absent":
                    request.absent.add(service(value, SERVICES));
                    break;
                case "--only-1.0":
                    request.onlyV10.add(service(value, VERSIONED));
                    break;
                case "--answer":
                    request.answers.add(answer(value));
                    break;
                default:
                    throw new IllegalArgumentException("unknown option " + option);
            }
        }
        if (i >= args.size()) {
            throw new IllegalArgumentException("no method named");
        }
        request.method = Natives.find(args.get(i));
        request.arguments = Natives.arguments(request.method, args.subList(i + 1, args.size()));
        return request;
    }

    private static String service(String name, List<String> allowed) {
        if (!allowed.contains(name)) {
            throw new IllegalArgumentException("unknown service " + name + " here (one of "
                    + String.join(", ", allowed) + ")");
        }
        return name;
    }

    private static Answer answer(String option) {
        int eq = option.indexOf('=');
        int dot = eq < 0 ? -1 : option.lastIndexOf('.', eq);
        if (dot <= 0 || dot + 1 == eq) {
            throw new IllegalArgumentException("--answer takes SERVICE.OPERATION=ANSWER, got " + option);
        }
        return new Answer(service(option.substring(0, dot), SERVICES), option.substring(dot + 1, eq),
                option.substring(eq + 1));
    }
}
