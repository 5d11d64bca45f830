package com.tavrin.mmitest.example;

import com.tavrin.mmitest.controller.MmiNativeManager;

/**
 * Runs a sensor's self-test through the native library and turns the answers into a verdict: ask
 * how long the test takes, start it, wait that long, read the result.
 */
public final class SensorSelfTest {
    /** The command that starts a self-test. */
    static final int START = 1;

    /** PASS and FAIL are the sensor's; NO_SERVICE means the sensor service could not be reached. */
    public enum Verdict { PASS, FAIL, NO_SERVICE }

    /** A verdict with what the operator is shown. */
    public record Outcome(Verdict verdict, String detail) {}

    /** How the test waits for the sensor; tests pass one that does not sleep. */
    public interface Waiter {
        void waitMillis(int millis) throws InterruptedException;
    }

    private final Waiter waiter;

    public SensorSelfTest(Waiter waiter) {
        this.waiter = waiter;
    }

    public SensorSelfTest() {
        this(Thread::sleep);
    }

    public Outcome run(int sensorId) throws InterruptedException {
        // The library answers -1 for every integer request it cannot carry to the service.
        int delay = MmiNativeManager.getSensorSelfTestDelayTimeNative(sensorId);
        if (delay < 0) {
            return new Outcome(Verdict.NO_SERVICE, "sensor service not available");
        }
        int started = MmiNativeManager.startSensorSelfTestNative(sensorId, START);
        if (started != 0) {
            return started < 0 ? new Outcome(Verdict.NO_SERVICE, "sensor service lost before the self-test")
                    : new Outcome(Verdict.FAIL, "self-test did not start: code " + started);
        }
        waiter.waitMillis(delay);
        int result = MmiNativeManager.getSensorSelfTestResultNative(sensorId);
        if (result < 0) {
            return new Outcome(Verdict.NO_SERVICE, "sensor service lost during the self-test");
        }
        return result == 0 ? new Outcome(Verdict.PASS, "self-test passed")
                : new Outcome(Verdict.FAIL, "self-test failed: code " + result);
    }
}
