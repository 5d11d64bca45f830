package com.tavrin.mmitest.console;

import java.util.Arrays;
import java.util.List;
import java.util.Objects;

/** A small assertion harness: counts checks, names each failure, and closes with one summary line. */
final class Check {
    private static int passed;
    private static int failed;
    static String group = "";

    private Check() {}

    /** Runs each group; a group that throws counts as one failure and the others still run. */
    static void groups(List<Runnable> groups) {
        for (Runnable g : groups) {
            try {
                g.run();
            } catch (RuntimeException e) {
                that(false, "threw " + e);
            }
        }
        System.out.println(passed + " passed, " + failed + " failed");
        System.exit(failed == 0 ? 0 : 1);
    }

    static void that(boolean ok, String what) {
        if (ok) {
            passed++;
        } else {
            failed++;
            System.out.println("FAIL " + group + ": " + what);
        }
    }

    static void eq(Object expected, Object actual, String what) {
        that(Objects.deepEquals(expected, actual), what + ": expected " + show(expected) + ", got " + show(actual));
    }

    private static String show(Object o) {
        return o instanceof int[] ? Arrays.toString((int[]) o)
                : o instanceof byte[] ? Arrays.toString((byte[]) o)
                : o instanceof Object[] ? Arrays.deepToString((Object[]) o) : String.valueOf(o);
    }

    /** The action must be refused with a message that contains every one of the parts. */
    static void refused(Runnable action, String what, String... parts) {
        try {
            action.run();
            that(false, what + ": accepted");
        } catch (IllegalArgumentException e) {
            boolean all = true;
            for (String part : parts) {
                all &= e.getMessage().contains(part);
            }
            that(all, what + ": message '" + e.getMessage() + "' lacks one of " + Arrays.toString(parts));
        }
    }
}
