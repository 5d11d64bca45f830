package com.tavrin.mmitest.sim;

/**
 * One line the process wrote to the platform log.
 *
 * @param priority one of {@code V D I W E F}
 * @param tag the line's tag; empty for the native library's lines, which have none
 * @param text the message as formatted, without the trailing newline the library writes, as the
 *     platform's log viewer shows it: {@code "KxMMITest_jni: GetBsn, ret: 0"}
 */
public record LogLine(char priority, String tag, String text) {
    /** {@code "P TEXT"}, or {@code "P TAG: TEXT"} for a line with a tag. */
    @Override
    public String toString() {
        return priority + " " + (tag.isEmpty() ? "" : tag + ": ") + text;
    }
}
