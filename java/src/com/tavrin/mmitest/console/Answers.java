package com.tavrin.mmitest.console;

import java.util.ArrayList;
import java.util.List;
import java.util.regex.Pattern;

/**
 * Programmed answers as typed on a command line. The shell eats the quotes of
 * {@code --answer power.getPowerState=5,"x"}, so the device sees {@code 5,x}; when it refuses
 * that, the console quotes every field that can only have been meant as text and tries again.
 */
final class Answers {
    private static final Pattern NUMBER = Pattern.compile("-?[0-9]+(\\.[0-9]+)?([eE][-+]?[0-9]+)?");

    private Answers() {}

    /** The answer with each bare text field quoted; fields that already parse are left alone. */
    static String requote(String answer) {
        String whole = answer.strip();
        if (whole.equals("nocallback") || whole.equals("transport-error")) {
            return answer;
        }
        List<String> out = new ArrayList<>();
        for (String field : fields(answer)) {
            out.add(needsQuotes(field.strip()) ? Json.quote(field.strip()) : field);
        }
        return String.join(",", out);
    }

    private static boolean needsQuotes(String field) {
        return !field.isEmpty() && !field.startsWith("\"") && !field.startsWith("[")
                && !field.startsWith("bytes:")  // a text given as its bytes in hexadecimal
                && !field.equals("true") && !field.equals("false") && !field.equals("null")
                && !NUMBER.matcher(field).matches();
    }

    /** Splits at the commas that are outside quotes and brackets. */
    static List<String> fields(String answer) {
        List<String> fields = new ArrayList<>();
        int depth = 0;
        boolean quoted = false;
        int start = 0;
        for (int i = 0; i < answer.length(); i++) {
            char c = answer.charAt(i);
            if (quoted) {
                if (c == '\\') {
                    i++;
                } else if (c == '"') {
                    quoted = false;
                }
            } else if (c == '"') {
                quoted = true;
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
