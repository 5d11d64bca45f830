package com.tavrin.mmitest.console;

import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.regex.Pattern;

/**
 * Programmed answers as typed on a command line. The shell eats the quotes of
 * {@code --answer power.getPowerState=5,"x"}, so the device sees {@code 5,x}; when it refuses
 * that, the console quotes every field that can only have been meant as text and tries again.
 */
final class Answers {
    private static final Pattern NUMBER = Pattern.compile("-?[0-9]+(\\.[0-9]+)?([eE][-+]?[0-9]+)?");

    /** The words an answer may be instead of values. */
    static final List<String> KEYWORDS = List.of("nocallback", "transport-error", "crash");
    static final String FORMS = "an answer is nocallback, transport-error, crash, or values separated by commas "
            + "(7, true, \"text\", [1,2,3], bytes:HEX)";

    private Answers() {}

    /** The keywords an operation of this shape ("value: ..." or "callback: ...") takes. */
    static List<String> keywords(String shape) {
        return shape.startsWith("callback") ? KEYWORDS : KEYWORDS.subList(1, KEYWORDS.size());
    }

    /**
     * The device's refusal of an answer, with the accepted forms named where a user would look
     * for them: a misspelt keyword, a bytes: value that is not hex.
     */
    static String explain(String answer, String error) {
        String word = answer.strip();
        if (word.matches("[A-Za-z][A-Za-z_-]*") && !KEYWORDS.contains(word)) {
            for (String k : KEYWORDS) {
                if (distance(word.toLowerCase(Locale.ROOT), k) <= 3) {
                    return "unknown answer keyword " + word + " (did you mean " + k + "?); " + FORMS;
                }
            }
        }
        if (error.contains("bytes:") || answer.contains("bytes:")) {
            return error + "; bytes:HEX takes pairs of hex digits 0-9 a-f (bytes:41ff42 is the three bytes 41 FF 42)";
        }
        return error;
    }

    /** Edits (insert, delete, replace a character) that turn a into b. */
    static int distance(String a, String b) {
        int[] row = new int[b.length() + 1];
        for (int j = 0; j <= b.length(); j++) {
            row[j] = j;
        }
        for (int i = 1; i <= a.length(); i++) {
            int diagonal = row[0];
            row[0] = i;
            for (int j = 1; j <= b.length(); j++) {
                int above = row[j];
                row[j] = Math.min(Math.min(row[j] + 1, row[j - 1] + 1),
                        diagonal + (a.charAt(i - 1) == b.charAt(j - 1) ? 0 : 1));
                diagonal = above;
            }
        }
        return row[b.length()];
    }

    /** The answer with each bare text field quoted; fields that already parse are left alone. */
    static String requote(String answer) {
        String whole = answer.strip();
        if (whole.equals("nocallback") || whole.equals("transport-error")) {
            return answer;
        }
        List<String> out = new ArrayList<>();
        for (String field : fields(answer)) {
            // bytes:HEX is the device's own notation for a byte vector, not text.
            boolean bare = needsQuotes(field.strip()) && !field.strip().startsWith("bytes:");
            out.add(bare ? Values.quote(field.strip()) : field);
        }
        return String.join(",", out);
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
            members.add((key.startsWith("\"") ? key : Values.quote(key)) + ":"
                    + (needsQuotes(value) ? Values.quote(value) : value));
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
