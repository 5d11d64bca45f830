package com.tavrin.mmitest.console;

import com.google.gson.Gson;
import com.google.gson.GsonBuilder;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import com.google.gson.JsonPrimitive;
import com.google.gson.JsonSerializer;
import com.google.gson.TypeAdapter;
import com.google.gson.stream.JsonReader;
import com.google.gson.stream.JsonToken;

import java.io.IOException;
import java.io.StringReader;
import java.lang.reflect.Field;
import java.lang.reflect.Modifier;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HexFormat;
import java.util.List;
import java.util.Map;
import java.util.function.Function;
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

    /** How each type of argument but a model object is read; everything but a primitive may also be null. */
    private static final Map<Class<?>, Function<String, Object>> READERS = Map.of(
            int.class, Values::parseInt,
            long.class, text -> integer(text, "long", Long.MIN_VALUE, Long.MAX_VALUE),
            boolean.class, Values::parseBoolean,
            String.class, Values::parseString,
            int[].class, Values::parseIntArray,
            byte[].class, Values::parseBytes);

    static Object parse(Class<?> type, String text) {
        if (!type.isPrimitive() && text.equals("null")) {
            return null;
        }
        return READERS.getOrDefault(type, t -> parseObject(type, t)).apply(text);
    }

    private static boolean parseBoolean(String text) {
        if (text.equals("true") || text.equals("false")) {
            return Boolean.parseBoolean(text);
        }
        throw new IllegalArgumentException("not a boolean (true or false): " + text);
    }

    /** Only plain decimal in the type's range: no '+', no blanks, nothing the parsers would quietly accept. */
    private static long integer(String text, String type, long min, long max) {
        boolean decimal = DECIMAL.matcher(text).matches();
        try {
            long value = Long.parseLong(text);
            if (decimal && value >= min && value <= max) {
                return value;
            }
        } catch (NumberFormatException e) {
            // reported below
        }
        throw new IllegalArgumentException(decimal ? text + " is out of range for " + type + " (" + min + " to " + max
                + ")" : "not " + (type.equals("int") ? "an " : "a ") + type
                + " (decimal digits, - in front when negative): " + text);
    }

    private static int parseInt(String text) {
        return (int) integer(text, "int", Integer.MIN_VALUE, Integer.MAX_VALUE);
    }

    /** Quoted, a JSON string: a value that begins with a quote can be nothing else, or the reader refuses it. */
    static String parseString(String text) {
        return text.startsWith("\"") ? json(text, false).getAsString() : text;
    }

    /** Lenient, so that [01] reads as it always did; every element must still be a decimal int. */
    static int[] parseIntArray(String text) {
        JsonElement e = json(text, true);
        if (!e.isJsonArray()) {
            throw new IllegalArgumentException("not an int array: " + text);
        }
        return e.getAsJsonArray().asList().stream()
                .mapToInt(v -> parseInt(v.isJsonPrimitive() ? v.getAsString() : v.toString())).toArray();
    }

    static byte[] parseBytes(String text) {
        if (!text.matches("x([0-9A-Fa-f]{2})*")) {
            throw new IllegalArgumentException("not a byte array (x followed by pairs of hex digits): " + text);
        }
        return HexFormat.of().parseHex(text, 1, text.length());
    }

    /** A model object from a JSON object of field values; fields not named keep their defaults. */
    static Object parseObject(Class<?> type, String text) {
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
        // Gson would drop a name the class lacks and read "1" into an int: each member is checked first.
        ((JsonObject) e).entrySet().forEach(member -> checkValue(field(type, member.getKey()), member.getValue()));
        return GSON.fromJson(e, type);
    }

    /** A field a command line may set: a public instance field of a model class, an int or a String. */
    private static Field field(Class<?> type, String name) {
        return Arrays.stream(type.getDeclaredFields()).filter(f -> f.getName().equals(name)
                && Modifier.isPublic(f.getModifiers()) && !Modifier.isStatic(f.getModifiers())
                && (f.getType() == int.class || f.getType() == String.class)).findFirst()
                .orElseThrow(() -> new IllegalArgumentException(type.getSimpleName() + " has no field " + name));
    }

    /** An int field takes a bare decimal; a String field any scalar, as written, or null. */
    private static void checkValue(Field field, JsonElement value) {
        boolean number = value.isJsonPrimitive() && value.getAsJsonPrimitive().isNumber();
        if (field.getType() == int.class && !number) {
            throw new IllegalArgumentException(field.getName() + " takes an integer, got " + value);
        } else if (field.getType() == int.class) {
            parseInt(value.getAsString());
        } else if (!value.isJsonPrimitive() && !value.isJsonNull()) {
            throw new IllegalArgumentException(field.getName() + " takes a text, got " + value);
        }
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

    /** Prints a value the way the parser above reads it back. */
    static String format(Object value) {
        return value instanceof int[] ints ? Arrays.toString(ints) : value instanceof byte[] bytes ? hex(bytes)
                : json(value);
    }

    /** One line of JSON, in ASCII: anything else as \\uXXXX, so it survives any terminal and reads back. */
    static String json(Object value) {
        return ascii(GSON.toJson(value));
    }

    /** JSON text with every character above 0x7e escaped; JSON has such characters only inside strings. */
    static String ascii(String json) {
        return Terminal.escape(json.chars(), c -> c > 0x7e);
    }

    private static String hex(byte[] bytes) {
        return "x" + HexFormat.of().formatHex(bytes);
    }

    /** Values as JSON: a byte[] as its command-line text, so that it reads back; a model object by its fields. */
    static final Gson GSON = new GsonBuilder().serializeNulls().disableHtmlEscaping()
            .registerTypeAdapter(byte[].class, (JsonSerializer<byte[]>) (b, t, c) -> new JsonPrimitive(hex(b)))
            .registerTypeAdapter(StepRecord.class, (JsonSerializer<StepRecord>) (s, t, c) -> c.serialize(s.json()))
            .create();

    /**
     * A model object as typed on a command line, with its bare keys and bare text values quoted:
     * {@code {mBsn:X, mTime: 10:11}} becomes {@code {"mBsn":"X","mTime":"10:11"}}. Anything else
     * is left as it is for the JSON reader to judge.
     */
    static String quoteBareMembers(String text) {
        String t = text.strip();
        boolean closed = t.length() > 1 && t.endsWith("}");
        String inner = t.startsWith("{") ? t.substring(1, closed ? t.length() - 1 : t.length()) : "";
        if (inner.isBlank()) {
            return text;
        }
        List<String> members = new ArrayList<>();
        for (String member : split(inner, ",", "[]")) {
            List<String> pair = split(member, ":", "");
            if (pair.size() == 1) {
                members.add(member);
                continue;
            }
            String key = pair.get(0).strip();
            String value = member.substring(pair.get(0).length() + 1).strip();
            members.add((key.startsWith("\"") ? key : format(key)) + ":"
                    + (needsQuotes(value) ? format(value) : value));
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

    /** Where the object the text begins with ends (past its closing brace); -1 when it does not. */
    static int objectEnd(String text) {
        int start = text.length() - text.stripLeading().length();
        if (!text.startsWith("{", start)) {
            return -1;
        }
        int end = start + split(text.substring(start), "}]", "{}[]").get(0).length();
        return end < text.length() ? end + 1 : -1;
    }

    /**
     * The text cut at each stop character outside JSON strings and brackets, the stops left out;
     * brackets pairs the characters that nest, such as "[]". A closing bracket counts as outside
     * the brackets it closes.
     */
    static List<String> split(String text, String stops, String brackets) {
        List<String> pieces = new ArrayList<>();
        int depth = 0;
        int start = 0;
        for (int i = 0; i < text.length(); i++) {
            char c = text.charAt(i);
            if (c == '"') {
                // To the closing quote, past escaped characters; to the end when it never closes.
                for (i++; i < text.length() && text.charAt(i) != '"'; i++) {
                    i += text.charAt(i) == '\\' ? 1 : 0;
                }
                continue;
            }
            int bracket = brackets.indexOf(c);
            depth -= bracket % 2 == 1 ? 1 : 0;
            if (depth == 0 && stops.indexOf(c) >= 0) {
                pieces.add(text.substring(start, i));
                start = i + 1;
            }
            depth += bracket >= 0 && bracket % 2 == 0 ? 1 : 0;
        }
        pieces.add(text.substring(start));
        return pieces;
    }
}
