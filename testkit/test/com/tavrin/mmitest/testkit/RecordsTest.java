package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.LogLine;

import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.time.Duration;
import java.util.List;
import java.util.Map;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;

/** Calls and log lines as values, and waiting for the ones an app makes on its own threads. */
@ExtendWith(SimulatedDeviceExtension.class)
class RecordsTest {
    @Test
    void argumentsAreJavaValues(Device device) {
        MmiNativeManager.setLightBrightnessNative(3, 77);
        MmiNativeManager.getPowerStateNative("battery");
        MmiNativeManager.sendBigDataOperationNative(new BigDataOperation(1, 2, 3, "SN-TEST-0001", "ST", 4));
        assertEquals(List.of(3, 77), device.calls("light.setLightBrightness").get(0).arguments());
        assertEquals(List.of("battery"), device.calls("power.getPowerState").get(0).arguments());
        Call big = device.calls().get(2);
        Map<?, ?> record = (Map<?, ?>) big.arguments().get(0);
        assertTrue(record.containsValue("SN-TEST-0001"), record::toString);
        assertEquals(List.of("light.setLightBrightness(3, 77)", "power.getPowerState(\"battery\")"),
                Texts.of(device.calls().subList(0, 2)));
    }

    /** Every native, healthy and with its service gone, logs lines without the library's trailing newline. */
    @Test
    void noLogTextEndsWithANewline(Device device) throws ReflectiveOperationException {
        callEveryNative();
        device.kill("power");
        callEveryNative();
        device.revive("power");
        List<LogLine> logs = device.logs();
        assertTrue(logs.size() > 100, () -> logs.size() + " lines");
        assertEquals(List.of(), logs.stream().filter(l -> l.text().endsWith("\n")).toList());
        assertEquals("D KxMMITest_jni: GetBsn, ret: 0", logs.stream().filter(l -> l.text().contains("GetBsn,")).findFirst()
                .orElseThrow().toString());
    }

    @Test
    void awaitFindsWhatAnotherThreadDoesAndFailsWithWhatItSaw(Device device) throws InterruptedException {
        Thread app = new Thread(() -> {
            sleep(200);
            MmiNativeManager.getBsnNative();
        });
        app.start();
        assertEquals(List.of(0), device.awaitCall("factory.getFactoryInfo", Duration.ofSeconds(10)).arguments());
        assertEquals("KxMMITest_jni: GetBsn, ret: 0",
                device.awaitLog(l -> l.text().contains("GetBsn"), Duration.ofSeconds(10)).text());
        app.join();
        // Each call is returned once.
        String message = assertThrows(AssertionError.class,
                () -> device.awaitCall("factory.getFactoryInfo", Duration.ofMillis(100))).getMessage();
        assertTrue(message.contains("no call of factory.getFactoryInfo came; the test's calls: [factory.getFactoryInfo(0)]"),
                message);
        String logMessage = assertThrows(AssertionError.class,
                () -> device.awaitLog(l -> l.text().contains("GetBsn"), Duration.ofMillis(100))).getMessage();
        assertTrue(logMessage.contains("D KxMMITest_jni: GetBsn, ret: 0"), logMessage);
    }

    private static void callEveryNative() throws ReflectiveOperationException {
        for (Method m : MmiNativeManager.class.getDeclaredMethods()) {
            if (Modifier.isNative(m.getModifiers())) {
                Object[] args = new Object[m.getParameterCount()];
                Class<?>[] types = m.getParameterTypes();
                for (int i = 0; i < args.length; i++) {
                    args[i] = types[i] == int.class ? 1 : types[i] == boolean.class ? true : types[i] == String.class ? "1"
                            : types[i] == int[].class ? new int[] {1} : types[i] == byte[].class ? new byte[] {1}
                            : types[i].getConstructor().newInstance();
                }
                m.invoke(null, args);
            }
        }
    }

    private static void sleep(long ms) {
        try {
            Thread.sleep(ms);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }
}
