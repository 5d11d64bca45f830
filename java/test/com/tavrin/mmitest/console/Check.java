package com.tavrin.mmitest.console;

import java.io.File;
import java.util.Arrays;
import java.util.List;
import java.util.Objects;

/** A small assertion harness: counts checks, names each failure, and closes with one summary line. */
final class Check {
    /** In a table, the expected value of an input that must be refused. */
    static final Object REFUSED = new Object();
    private static int passed;
    private static int failed;
    static String group = "";

    private Check() {}

    /** Runs each group; a group that throws ends the run with its exception. */
    static void groups(List<Runnable> groups) {
        groups.forEach(Runnable::run);
        System.out.println(passed + " passed, " + failed + " failed");
        System.exit(failed == 0 ? 0 : 1);
    }

    static void that(boolean ok, String what) {
        passed += ok ? 1 : 0;
        failed += ok ? 0 : 1;
        if (!ok) {
            System.out.println("FAIL " + group + ": " + what);
        }
    }

    static void eq(Object expected, Object actual, String what) {
        that(Objects.deepEquals(expected, actual), what + ": expected " + Arrays.deepToString(new Object[] {expected})
                + ", got " + Arrays.deepToString(new Object[] {actual}));
    }

    /** A step that may throw a checked exception, for the groups, which are plain Runnables. */
    interface Io<T> {
        T get() throws Exception;
    }

    static <T> T io(Io<T> step) {
        try {
            return step.get();
        } catch (Exception e) {
            throw new IllegalStateException(e);
        }
    }

    /** A file deleted when the run ends. */
    static File temp(String suffix) {
        File f = io(() -> File.createTempFile("mmi-test", suffix));
        f.deleteOnExit();
        return f;
    }

    /** The action must be refused with a message that contains every one of the parts. */
    static void refused(Runnable action, String what, String... parts) {
        try {
            action.run();
            that(false, what + ": accepted");
        } catch (IllegalArgumentException e) {
            that(Arrays.stream(parts).allMatch(e.getMessage()::contains),
                    what + ": message '" + e.getMessage() + "' lacks one of " + Arrays.toString(parts));
        }
    }
}
