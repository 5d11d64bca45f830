package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;

import java.time.Duration;
import java.util.List;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;

/** Answers in sequence, slow services, restart delays and late registrations, and the waits' limit. */
@ExtendWith(SimulatedDeviceExtension.class)
class StagedTimingTest {
    private static final String HEALTHY_POWER = "capacity=85,status=charging";

    @Test
    void successiveCallsTakeSuccessiveAnswersAndTheLastHolds(Device device) {
        device.restartDelay(Duration.ZERO);
        device.answer("sensors.startSensorCalibrate", "crash", "0", "7");
        assertEquals(-1, MmiNativeManager.startSensorCalibrateNative(1, 1));
        device.waitForRestarts();
        List<Integer> answers = List.of(MmiNativeManager.startSensorCalibrateNative(1, 1),
                MmiNativeManager.startSensorCalibrateNative(1, 1), MmiNativeManager.startSensorCalibrateNative(1, 1));
        assertEquals(List.of(0, 7, 7), answers);
    }

    @Test
    void delayedServiceAnswersAfterTheDelay(Device device) {
        device.delay("power.getPowerState", Duration.ofMillis(400));
        long start = System.nanoTime();
        assertEquals(HEALTHY_POWER, MmiNativeManager.getPowerStateNative("battery"));
        assertTrue(elapsed(start).toMillis() >= 400, () -> "answered after " + elapsed(start).toMillis() + " ms");
        // Other operations answer at once: the delay is the operation's own.
        assertEquals("KX2611220001A7", MmiNativeManager.getBsnNative());
    }

    @Test
    void crashedServiceComesBackAfterThisTestsRestartDelay(Device device) {
        device.restartDelay(Duration.ofMillis(800));
        device.answer("power.getPowerState", "crash", "0,\"back\"");
        long start = System.nanoTime();
        assertEquals("", MmiNativeManager.getPowerStateNative("battery"));
        device.waitForRestarts();
        assertTrue(elapsed(start).toMillis() >= 800, () -> "back after " + elapsed(start).toMillis() + " ms");
        assertEquals("back", MmiNativeManager.getPowerStateNative("battery"));
    }

    @Test
    void lateServiceKeepsTheLibraryWaitingUntilItRegisters(Device device) {
        Duration late = Duration.ofSeconds(2);
        long start = System.nanoTime();
        device.reviveAfter("light", late);
        assertTrue(elapsed(start).compareTo(late) < 0, "reviveAfter returns before the service registers");
        // The reconnect waits for light, which the library connects before otherdevices.
        assertEquals(-1, MmiNativeManager.getTouchKeySupportFlagNative());
        device.waitForRestarts();
        assertTrue(elapsed(start).compareTo(late) >= 0, () -> "registered after " + elapsed(start).toMillis() + " ms");
        assertEquals(1, MmiNativeManager.getTouchKeySupportFlagNative());
    }

    @Test
    void waitThatCannotEndFailsAtTheLimitNamingWhatItWaitedFor(Device device) {
        device.waitLimit(Duration.ofSeconds(1));
        device.answer("power.getPowerState", "crash");
        MmiNativeManager.getPowerStateNative("battery");
        device.kill("light");
        long start = System.nanoTime();
        String message = assertThrows(IllegalStateException.class, device::waitForRestarts).getMessage();
        assertTrue(elapsed(start).compareTo(Duration.ofSeconds(5)) < 0, () -> "failed after " + elapsed(start));
        for (String part : List.of("waited 1 s", "light killed in this test")) {
            assertTrue(message.contains(part), () -> part + " missing from: " + message);
        }
    }

    private static Duration elapsed(long start) {
        return Duration.ofNanos(System.nanoTime() - start);
    }
}
