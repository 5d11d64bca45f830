package com.tavrin.mmitest.reliability;

import com.tavrin.mmitest.controller.MmiNativeManager;

import java.lang.reflect.Field;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.Arrays;
import java.util.Comparator;
import java.util.SplittableRandom;
import java.util.concurrent.atomic.AtomicLongArray;
import java.util.stream.Collectors;
import java.util.stream.IntStream;

/**
 * Calls the natives of MmiNativeManager (by name) from Java as the app does, with arguments made
 * from their parameter types. An answer is shown as text: a number, true or false, a quoted
 * string, an int array as [a, b, ...], or null.
 */
public final class Workload {
    // Argument sets: ordinary values; the HOSTILE_ values (texts also in the model objects);
    // NULL_AT + k: ordinary values but null for the k-th reference parameter.
    public static final int PLAIN = 0;
    public static final int HOSTILE = 1;
    public static final int NULL_AT = 2;

    // What run() counts, in the order it returns the counts.
    private enum Count { CALLS, SUCCESS, FAILURE, OLDER, WRONG, THROWN, STUCK, FEWEST_CALLS }

    private static final Method[] NATIVES =
            Arrays.stream(MmiNativeManager.class.getDeclaredMethods())
            .filter(m -> Modifier.isNative(m.getModifiers()))
            .sorted(Comparator.comparing(Method::getName))
            .toArray(Method[]::new);
    private static final String HOSTILE_TEXT = "a\0b\uD83D\uDE00c" + "x".repeat(1_000_000);
    private static final int[] HOSTILE_INTS = new int[1_000_000];
    private static final byte[] HOSTILE_BYTES = new byte[1_000_000];

    private Workload() {}

    private static Object argument(Class<?> type, int position, int set) throws Exception {
        return type == int.class ? (Object) (position + 1)
                : type == boolean.class ? (Object) true
                : type == String.class ? (set == HOSTILE ? HOSTILE_TEXT : "s" + position)
                : type == int[].class ? (set == HOSTILE ? HOSTILE_INTS : new int[] {3, 1, 4, 1, 5})
                : type == byte[].class ? (set == HOSTILE ? HOSTILE_BYTES : new byte[] {0, -1})
                : model(type, set);
    }

    private static Object model(Class<?> type, int set) throws Exception {
        Object model = type.getConstructor().newInstance();  // BigDataValue, BigDataOperation
        for (Field f : type.getFields()) {
            f.set(model, f.getType() == int.class ? 7 : argument(f.getType(), -1, set));
        }
        return model;
    }

    /** The native's name and parameter types, as "name(String, int[])". */
    public static String describe(int index) {
        return Arrays.stream(NATIVES[index].getParameterTypes())
                .map(Class::getSimpleName)
                .collect(Collectors.joining(", ", NATIVES[index].getName() + "(", ")"));
    }

    /** Calls native index once with argument set set and shows its answer. */
    public static String call(int index, int set) throws Exception {
        Class<?>[] types = NATIVES[index].getParameterTypes();
        Object[] args = new Object[types.length];
        int references = 0;
        for (int i = 0; i < args.length; i++) {
            boolean nulled = !types[i].isPrimitive() && set == NULL_AT + references++;
            args[i] = nulled ? null : argument(types[i], i, set);
        }
        Object answer = NATIVES[index].invoke(null, args);  // what a native throws comes wrapped
        return answer instanceof String ? '"' + (String) answer + '"'
                : answer instanceof int[] ? Arrays.toString((int[]) answer)
                : String.valueOf(answer);
    }

    /**
     * threads Java threads call random natives for millis milliseconds. Every answer must be the
     * native's success answer, its failure answer, or its answer from a service of an older
     * version (a service dying under a version cast looks like one). Returns the counts above.
     */
    public static long[] run(int threads, long millis, String[] success, String[] failure,
            String[] older, long seed) throws InterruptedException {
        final long deadline = System.nanoTime() + millis * 1_000_000L;
        final AtomicLongArray perNative = new AtomicLongArray(NATIVES.length);
        final AtomicLongArray counts = new AtomicLongArray(Count.values().length);
        Thread[] workers = new Thread[threads];
        for (int t = 0; t < threads; t++) {
            final SplittableRandom random = new SplittableRandom(seed + t);
            workers[t] = new Thread(() -> {
                while (System.nanoTime() < deadline) {
                    int i = random.nextInt(NATIVES.length);
                    String answer;
                    try {
                        answer = call(i, PLAIN);
                    } catch (Throwable e) {  // a native must never throw: count it and go on
                        answer = "threw " + (e.getCause() != null ? e.getCause() : e);
                    }
                    Count kind = answer.equals(success[i]) ? Count.SUCCESS
                            : answer.equals(failure[i]) ? Count.FAILURE
                            : answer.equals(older[i]) ? Count.OLDER
                            : answer.startsWith("threw ") ? Count.THROWN : Count.WRONG;
                    counts.incrementAndGet(Count.CALLS.ordinal());
                    long seen = counts.incrementAndGet(kind.ordinal());
                    if (kind.compareTo(Count.WRONG) >= 0 && seen <= 10) {  // the first few
                        System.err.println(describe(i) + ": " + answer);
                    }
                    perNative.incrementAndGet(i);
                }
            }, "stress-" + t);
            workers[t].setDaemon(true);  // a call stuck for good must not keep the JVM from exiting
            workers[t].start();
        }
        long joinDeadline = System.currentTimeMillis() + millis + 120_000L;
        for (Thread w : workers) {
            w.join(Math.max(1, joinDeadline - System.currentTimeMillis()));
            counts.addAndGet(Count.STUCK.ordinal(), w.isAlive() ? 1 : 0);
        }
        counts.set(Count.FEWEST_CALLS.ordinal(),
                IntStream.range(0, NATIVES.length).mapToLong(perNative::get).min().getAsLong());
        return IntStream.range(0, counts.length()).mapToLong(counts::get).toArray();
    }
}
