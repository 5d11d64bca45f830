package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.List;
import java.util.function.Consumer;
import java.util.stream.Stream;

import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

/** Refused uses of the device, each with a message that names what would be accepted. */
@ExtendWith(SimulatedDeviceExtension.class)
class DeviceErrorsTest {
    private static final String SERVICES = "factory, display, touchscreen, sensors, power, light, otherdevices";
    private static Device kept;

    static Stream<Arguments> refusals() {
        return Stream.of(
                refused("unknown service", d -> d.answer("sensor.startSensorSelfTest", "0"), IllegalArgumentException.class,
                        "answer(\"sensor.startSensorSelfTest\", \"0\"): unknown service \"sensor\"", SERVICES),
                refused("no operation", d -> d.answer("sensors", "0"), IllegalArgumentException.class,
                        "SERVICE.OPERATION", SERVICES),
                refused("unknown operation", d -> d.answer("sensors.startSelfTest", "0"), IllegalArgumentException.class,
                        "sensors has no operation \"startSelfTest\"", "startSensorSelfTest, getSensorSelfTestResult"),
                refused("text in a vector", d -> d.answer("power.getPowerState", "0,[x]"), IllegalArgumentException.class,
                        "power.getPowerState", "bytes:41ff42", "nocallback", "transport-error"),
                refused("nocallback for a returned value", d -> d.answer("sensors.startSensorSelfTest", "nocallback"),
                        IllegalArgumentException.class, "nocallback applies to callback answers only"),
                refused("text for an int", d -> d.answer("sensors.startSensorSelfTest", "\"5\""),
                        IllegalArgumentException.class, "startSensorSelfTest answers value: int32"),
                refused("single-version service", d -> d.onlyV10("power"), IllegalArgumentException.class,
                        "onlyV10(\"power\")", "factory, display and sensors"),
                refused("kill an unknown service", d -> d.kill("lights"), IllegalArgumentException.class,
                        "kill(\"lights\"): unknown service", SERVICES),
                refused("absent an unknown service", d -> d.absent(""), IllegalArgumentException.class, SERVICES),
                refused("1.0-only while another service is killed", d -> {
                    d.kill("power");
                    d.onlyV10("display");
                }, IllegalStateException.class, "onlyV10(\"display\"): power killed in this test"),
                refused("revive an absent service", d -> {
                    d.absent("light");
                    d.revive("light");
                }, IllegalStateException.class, "revive(\"light\"): light is absent in this test"));
    }

    private static Arguments refused(String name, Consumer<Device> use, Class<? extends RuntimeException> type,
            String... named) {
        return Arguments.of(name, use, type, List.of(named));
    }

    @ParameterizedTest(name = "{0}")
    @MethodSource("refusals")
    void refusalNamesWhatIsAccepted(String name, Consumer<Device> use, Class<? extends RuntimeException> type,
            List<String> named, Device device) {
        String message = assertThrows(type, () -> use.accept(device)).getMessage();
        for (String part : named) {
            assertTrue(message.contains(part), () -> "\"" + part + "\" missing from: " + message);
        }
    }

    @Test
    void keepsTheDeviceBeyondTheTest(Device device) {
        kept = device;
    }

    @AfterAll
    static void deviceIsRefusedOutsideItsTest() {
        String message = assertThrows(IllegalStateException.class, () -> kept.answer("power.getPowerState", "0"))
                .getMessage();
        assertTrue(message.contains("running test of SimulatedDeviceExtension"), message);
    }
}
