package com.tavrin.mmitest.testkit;

/**
 * One call that reached a service of the simulated device.
 *
 * @param service the service's name, such as {@code "sensors"}
 * @param operation the operation's name, such as {@code "startSensorSelfTest"}
 * @param arguments the arguments as the device shows them: ints in decimal, texts JSON-quoted,
 *     vectors as {@code [1, 2, 3]}, records as {@code {field: value, ...}}, separated by ", "
 */
public record Call(String service, String operation, String arguments) {
    /** Reads the {@code "service.operation(arguments)"} form that {@link Device#calls()} lists. */
    public static Call parse(String call) {
        int dot = call.indexOf('.');
        int open = call.indexOf('(');
        if (dot <= 0 || open < dot + 2 || !call.endsWith(")")) {
            throw new IllegalArgumentException("not a call \"service.operation(arguments)\": \"" + call + "\"");
        }
        return new Call(call.substring(0, dot), call.substring(dot + 1, open), call.substring(open + 1, call.length() - 1));
    }

    /** The {@code "service.operation(arguments)"} form. */
    @Override
    public String toString() {
        return service + "." + operation + "(" + arguments + ")";
    }
}
