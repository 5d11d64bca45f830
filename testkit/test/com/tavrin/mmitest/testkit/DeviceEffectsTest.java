package com.tavrin.mmitest.testkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.tavrin.mmitest.controller.MmiNativeManager;
import com.tavrin.mmitest.sim.Call;
import com.tavrin.mmitest.sim.LogLine;

import java.util.List;
import java.util.function.Consumer;
import java.util.function.Supplier;
import java.util.stream.Stream;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;

/** What the library answers after each of the device's changes, and which services it still reaches. */
@ExtendWith(SimulatedDeviceExtension.class)
class DeviceEffectsTest {
    static Stream<Arguments> changes() {
        return Stream.of(
                change("absent power", d -> d.absent("power"), () -> MmiNativeManager.getPowerStateNative("battery"), "",
                        "E KxMMITest_jni: GetPowerState fail, g_kxPower is null", true),
                change("absent display", d -> d.absent("display"), MmiNativeManager::getScreenFpsConfigNative,
                        "FAILED:getDisplayFpsConfig", "E KxMMITest_jni: GetScreenFpsConfig fail, g_kxDisplay is null", true),
                change("1.0-only sensors", d -> d.onlyV10("sensors"),
                        () -> MmiNativeManager.handleAmbientLightParameterNative(1, 2, 3, 4), null,
                        "E KxMMITest_jni: HandleAmbientLightParameter fail, sensorNewVer is null", true),
                change("1.0-only factory", d -> d.onlyV10("factory"), MmiNativeManager::getManufactureModeNative, -1,
                        "E KxMMITest_jni: GetManufactureMode, kxFactoryNew is null", true),
                change("killed power", d -> d.kill("power"), () -> MmiNativeManager.getPowerStateNative("battery"), "",
                        "E KxMMITest_jni: GetPowerState fail, g_kxPower is null", false),
                change("killed and revived power", d -> {
                    d.kill("power");
                    d.revive("power");
                }, () -> MmiNativeManager.getPowerStateNative("battery"), "capacity=85,status=charging",
                        "D KxMMITest_jni: GetPowerState, result code: 0, result info: capacity=85,status=charging", true),
                change("programmed answer", d -> d.answer("power.getPowerState", "0,\"capacity=5\""),
                        () -> MmiNativeManager.getPowerStateNative("battery"), "capacity=5",
                        "D KxMMITest_jni: GetPowerState, result code: 0, result info: capacity=5", true));
    }

    @Test
    void revivingOneOfTwoKilledServicesLeavesTheLibraryWaitingForTheOther(Device device) {
        device.kill("light");
        device.kill("power");
        device.revive("power");
        // The reconnect waits for light, which the library connects before otherdevices.
        assertEquals(-1, MmiNativeManager.getTouchKeySupportFlagNative());
        device.revive("light");
        assertEquals(1, MmiNativeManager.getTouchKeySupportFlagNative());
    }

    private static Arguments change(String name, Consumer<Device> change, Supplier<Object> request, Object answer,
            String lastLog, boolean othersConnected) {
        return Arguments.of(name, change, request, answer, lastLog, othersConnected);
    }

    @ParameterizedTest(name = "{0}")
    @MethodSource("changes")
    void libraryAnswersAsOnSuchADevice(String name, Consumer<Device> change, Supplier<Object> request, Object answer,
            String lastLog, boolean othersConnected, Device device) {
        change.accept(device);
        assertEquals(answer, request.get());
        List<LogLine> logs = device.logs();
        assertEquals(lastLog, logs.get(logs.size() - 1).toString());
        // Only a death releases every handle; a missing or older service leaves the others connected.
        assertEquals(othersConnected ? "KX2611220001A7" : "", MmiNativeManager.getBsnNative());
    }

    @Test
    void absentAndOlderServicesAreSetUpOutOfSight(Device device) {
        MmiNativeManager.getBsnNative();
        device.absent("light");
        device.onlyV10("display");
        assertEquals(List.of("factory.getFactoryInfo(0)"), Texts.of(device.calls()));
        assertEquals(List.of("D KxMMITest_jni: GetBsn, ret: 0"), Texts.of(device.logs()));
    }

    @Test
    void killAndReviveReturnOnceTheLibraryHasSeenTheReports(Device device) {
        device.kill("sensors");
        List<String> atKill = Texts.of(device.logs());
        assertTrue(atKill.contains("D KxMMITest_jni: ExitMmiNativeManager"), atKill::toString);
        device.revive("sensors");
        List<String> atRevive = Texts.of(device.logs()).subList(atKill.size(), device.logs().size());
        assertTrue(atRevive.contains("D KxMMITest_jni: InitMmiNativeManager"), atRevive::toString);
        assertEquals(List.of(new LogLine('W', "", "KxMMITest_jni: ProcessServiceDied, cookie is:4")),
                device.logs().stream().filter(l -> l.text().contains("ServiceDied")).toList());
        assertEquals(3000, MmiNativeManager.getSensorSelfTestDelayTimeNative(1));
        List<Call> calls = device.calls();
        assertEquals("sensors.getSensorSelfTestDelayTime(1)", calls.get(calls.size() - 1).toString());
    }
}
