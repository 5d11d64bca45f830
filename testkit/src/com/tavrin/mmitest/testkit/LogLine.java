package com.tavrin.mmitest.testkit;

/**
 * One line the process wrote to the platform log.
 *
 * @param priority one of {@code V D I W E F}
 * @param text the message as formatted, such as {@code "KxMMITest_jni: GetBsn, ret: 0"}
 */
public record LogLine(char priority, String text) {
    /** Reads the {@code "P TEXT"} form that {@link Device#logs()} lists. */
    public static LogLine parse(String line) {
        if (line.length() < 2 || line.charAt(1) != ' ' || "VDIWEF".indexOf(line.charAt(0)) < 0) {
            throw new IllegalArgumentException("not a log line \"P TEXT\" with P one of V D I W E F: \"" + line + "\"");
        }
        return new LogLine(line.charAt(0), line.substring(2));
    }

    /** The {@code "P TEXT"} form. */
    @Override
    public String toString() {
        return priority + " " + text;
    }
}
