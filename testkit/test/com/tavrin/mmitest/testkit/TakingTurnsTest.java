package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.platform.engine.discovery.DiscoverySelectors.selectClass;

import com.tavrin.mmitest.controller.MmiNativeManager;

import java.io.PrintWriter;
import java.io.StringWriter;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicInteger;

import org.junit.jupiter.api.RepeatedTest;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;
import org.junit.platform.launcher.LauncherDiscoveryRequest;
import org.junit.platform.launcher.core.LauncherDiscoveryRequestBuilder;
import org.junit.platform.launcher.core.LauncherFactory;
import org.junit.platform.launcher.listeners.SummaryGeneratingListener;
import org.junit.platform.launcher.listeners.TestExecutionSummary;

/**
 * A parallel JUnit run of device tests beside other tests: the others run together, the device
 * tests one at a time. This class itself must not use the extension, or the run inside it would
 * wait for this test's turn forever.
 */
class TakingTurnsTest {
    @Test
    void deviceTestsTakeTurnsInAParallelRun() {
        LauncherDiscoveryRequest request = LauncherDiscoveryRequestBuilder.request()
                .selectors(selectClass(DeviceHolders.class), selectClass(Bystanders.class))
                .configurationParameter("junit.jupiter.execution.parallel.enabled", "true")
                .configurationParameter("junit.jupiter.execution.parallel.mode.default", "concurrent")
                .configurationParameter("junit.jupiter.execution.parallel.mode.classes.default", "concurrent")
                .configurationParameter("junit.jupiter.execution.parallel.config.strategy", "fixed")
                .configurationParameter("junit.jupiter.execution.parallel.config.fixed.parallelism", "4")
                .build();
        SummaryGeneratingListener listener = new SummaryGeneratingListener();
        LauncherFactory.create().execute(request, listener);
        TestExecutionSummary summary = listener.getSummary();
        StringWriter failures = new StringWriter();
        summary.printFailuresTo(new PrintWriter(failures), 20);
        assertEquals(0, summary.getTotalFailureCount(), failures::toString);
        assertEquals(DeviceHolders.RUNS + 2, summary.getTestsSucceededCount());
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
