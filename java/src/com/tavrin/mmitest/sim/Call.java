package com.tavrin.mmitest.sim;

import java.util.HexFormat;
import java.util.List;
import java.util.Map;
import java.util.StringJoiner;

/**
 * One call that reached a service of the simulated device, as the service received it.
 *
 * @param service the service's name, such as {@code "sensors"}
 * @param operation the operation's name, such as {@code "startSensorSelfTest"}
 * @param position the operation's transaction code, as the transport delivered it
 * @param arguments the arguments as Java values: {@code Integer} for int32, {@code Long} for
 *     int64, {@code Boolean}, {@code String} for a text, {@code byte[]} for a text whose bytes are
 *     neither UTF-8 nor the JNI's modified UTF-8, {@code List<Integer>} for an int vector,
 *     {@code Map<String, Object>} for a record (its fields in declaration order) and
 *     {@code List<Map<String, Object>>} for a vector of records; all unmodifiable
 */
public record Call(String service, String operation, int position, List<Object> arguments) {
    /** Vectors longer than this show their first values and their length. */
    private static final int SHOWN = 32;

    public Call {
        arguments = List.copyOf(arguments);
    }

    /**
     * {@code "service.operation(arguments)"}: {@code "light.setLightBrightness(3, 77)"}, each
     * argument as {@link #show(Object)} writes it.
     */
    @Override
    public String toString() {
        StringJoiner args = new StringJoiner(", ", service + "." + operation + "(", ")");
        for (Object a : arguments) {
            args.add(show(a));
        }
        return args.toString();
    }

    /**
     * One argument as text: numbers in decimal, texts as JSON strings, bytes as
     * {@code bytes:HEX}, int vectors as {@code [1, 2, 3]} (the first 32 values, then
     * {@code ", ... (N values)]"}), records as {@code {field: value, ...}}.
     */
    public static String show(Object value) {
        if (value instanceof String s) {
            return quote(s);
        }
        if (value instanceof byte[] b) {
            return "bytes:" + HexFormat.of().formatHex(b);
        }
        if (value instanceof Map<?, ?> record) {
            StringJoiner out = new StringJoiner(", ", "{", "}");
            record.forEach((k, v) -> out.add(k + ": " + show(v)));
            return out.toString();
        }
        if (value instanceof List<?> list) {
            boolean ints = !list.isEmpty() && list.get(0) instanceof Integer;
            StringJoiner out = new StringJoiner(", ", "[", "]");
            for (int i = 0; i < list.size() && (!ints || i < SHOWN); i++) {
                out.add(show(list.get(i)));
            }
            if (ints && list.size() > SHOWN) {
                out.add("... (" + list.size() + " values)");
            }
            return out.toString();
        }
        return String.valueOf(value);
    }

    /** A JSON string: quote and backslash escaped, control characters as backslash-u00XX. */
    private static String quote(String s) {
        StringBuilder out = new StringBuilder("\"");
        for (int i = 0; i < s.length(); i++) {
            char c = s.charAt(i);
            if (c == '"' || c == '\\') {
                out.append('\\').append(c);
            } else if (c < 0x20 || c == 0x7F) {
                out.append(String.format("\\u%04x", (int) c));
            } else {
                out.append(c);
            }
        }
        return out.append('"').toString();
    }
}
