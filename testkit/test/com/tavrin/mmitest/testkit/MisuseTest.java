package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;

import java.time.Duration;
import java.util.List;
import java.util.Map;
import java.util.concurrent.TimeUnit;

import org.junit.jupiter.api.ClassOrderer;
import org.junit.jupiter.api.MethodOrderer.OrderAnnotation;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.extension.ExtendWith;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** Runs of other tests that misuse the kit: each misuse is reported, and the kit stays usable. */
class MisuseTest {
    private static final Map<String, String> CLASS_ORDER =
            Map.of("junit.jupiter.testclass.order.default", ClassOrderer.OrderAnnotation.class.getName());

    @Test
    void callsBetweenKitTestsFailTheNextKitTestOnce() {
        InnerRun run = InnerRun.of(CLASS_ORDER, Stray.Before.class, Stray.Plain.class, Stray.After.class);
        assertEquals(List.of("before: OK", "plain: OK"), run.outcomes.subList(0, 2), run::failures);
        String reported = run.outcomes.get(2);
        for (String part : List.of("reportsTheStrayCalls", "2 stray calls", "factory.getFactoryInfo(0)",
                "light.setLightBrightness(3, 77)", "outside a test of SimulatedDeviceExtension",
                "@ExtendWith(SimulatedDeviceExtension.class)")) {
            assertTrue(reported.contains(part), () -> part + " missing from " + reported);
        }
        assertEquals("findsNoneLeft: OK", run.outcomes.get(3), run::failures);
        assertEquals(0, Stray.After.ran, "a test with stray calls before it does not run");
    }

    /**
     * A test that would wait forever (a crash to restart from while another service stays killed)
     * ends at JUnit's timeout in either thread mode, well before the kit's own limit, and the next
     * test finds the device healthy.
     */
    @ParameterizedTest
    @ValueSource(strings = {"SAME_THREAD", "SEPARATE_THREAD"})
    void timedOutTestLeavesTheKitUsable(String mode) {
        long start = System.nanoTime();
        InnerRun run = InnerRun.of(Map.of("junit.jupiter.execution.timeout.thread.mode.default", mode), Hang.class);
        long took = System.nanoTime() - start;
        assertEquals(2, run.outcomes.size(), run::failures);
        assertTrue(run.outcomes.get(0).startsWith("waitsForARestartThatCannotCome: java.util.concurrent.TimeoutException"),
                run::failures);
        assertEquals("findsAHealthyDevice: OK", run.outcomes.get(1), run::failures);
        assertTrue(took < Duration.ofSeconds(8).toNanos(), () -> "took " + took / 1_000_000 + " ms");
    }

    /** Calls made while no kit test holds the device. */
    static class Stray {
        @ExtendWith(SimulatedDeviceExtension.class)
        @Order(1)
        static class Before {
            @Test
            void before(Device device) {
                MmiNativeManager.getPowerStateNative("battery");
            }
        }

        @Order(2)
        static class Plain {
            @Test
            void plain() {
                MmiNativeManager.getBsnNative();
                MmiNativeManager.setLightBrightnessNative(3, 77);
            }
        }

        @ExtendWith(SimulatedDeviceExtension.class)
        @TestMethodOrder(OrderAnnotation.class)
        @Order(3)
        static class After {
            static int ran;

            @Test
            @Order(1)
            void reportsTheStrayCalls() {
                ran++;
            }

            @Test
            @Order(2)
            void findsNoneLeft(Device device) {
                assertEquals(List.of(), device.calls());
            }
        }
    }

    @ExtendWith(SimulatedDeviceExtension.class)
    @TestMethodOrder(OrderAnnotation.class)
    static class Hang {
        @Test
        @Order(1)
        @Timeout(value = 1500, unit = TimeUnit.MILLISECONDS)
        void waitsForARestartThatCannotCome(Device device) {
            device.answer("power.getPowerState", "crash");
            MmiNativeManager.getPowerStateNative("battery");
            device.kill("light");
            device.waitForRestarts();
        }

        @Test
        @Order(2)
        void findsAHealthyDevice(Device device) {
            assertEquals("KX2611220001A7", MmiNativeManager.getBsnNative());
            assertEquals(List.of("factory.getFactoryInfo(0)"), Texts.of(device.calls()));
        }
    }
}
