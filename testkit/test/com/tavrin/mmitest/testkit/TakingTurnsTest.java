package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;

import java.util.Map;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicInteger;

import org.junit.jupiter.api.RepeatedTest;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;

/**
 * A parallel JUnit run of device tests beside other tests: the others run together, the device
 * tests one at a time.
 */
class TakingTurnsTest {
    @Test
    void deviceTestsTakeTurnsInAParallelRun() {
        InnerRun run = InnerRun.of(Map.of("junit.jupiter.execution.parallel.enabled", "true",
                "junit.jupiter.execution.parallel.mode.default", "concurrent",
                "junit.jupiter.execution.parallel.mode.classes.default", "concurrent",
                "junit.jupiter.execution.parallel.config.strategy", "fixed",
                "junit.jupiter.execution.parallel.config.fixed.parallelism", "4"), DeviceHolders.class, Bystanders.class);
        assertEquals(0, run.summary.getTotalFailureCount(), run::failures);
        assertEquals(DeviceHolders.RUNS + 2, run.summary.getTestsSucceededCount());
        assertEquals(1, DeviceHolders.MOST_AT_ONCE.get());
    }

    /** Device tests that would overlap if let. */
    @ExtendWith(SimulatedDeviceExtension.class)
    static class DeviceHolders {
        static final int RUNS = 4;
        static final AtomicInteger INSIDE = new AtomicInteger();
        static final AtomicInteger MOST_AT_ONCE = new AtomicInteger();

        @RepeatedTest(RUNS)
        void holdsTheDevice(Device device) throws InterruptedException {
            MOST_AT_ONCE.accumulateAndGet(INSIDE.incrementAndGet(), Math::max);
            device.answer("power.getPowerState", "0,\"mine\"");
            Thread.sleep(50);
            assertEquals("mine", MmiNativeManager.getPowerStateNative("battery"));
            INSIDE.decrementAndGet();
        }
    }

    /** Two tests that pass only when they run at the same time: the run really is parallel. */
    static class Bystanders {
        static final CountDownLatch BOTH = new CountDownLatch(2);

        @RepeatedTest(2)
        void meetsTheOther() throws InterruptedException {
            BOTH.countDown();
            assertTrue(BOTH.await(30, TimeUnit.SECONDS));
        }
    }
}
