package com.tavrin.mmitest.console;

import java.util.Map;
import java.util.function.IntPredicate;
import java.util.stream.IntStream;
import java.util.function.UnaryOperator;

/**
 * What the console knows of the terminal it prints to: its width and whether it may colour.
 * ./mmi passes the facts only it can see (whether stdout is a terminal, its width) as system
 * properties; the environment's COLUMNS and NO_COLOR win, as users expect.
 */
record Terminal(int width, boolean colour) {
    static final int DEFAULT_WIDTH = 80;
    static final String ELLIPSIS = "\u2026";

    enum Colour {
        GREEN("32"), RED("31"), YELLOW("33"), BOLD_GREEN("1;32"), BOLD_RED("1;31");

        final String code;

        Colour(String code) {
            this.code = code;
        }
    }

    /** The terminal from the environment and system properties: COLUMNS, else mmi.terminal.columns, else 80. */
    static Terminal of(Map<String, String> env, UnaryOperator<String> property, boolean noColourOption) {
        int width = positive(env.get("COLUMNS"));
        if (width == 0) {
            width = positive(property.apply("mmi.terminal.columns"));
        }
        String noColour = env.get("NO_COLOR");
        boolean colour = "true".equals(property.apply("mmi.stdout.tty")) && (noColour == null || noColour.isEmpty())
                && !noColourOption;
        return new Terminal(width == 0 ? DEFAULT_WIDTH : width, colour);
    }

    private static int positive(String text) {
        return text != null && text.matches("[0-9]{1,6}") ? Integer.parseInt(text) : 0;
    }

    String paint(Colour c, String text) {
        return colour ? "\033[" + c.code + "m" + text + "\033[0m" : text;
    }

    /**
     * The text in at most width columns: cut with an ellipsis when longer, never inside an escape
     * (\\uXXXX or \\X), so that what is shown still reads back.
     */
    static String fit(String text, int width) {
        if (columns(text) <= width) {
            return text;
        }
        int end = 0;
        for (int used = 0; end < text.length(); ) {
            int unit = text.charAt(end) != '\\' || end + 1 == text.length() ? Character.charCount(text.codePointAt(end))
                    : text.charAt(end + 1) == 'u' && end + 6 <= text.length() ? 6 : 2;
            used += columns(text.substring(end, end + unit));
            if (used > width - 1) {
                break;
            }
            end += unit;
        }
        return width <= 0 ? "" : text.substring(0, end) + ELLIPSIS;
    }

    /** Columns a text takes, one per code point: cells and log lines hold no wide characters worth more. */
    static int columns(String text) {
        return text.codePointCount(0, text.length());
    }

    /**
     * The text with control characters written as \\uXXXX: a device's log line must not move the
     * cursor or recolour the terminal.
     */
    static String printable(String text) {
        return escape(text.chars(), c -> c < 0x20 || c == 0x7f || (c >= 0x80 && c < 0xa0));
    }

    /** Characters or code points, each that escaped picks written as \\uXXXX. */
    static String escape(IntStream text, IntPredicate escaped) {
        StringBuilder out = new StringBuilder();
        text.forEach(c -> {
            if (escaped.test(c)) {
                out.append(String.format("\\u%04x", c));
            } else {
                out.appendCodePoint(c);
            }
        });
        return out.toString();
    }
}
