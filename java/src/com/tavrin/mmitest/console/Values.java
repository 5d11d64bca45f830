package com.tavrin.mmitest.console;

import java.lang.reflect.Field;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;

/**
 * Java values as the console reads them from the command line and prints them.
 *
 * <p>Arguments: int and long in decimal; true or false; a String as a JSON string, {@code null},
 * or any other text taken literally (the shell has usually eaten the quotes); int[] as
 * {@code [1,2,3]}; byte[] as {@code x007fa5ff}; a model object as a JSON object of its fields,
 * whose keys and text values may also go without quotes. Everything but a primitive may be
 * {@code null}.
 */
final class Values {
    private Values() {}

    static Object parse(Class<?> type, String text) {
        if (type == int.class) {
            return parseInt(text);
        }
        if (type == long.class) {
            try {
                return Long.parseLong(integerText(text));
            } catch (NumberFormatException e) {
                throw new IllegalArgumentException("not a long: " + text);
            }
        }
        if (type == boolean.class) {
            if (text.equals("true") || text.equals("false")) {
                return Boolean.valueOf(text);
            }
            throw new IllegalArgumentException("not a boolean (true or false): " + text);
        }
        if (text.equals("null")) {
            return null;
        }
        if (type == String.class) {
            return parseString(text);
        }
        if (type == int[].class) {
            return parseIntArray(text);
        }
        if (type == byte[].class) {
            return parseBytes(text);
        }
        return parseObject(type, text);
    }

    private static int parseInt(String text) {
        try {
            return Integer.parseInt(integerText(text));
        } catch (NumberFormatException e) {
            throw new IllegalArgumentException("not an int: " + text);
        }
    }

    /** Only plain decimal: no '+', no blanks, nothing the parsers would quietly accept. */
    private static String integerText(String text) {
        if (!text.matches("-?[0-9]+")) {
            throw new NumberFormatException(text);
        }
        return text;
    }

    static String parseString(String text) {
        if (!text.startsWith("\"")) {
            return text;
        }
        Json.Reader in = new Json.Reader(text);
        String value = in.string();
        in.expectEnd();
        return value;
    }

    static int[] parseIntArray(String text) {
        Json.Reader in = new Json.Reader(text);
        List<Integer> values = new ArrayList<>();
        in.expect('[');
        if (!in.accept(']')) {
            do {
                values.add(parseInt(in.integer()));
            } while (in.accept(','));
            in.expect(']');
        }
        in.expectEnd();
        return values.stream().mapToInt(Integer::intValue).toArray();
    }

    static byte[] parseBytes(String text) {
        if (!text.matches("x([0-9A-Fa-f]{2})*")) {
            throw new IllegalArgumentException("not a byte array (x followed by pairs of hex digits): " + text);
        }
        byte[] bytes = new byte[(text.length() - 1) / 2];
        for (int i = 0; i < bytes.length; i++) {
            bytes[i] = (byte) Integer.parseInt(text.substring(1 + 2 * i, 3 + 2 * i), 16);
        }
        return bytes;
    }

    /** A model object from a JSON object of field values; fields not named keep their defaults. */
    static Object parseObject(Class<?> type, String text) {
        Object object;
        try {
            object = type.getConstructor().newInstance();
        } catch (ReflectiveOperationException e) {
            throw new IllegalArgumentException("cannot make a " + type.getSimpleName() + " from the command line");
        }
        Json.Reader in = new Json.Reader(text);
        in.expect('{');
        if (!in.accept('}')) {
            do {
                String key = in.peek() == '"' ? in.string() : in.bare(":,}");
                Field field = field(type, key);
                in.expect(':');
                try {
                    field.set(object, fieldValue(field, in));
                } catch (IllegalAccessException e) {
                    throw new IllegalStateException(e);
                }
            } while (in.accept(','));
            in.expect('}');
        }
        in.expectEnd();
        return object;
    }

    private static Field field(Class<?> type, String name) {
        for (Field f : fields(type)) {
            if (f.getName().equals(name)) {
                return f;
            }
        }
        throw new IllegalArgumentException(type.getSimpleName() + " has no field " + name);
    }

    private static Object fieldValue(Field field, Json.Reader in) {
        if (field.getType() == int.class) {
            return parseInt(in.integer());
        }
        if (in.peek() == '"') {
            return in.string();
        }
        String word = in.bare(",}");
        return word.equals("null") ? null : word;
    }

    /** The public instance fields of a model class, in declaration order. */
    static List<Field> fields(Class<?> type) {
        List<Field> fields = new ArrayList<>();
        for (Field f : type.getDeclaredFields()) {
            int m = f.getModifiers();
            if (Modifier.isPublic(m) && !Modifier.isStatic(m)
                    && (f.getType() == int.class || f.getType() == String.class)) {
                fields.add(f);
            }
        }
        return fields;
    }

    /** Prints a value the way the parser above reads it back. */
    static String format(Object value) {
        if (value == null) {
            return "null";
        }
        if (value instanceof String) {
            return Json.quote((String) value);
        }
        if (value instanceof int[]) {
            return Arrays.toString((int[]) value);
        }
        if (value instanceof byte[]) {
            StringBuilder out = new StringBuilder("x");
            for (byte b : (byte[]) value) {
                out.append(String.format("%02x", b & 0xff));
            }
            return out.toString();
        }
        if (value instanceof Number || value instanceof Boolean) {
            return value.toString();
        }
        StringBuilder out = new StringBuilder("{");
        for (Field f : fields(value.getClass())) {
            if (out.length() > 1) {
                out.append(',');
            }
            try {
                out.append(Json.quote(f.getName())).append(':').append(format(f.get(value)));
            } catch (IllegalAccessException e) {
                throw new IllegalStateException(e);
            }
        }
        return out.append('}').toString();
    }
}
