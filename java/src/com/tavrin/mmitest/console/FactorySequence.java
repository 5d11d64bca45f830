package com.tavrin.mmitest.console;

import com.tavrin.mmitest.sim.LogLine;
import com.tavrin.mmitest.model.BigDataOperation;
import com.tavrin.mmitest.model.BigDataValue;

import java.lang.reflect.Method;
import java.util.Arrays;
import java.util.List;
import java.util.Objects;
import java.util.function.Predicate;
import java.util.stream.IntStream;

/**
 * The factory-test sequence of {@code ./mmi run}, as data: one step per request, in the order a
 * station would run them. To extend it, add a step; the tests check that every native method is
 * covered and that every step's arguments fit its method.
 */
final class FactorySequence {
    private FactorySequence() {}

    /** What a healthy device answers to a step; the verdict of a step is this test of its answer. */
    record Expect(String shown, Predicate<Object> healthy) {}

    /** A service result code: 0 is success. */
    static final Expect CODE = new Expect("0", a -> a instanceof Number n && n.longValue() == 0);
    /** A measured or configured quantity: the failure value is -1, and none is negative. */
    static final Expect QUANTITY = new Expect(">= 0", a -> a instanceof Number n && n.longValue() >= 0);
    static final Expect TRUE = new Expect("true", Boolean.TRUE::equals);

    /** A non-empty text that is none of the method's failure texts. */
    static Expect text(String... failures) {
        List<String> bad = Arrays.asList(failures);
        String shown = bad.isEmpty() ? "text" : "text, not " + String.join(" or ", bad);
        return new Expect(shown, a -> a instanceof String t && !t.isEmpty() && !bad.contains(t));
    }

    /** A text of the healthy answer's form, e.g. a list of rates. */
    static Expect form(String shown, String regex) {
        return new Expect(shown, a -> a instanceof String t && t.matches(regex));
    }

    static Expect values(int count) {
        return new Expect(count + " values", a -> a instanceof int[] v && v.length == count);
    }

    /**
     * One request of the sequence. showCalls: show the service calls the step made, for steps whose
     * point is what the service received. failure: what the method answers when its service is
     * gone, null for the usual value of its type. healthyErrors: how the error-priority lines a
     * healthy call writes begin (its result, logged at that priority).
     */
    record Step(String method, Expect expect, Object[] args, boolean showCalls, Object failure,
            List<String> healthyErrors) {
        Step calls() {
            return new Step(method, expect, args, true, failure, healthyErrors);
        }

        Step failsWith(Object value) {
            return new Step(method, expect, args, showCalls, value, healthyErrors);
        }

        Step logsAtError(String... starts) {
            return new Step(method, expect, args, showCalls, failure, List.of(starts));
        }

        /** Whether a log line is an error a healthy device would not cause. */
        boolean unhealthy(LogLine line) {
            return (line.priority() == 'E' || line.priority() == 'F')
                    && healthyErrors.stream().noneMatch(start -> line.text().startsWith("KxMMITest_jni: " + start));
        }

        Method resolve() {
            return Natives.find(method);
        }

        boolean isFailureValue(Object answer) {
            return Objects.deepEquals(failure != null ? failure : Natives.failureValue(resolve().getReturnType()),
                    answer);
        }
    }

    private static Step step(String method, Expect expect, Object... args) {
        return new Step(method, expect, args, false, null, List.of());
    }

