package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;

import java.time.Duration;
import java.util.List;

import org.junit.jupiter.api.MethodOrderer.OrderAnnotation;
import org.junit.jupiter.api.Order;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.TestMethodOrder;
import org.junit.jupiter.api.extension.ExtendWith;

/** The first tests leave every kind of change behind; the last must find none of it. */
@ExtendWith(SimulatedDeviceExtension.class)
@TestMethodOrder(OrderAnnotation.class)
class ResetBetweenTestsTest {
    @Test
    @Order(1)
    void leavesTheDeviceInDisarray(Device device) {
        device.answer("sensors.startSensorSelfTest", "5");
        assertEquals(5, MmiNativeManager.startSensorSelfTestNative(1, 1));
        device.answer("touchscreen.getCapacitanceTestResult", "3,\"open at 4\"");
        assertEquals(3, MmiNativeManager.getCapacitanceTestResultNative());
        assertEquals("open at 4", MmiNativeManager.sTpCapacitanceFailInfo);
        device.onlyV10("display");
        device.absent("light");
        device.kill("power");
        assertEquals("", MmiNativeManager.getBsnNative());
        device.delay("sensors.getSensorSelfTestDelayTime", Duration.ofSeconds(6));
        device.answer("factory.getFactoryInfo", "crash", "5,\"late\"");
    }

    /** Alone, so that no death or registration would make the library forget. */
    @Test
    @Order(2)
    void leavesTheLibraryRememberingTpPressureSupport() {
        // The library remembers a true answer until its handles are connected again.
        assertTrue(MmiNativeManager.isTpPressureSupportNative());
    }

    @Test
    @Order(3)
    void findsAHealthyConnectedDevice(Device device) {
        assertEquals(List.of(), device.calls());
        assertEquals(List.of(), device.logs());
        // No staged timing left: the delayed operation answers at once, a crash restarts in 300 ms.
        long start = System.nanoTime();
        assertEquals(3000, MmiNativeManager.getSensorSelfTestDelayTimeNative(1));
        assertTrue(System.nanoTime() - start < Duration.ofSeconds(3).toNanos(), "the delay of the test before is gone");
        assertEquals("", MmiNativeManager.sTpCapacitanceFailInfo);

        device.answer("touchscreen.isTpPressureSupported", "false");
        assertFalse(MmiNativeManager.isTpPressureSupportNative());
        assertEquals(0, MmiNativeManager.startSensorSelfTestNative(1, 1));
        assertTrue(MmiNativeManager.setScreenFpsNative(2));
        assertEquals(0, MmiNativeManager.setLightBrightnessNative(1, 100));
        assertEquals("capacity=85,status=charging", MmiNativeManager.getPowerStateNative("battery"));
        assertEquals("KX2611220001A7", MmiNativeManager.getBsnNative());
        assertEquals(List.of("sensors.getSensorSelfTestDelayTime(1)", "touchscreen.isTpPressureSupported()",
                "sensors.startSensorSelfTest(1, 1)", "display.setDisplayFps(2)", "light.setLightBrightness(1, 100)",
                "power.getPowerState(\"battery\")", "factory.getFactoryInfo(0)"), Texts.of(device.calls()));
    }
}
