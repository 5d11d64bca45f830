package com.tavrin.mmitest.console;

import com.google.gson.Gson;
import com.google.gson.GsonBuilder;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.TypeAdapter;
import com.google.gson.stream.JsonReader;
import com.google.gson.stream.JsonToken;
import com.google.gson.stream.JsonWriter;

import java.io.IOException;
import java.io.StringReader;
import java.lang.reflect.Field;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.regex.Matcher;
import java.util.regex.Pattern;

/**
 * Java values as the console reads them from the command line and prints them.
 *
 * <p>Arguments: int and long in decimal; true or false; a String as a JSON string, {@code null},
 * or any other text taken literally (the shell has usually eaten the quotes); int[] as
 * {@code [1,2,3]}; byte[] as {@code x007fa5ff}; a model object as a JSON object of its fields,
 * whose keys and text values may also go without quotes. Everything but a primitive may be
 * {@code null}.
 *
 * <p>Printed JSON is ASCII only (everything else as \\uXXXX), so results survive any terminal
 * encoding and can be pasted back as arguments.
 */
final class Values {
    private static final TypeAdapter<JsonElement> TREE = new Gson().getAdapter(JsonElement.class);
    private static final Pattern DECIMAL = Pattern.compile("-?[0-9]+");
    private static final Pattern NUMBER = Pattern.compile("-?[0-9]+(\\.[0-9]+)?([eE][-+]?[0-9]+)?");

    private Values() {}

