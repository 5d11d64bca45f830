package com.tavrin.mmitest.example;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.tavrin.mmitest.example.SensorSelfTest.Outcome;
import com.tavrin.mmitest.example.SensorSelfTest.Verdict;
import com.tavrin.mmitest.testkit.Device;
import com.tavrin.mmitest.testkit.SimulatedDeviceExtension;

import java.time.Duration;
import java.util.ArrayList;
import java.util.List;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.extension.ExtendWith;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

@ExtendWith(SimulatedDeviceExtension.class)
class SensorSelfTestTest {
    private final List<Integer> waits = new ArrayList<>();
    private final SensorSelfTest selfTest = new SensorSelfTest(waits::add);

    @Test
    void healthySensorPassesAfterWaitingAsLongAsItSays(Device device) throws InterruptedException {
        assertEquals(new Outcome(Verdict.PASS, "self-test passed"), selfTest.run(1));
        assertEquals(List.of(3000), waits);
        assertEquals(List.of("sensors.getSensorSelfTestDelayTime(1)", "sensors.startSensorSelfTest(1, 1)",
                "sensors.getSensorSelfTestResult(1)"), texts(device.calls()));
        // The lines the app's log shows for a passing self-test.
        assertEquals(List.of("D KxMMITest_jni: GetSensorSelfTestDelayTime, sensorId: 1, delayTime: 3000",
                "D KxMMITest_jni: StartSensorSelfTest, sensorId: 1, command: 1, result: 0",
                "D KxMMITest_jni: GetSensorSelfTestResult, sensorId: 1, result: 0"), texts(device.logs()));
    }

    @Test
    void selfTestRequestedAfterACrashAndRestartPasses(Device device) throws InterruptedException {
        device.restartDelay(Duration.ZERO);
        device.answer("sensors.getSensorSelfTestDelayTime", "crash", "10");
        assertEquals(Verdict.NO_SERVICE, selfTest.run(1).verdict());
        device.waitForRestarts();
        assertEquals(new Outcome(Verdict.PASS, "self-test passed"), selfTest.run(1));
        assertEquals(List.of(10), waits);
        assertEquals(List.of(1), device.calls("sensors.startSensorSelfTest").get(0).arguments().subList(0, 1));
    }

    /** Records as the text the library's log and the device show. */
    private static List<String> texts(List<?> records) {
        return records.stream().map(Object::toString).toList();
    }

    @ParameterizedTest
    @CsvSource(delimiter = '|', value = {
        "sensors.getSensorSelfTestResult | 5 | FAIL | self-test failed: code 5",
        "sensors.startSensorSelfTest     | 2 | FAIL | self-test did not start: code 2",
        "sensors.startSensorSelfTest     | transport-error | NO_SERVICE | sensor service lost before the self-test",
        "sensors.getSensorSelfTestResult | crash | NO_SERVICE | sensor service lost during the self-test",
    })
    void sensorAnswersBecomeVerdicts(String operation, String answer, Verdict verdict, String detail, Device device)
            throws InterruptedException {
        device.answer(operation, answer);
        assertEquals(new Outcome(verdict, detail), selfTest.run(1));
    }

    @Test
    void missingSensorServiceIsNoService(Device device) throws InterruptedException {
        device.absent("sensors");
        assertEquals(new Outcome(Verdict.NO_SERVICE, "sensor service not available"), selfTest.run(1));
        assertEquals(List.of(), device.calls());
        assertEquals(List.of("E KxMMITest_jni: GetSensorSelfTestDelayTime fail, g_kxSensors is null"), texts(device.logs()));
    }

    @Test
    void sensorServiceDyingDuringTheSelfTestIsNoService(Device device) throws InterruptedException {
        SensorSelfTest dying = new SensorSelfTest(millis -> device.kill("sensors"));
        assertEquals(new Outcome(Verdict.NO_SERVICE, "sensor service lost during the self-test"), dying.run(1));
        // Any death releases every service, so the result request never leaves the library.
        List<String> logs = texts(device.logs());
        assertEquals("W KxMMITest_jni: ProcessServiceDied, cookie is:4", logs.get(2));
        assertEquals("E KxMMITest_jni: GetSensorSelfTestResult fail, g_kxSensors is null", logs.get(logs.size() - 1));
    }
}
