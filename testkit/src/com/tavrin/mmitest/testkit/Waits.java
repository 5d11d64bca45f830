package com.tavrin.mmitest.testkit;

import com.tavrin.mmitest.sim.SimulatedDevice;

import java.time.Duration;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.TimeoutException;
import java.util.function.LongPredicate;

/**
 * The device's waits, run on threads of their own with the limit given to the device too: the
 * test's thread waits in Java, where JUnit's timeouts can interrupt it, and the wait's own thread
 * ends at the limit.
 */
final class Waits {
    private static final ExecutorService WAITERS = Executors.newCachedThreadPool(task -> {
        Thread thread = new Thread(task, "mmi-testkit-wait");
        thread.setDaemon(true);
        return thread;
    });

    private Waits() {}

    /** The device's own wait ends at the limit; this one later only if the device's does not. */
    private static final Duration SLACK = Duration.ofSeconds(2);

    /**
     * Runs a wait of the device's that takes its limit in milliseconds and answers whether it
     * ended in time; IllegalStateException naming what it waited for (and what the device still
     * waits for) when it did not, or when the caller is interrupted.
     */
    static void within(Duration limit, String what, LongPredicate wait) {
        CompletableFuture<Boolean> done = CompletableFuture.supplyAsync(() -> wait.test(limit.toMillis()), WAITERS);
        boolean ended;
        try {
            ended = done.get(limit.plus(SLACK).toNanos(), TimeUnit.NANOSECONDS);
        } catch (TimeoutException e) {
            ended = false;
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            throw new IllegalStateException("interrupted while waiting for " + what, e);
        } catch (ExecutionException e) {
            if (e.getCause() instanceof RuntimeException r) {
                throw r;
            }
            throw new IllegalStateException("waiting for " + what + ": " + e.getCause(), e.getCause());
        }
        if (!ended) {
            throw new IllegalStateException("waited " + seconds(limit) + " for " + what + "; still waiting for "
                    + SimulatedDevice.waitingFor());
        }
    }

    private static String seconds(Duration limit) {
        return limit.toMillis() % 1000 == 0 ? limit.toSeconds() + " s" : limit.toMillis() + " ms";
    }
}