    static List<Step> steps() {
        int[] rawPressure = IntStream.range(0, 16).map(i -> 1000 + 25 * i).toArray();
        return List.of(
                // Power and USB first: a device that cannot report its battery is not tested further.
                step("getPowerStateNative", form("NAME=VALUE,...", "[a-z_]+=[^,=]*(,[a-z_]+=[^,=]*)*"), "battery"),
                step("setPowerStateNative", CODE, "charging", "enable").logsAtError("SetPowerState, "),
                step("checkUsbSpeedNative", CODE, "usb3"),
                // Who the device is and where it has been.
                step("isFactoryVersionNative", TRUE),
                step("getBsnNative", text()),
                step("getManufactureFileNameNative", text()),
                step("getManufactureModeNative", QUANTITY),
                step("getManufactureStationFlagNative", text(), 1),
                step("getOeminfoNative", text(), 1, 0, 64),
                step("getMmiAutoStartFlagNative", text("Error")),
                step("disableMmiAutoStartNative", CODE, "0"),
                step("getMmiDeviceFeaturesCheckResultNative", CODE, 0),
                step("setTestCycleNative", CODE, 7, 3).calls(),
                // Test records: what the service receives is the point, so show it.
                step("sendBigDataValueNative", CODE,
                        new BigDataValue(101, "touchscreen", "tp_pressure", "512", "400", "600", "pass")
                                .version(1).dataSource(2).cycle(3).station("MMI2").bsn("BSN0001")
                                .time("2024-05-06 10:11:12").firmware("fw1.2").description("pressure center"))
                        .calls(),
                step("sendBigDataOperationNative", CODE, new BigDataOperation(1, 17, 2, "BSN0001", "MMI2", 3))
                        .calls(),
                // Pressure calibration: enter the mode, place, calibrate, verify, leave.
                step("isTpPressureSupportNative", TRUE),
                step("getTpPressureWaitingTimeNative", QUANTITY),
                step("controlTpPressureCalibModeNative", TRUE, 0),
                step("checkTpPressureCalibPositionNative", QUANTITY, 1, 540, 1200),
                step("setTpPressureCalibrationNative", TRUE, 0, 1),
                step("setApPressureCalibExternNative", QUANTITY, 1, 10, rawPressure),
                step("getTpPressureStatusNative", QUANTITY),
                step("setTpPressureVerificationNative", TRUE, 0, 1),
                step("getTpPressureVerifyResultNative", QUANTITY, 1),
                step("controlTpPressureCalibModeNative", TRUE, 1),
                // Capacitance, touch keys, touch features, crown.
                step("getCapacitanceTestResultNative", CODE),
                step("getCapacitanceCalibrateResultNative", text("Capacitance Calibrate Failed"), 0)
                        .failsWith("Capacitance Calibrate Failed"),
                step("getTouchKeySupportFlagNative", QUANTITY),
                step("getTouchKeyCapacitanceTestResultNative", CODE),
                step("setTouchScreenFeatureConfigNative", CODE, 1, "glove=1"),
                step("getRotaryCrownSelfTestNative", text("error")),
                // Sensors: calibrate, then self-test, each after its delay.
                step("getSensorCalibrateTypeNative", text(), 1),
                step("getSensorCalibrateDelayTimeNative", QUANTITY, 1),
                step("startSensorCalibrateNative", CODE, 1, 1),
                step("getSensorCalibrateResultNative", CODE, 1),
                step("getSensorSelfTestDelayTimeNative", QUANTITY, 1),
                step("startSensorSelfTestNative", CODE, 1, 1),
                step("getSensorSelfTestResultNative", CODE, 1),
                step("getCompassRawValueLimitNative", QUANTITY),
                step("setProximitySensorExternalIrModeNative", CODE, 1),
                // Parameter commands and flicker on the ambient-light sensor, switched on for them.
                step("sensorActivateNative", TRUE, 5, true, 200),
                step("handleSensorParameterNative", text(), 5, 1, 0, 64),
                step("handleAmbientLightParameterNative", values(64), 5, 2, 0, 64),
                step("getFlickerFrequencyNative", QUANTITY, 0),
                step("sensorActivateNative", TRUE, 5, false, 0),
                // Display refresh rate and brightness.
                step("getScreenFpsConfigNative", form("rates such as 60,90", "[1-9][0-9]*(,[1-9][0-9]*)*"))
                        .failsWith("FAILED:getDisplayFpsConfig"),
                step("setScreenFpsNative", TRUE, 1),
                step("setLightBrightnessNative", CODE, 0, 255),
                // Signature, memory card, high temperature; then the service may let go.
                step("getVerifySignatureResultNative", CODE, (Object) new byte[] {0x00, 0x7f, (byte) 0xa5, (byte) 0xff})
                        .calls(),
                step("setMockCardTestModeNative", CODE, "1"),
                step("getMockCardTestResultNative", text()),
                step("executeHighTemperInterceptCmdNative", CODE, "charge", "temp=45")
                        .logsAtError("ExecuteHighTemperInterceptCmd, "),
                step("setMmiResultNative", CODE, 1, 1),
                step("releaseFactoryHidlResourceNative", CODE));
    }

    /** A step that shows whether the library holds its handle of one service, and the operation it calls there. */
    record Probe(Step step, String operation) {}

    /**
     * One probe per service, two for power, which the drill kills by default. The operation a
     * probe calls is the library's to know; the device's catalogue tells whose operation it is.
     */
    static List<Probe> probes() {
        String[][] table = {
            {"getPowerStateNative", "getPowerState"}, {"checkUsbSpeedNative", "checkUsbSpeed"},
            {"getBsnNative", "getFactoryInfo"}, {"getScreenFpsConfigNative", "getDisplayFpsConfig"},
            {"getTpPressureStatusNative", "getTpPressureStatus"},
            {"getSensorCalibrateDelayTimeNative", "getSensorCalibrateDelayTime"},
            {"setLightBrightnessNative", "setLightBrightness"},
            {"getTouchKeySupportFlagNative", "getTouchKeySupportState"}};
        return Arrays.stream(table).map(row -> new Probe(steps().stream().filter(s -> s.method().equals(row[0]))
                .findFirst().orElseThrow(() -> new IllegalStateException("no step calls " + row[0])), row[1])).toList();
    }
}