    static Object parse(Class<?> type, String text) {
        if (type == int.class) {
            return parseInt(text);
        }
        if (type == long.class) {
            try {
                return Long.parseLong(integerText(text));
            } catch (NumberFormatException e) {
                throw new IllegalArgumentException(outOfRange(text, "long", Long.MIN_VALUE, Long.MAX_VALUE));
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
            throw new IllegalArgumentException(outOfRange(text, "int", Integer.MIN_VALUE, Integer.MAX_VALUE));
        }
    }

    /** Why a text is not an integer of the type: not decimal, or too large. */
    private static String outOfRange(String text, String type, long min, long max) {
        if (DECIMAL.matcher(text).matches()) {
            return text + " is out of range for " + type + " (" + min + " to " + max + ")";
        }
        return "not " + (type.equals("int") ? "an " : "a ") + type + " (decimal digits, - in front when negative): " + text;
    }

    /** Only plain decimal: no '+', no blanks, nothing the parsers would quietly accept. */
    private static String integerText(String text) {
        if (!DECIMAL.matcher(text).matches()) {
            throw new NumberFormatException(text);
        }
        return text;
    }

    static String parseString(String text) {
        if (!text.startsWith("\"")) {
            return text;
        }
        JsonElement e = json(text, false);
        if (!e.isJsonPrimitive() || !e.getAsJsonPrimitive().isString()) {
            throw new IllegalArgumentException("not a JSON string: " + text);
        }
        return e.getAsString();
    }

    /** Lenient, so that [01] reads as it always did; every element must still be a decimal int. */
    static int[] parseIntArray(String text) {
        JsonElement e = json(text, true);
        if (!e.isJsonArray()) {
            throw new IllegalArgumentException("not an int array: " + text);
        }
        int[] values = new int[e.getAsJsonArray().size()];
        for (int i = 0; i < values.length; i++) {
            JsonElement v = e.getAsJsonArray().get(i);
            values[i] = parseInt(v.isJsonPrimitive() ? v.getAsString() : v.toString());
        }
        return values;
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
        int end = objectEnd(text);
        if (end > 0 && !text.substring(end).isBlank()) {
            int at = end + (text.length() - end - text.substring(end).stripLeading().length());
            throw new IllegalArgumentException("unexpected text after the record at column " + (at + 1) + " of " + text
                    + " (the record ends at its closing })");
        }
        JsonElement e = json(quoteBareMembers(text), false);
        if (!e.isJsonObject()) {
            throw new IllegalArgumentException("not a JSON object: " + text);
        }
        for (Map.Entry<String, JsonElement> member : ((JsonObject) e).entrySet()) {
            Field field = field(type, member.getKey());
            try {
                field.set(object, fieldValue(field, member.getValue()));
            } catch (IllegalAccessException x) {
                throw new IllegalStateException(x);
            }
        }
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

    /** An int field takes a bare decimal; a String field any scalar, as written, or null. */
    private static Object fieldValue(Field field, JsonElement value) {
        boolean number = value.isJsonPrimitive() && value.getAsJsonPrimitive().isNumber();
        if (field.getType() == int.class) {
            if (!number) {
                throw new IllegalArgumentException(field.getName() + " takes an integer, got " + value);
            }
            return parseInt(value.getAsString());
        }
        if (value.isJsonNull()) {
            return null;
        }
        if (!value.isJsonPrimitive()) {
            throw new IllegalArgumentException(field.getName() + " takes a text, got " + value);
        }
        return value.getAsString();
    }

    /** One JSON value filling the whole text; errors name the position and the text. */
    private static JsonElement json(String text, boolean lenient) {
        JsonReader in = new JsonReader(new StringReader(text));
        in.setLenient(lenient);
        JsonElement value;
        try {
            value = TREE.read(in);
        } catch (IOException | RuntimeException e) {
            throw syntaxError(e, text);
        }
        try {
            if (in.peek() == JsonToken.END_DOCUMENT) {
                return value;
            }
        } catch (IOException | RuntimeException e) {
            // The reader refuses what follows the value; that is the error to report.
        }
        throw new IllegalArgumentException("unexpected text after the value: " + text);
    }

    private static final Pattern GSON_POSITION = Pattern.compile("(.*) at line 1 column (\\d+) path .*");

    /** The reader's complaint, worded for someone typing a command line rather than calling the reader. */
    private static IllegalArgumentException syntaxError(Exception e, String text) {
        String reason = e.getMessage() == null || e.getMessage().isEmpty() ? "malformed JSON" : e.getMessage();
        if (e instanceof NumberFormatException) {
            reason = "malformed escape " + reason;
        }
        reason = reason.replace("Use JsonReader.setLenient(true) to accept malformed JSON", "malformed JSON");
        Matcher m = GSON_POSITION.matcher(reason);
        String where = " in " + text;
        if (m.matches()) {
            reason = m.group(1);
            where = " at column " + m.group(2) + " of " + text;
        }
        return new IllegalArgumentException(Character.toLowerCase(reason.charAt(0)) + reason.substring(1) + where);
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
        if (value instanceof int[]) {
            return Arrays.toString((int[]) value);
        }
        if (value instanceof byte[]) {
            return hex((byte[]) value);
        }
        return json(value);
    }

    /** One line of JSON, in ASCII: anything else as \\uXXXX, so it survives any terminal and reads back. */
    static String json(Object value) {
        return ascii(GSON.toJson(value));
    }

    /** JSON text with every character above 0x7e escaped; JSON has such characters only inside strings. */
    static String ascii(String json) {
        StringBuilder out = new StringBuilder(json.length());
        json.chars().forEach(c -> out.append(c > 0x7e ? String.format("\\u%04x", c) : String.valueOf((char) c)));
        return out.toString();
    }

    static String quote(String s) {
        return format(s);
    }

    private static String hex(byte[] bytes) {
        StringBuilder out = new StringBuilder("x");
        for (byte b : bytes) {
            out.append(String.format("%02x", b & 0xff));
        }
        return out.toString();
    }

    /** Values as JSON: a byte[] as its command-line text, so that it reads back; a model object by its fields. */
    static final Gson GSON = new GsonBuilder().serializeNulls().disableHtmlEscaping()
            .registerTypeAdapter(byte[].class, Values.<byte[]>writer((out, bytes) -> out.value(hex(bytes))))
            .registerTypeAdapter(StepRecord.class, Values.<StepRecord>writer((out, step) -> step.writeJson(out))).create();

    interface Write<T> {
        void write(JsonWriter out, T value) throws IOException;
    }

    /** A type adapter for values that are written, never read. */
    static <T> TypeAdapter<T> writer(Write<T> write) {
        return new TypeAdapter<T>() {
            @Override
            public void write(JsonWriter out, T value) throws IOException {
                if (value == null) {
                    out.nullValue();
                } else {
                    write.write(out, value);
                }
            }

            @Override
            public T read(JsonReader in) {
                throw new UnsupportedOperationException("written, not read");
            }
        };
    }

    static void write(JsonWriter out, Object value) {
        GSON.toJson(value, value == null ? Object.class : value.getClass(), out);
    }

    /**
     * A model object as typed on a command line, with its bare keys and bare text values quoted:
     * {@code {mBsn:X, mTime: 10:11}} becomes {@code {"mBsn":"X","mTime":"10:11"}}. Anything else
     * is left as it is for the JSON reader to judge.
     */
    static String quoteBareMembers(String text) {
        String t = text.strip();
        if (!t.startsWith("{")) {
            return text;
        }
        boolean closed = t.length() > 1 && t.endsWith("}");
        String inner = t.substring(1, closed ? t.length() - 1 : t.length());
        if (inner.isBlank()) {
            return text;
        }
        List<String> members = new ArrayList<>();
        for (String member : fields(inner)) {
            int colon = colon(member);
            if (colon < 0) {
                members.add(member);
                continue;
            }
            String key = member.substring(0, colon).strip();
            String value = member.substring(colon + 1).strip();
            members.add((key.startsWith("\"") ? key : quote(key)) + ":"
                    + (needsQuotes(value) ? quote(value) : value));
        }
        return "{" + String.join(",", members) + (closed ? "}" : "");
    }

    /** Whether a field can only have been meant as text: no JSON literal, number, string or array. */
    private static boolean needsQuotes(String field) {
        return !field.isEmpty() && !field.startsWith("\"") && !field.startsWith("[")
                && !field.startsWith("bytes:")  // a text given as its bytes in hexadecimal
                && !field.equals("true") && !field.equals("false") && !field.equals("null")
                && !NUMBER.matcher(field).matches();
    }

    /** The first colon outside quotes, -1 if none. */
    private static int colon(String member) {
        boolean quoted = false;
        for (int i = 0; i < member.length(); i++) {
            char c = member.charAt(i);
            if (quoted && c == '\\') {
                i++;
            } else if (c == '"') {
                quoted = !quoted;
            } else if (c == ':' && !quoted) {
                return i;
            }
        }
        return -1;
    }

    /** Where the object the text begins with ends (past its closing brace); -1 when it does not. */
    static int objectEnd(String text) {
        int start = text.length() - text.stripLeading().length();
        if (start >= text.length() || text.charAt(start) != '{') {
            return -1;
        }
        int depth = 0;
        for (int i = start; i < text.length(); i++) {
            char c = text.charAt(i);
            if (c == '"') {
                i = closingQuote(text, i);
            } else if (c == '{' || c == '[') {
                depth++;
            } else if ((c == '}' || c == ']') && --depth == 0) {
                return i + 1;
            }
        }
        return -1;
    }

    /** The closing quote of the JSON string opened at open; the text's length when it never closes. */
    private static int closingQuote(String text, int open) {
        for (int i = open + 1; i < text.length(); i++) {
            char c = text.charAt(i);
            if (c == '\\') {
                i++;
            } else if (c == '"') {
                return i;
            }
        }
        return text.length();
    }

    /** Splits at the commas that are outside quotes and brackets. */
    static List<String> fields(String answer) {
        List<String> fields = new ArrayList<>();
        int depth = 0;
        int start = 0;
        for (int i = 0; i < answer.length(); i++) {
            char c = answer.charAt(i);
            if (c == '"') {
                i = closingQuote(answer, i);
            } else if (c == '[') {
                depth++;
            } else if (c == ']') {
                depth--;
            } else if (c == ',' && depth == 0) {
                fields.add(answer.substring(start, i));
                start = i + 1;
            }
        }
        fields.add(answer.substring(start));
        return fields;
    }
}
