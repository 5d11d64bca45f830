package com.tavrin.mmitest.console;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.tavrin.mmitest.console.FactorySequence.Step;
import com.tavrin.mmitest.sim.Call;

import java.util.ArrayList;
import java.util.List;

import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Verdicts from what the calls answered and logged, without a library: the steps' and the drill's. */
class JudgingTest {
    private static Step step(String method) {
        return FactorySequence.steps().stream().filter(s -> s.method().equals(method)).findFirst().orElseThrow();
    }

    private static StepRecord answered(Step step, Object result, String... logs) {
        StepRecord r = new StepRecord(step.method(), step.args());
        r.result = result;
        r.logs = JunitCheck.logs(logs);
        r.calls = List.of(new Call("power", "getPowerState", 1, List.of("battery")));
        return r;
    }

    /** An answer of the wrong form, or an error line a healthy call does not write, fails the step. */
    @ParameterizedTest(name = "{0} {1} {2}")
    @CsvSource(delimiter = '|', value = {
        "getScreenFpsConfigNative | 60,90,120 | - | true",
        "getScreenFpsConfigNative | 0 | - | false",
        "getScreenFpsConfigNative | garbage | - | false",
        "getScreenFpsConfigNative | 60,90 | E KxMMITest_jni: GetScreenFpsConfig fail, not support multi fps | false",
        "getPowerStateNative | capacity=85,status=charging | - | true",
        "getPowerStateNative | x | - | false",
        "getPowerStateNative | capacity=85 | W KxMMITest_jni: slow | true",
        "getPowerStateNative | capacity=85 | F KxMMITest_jni: abort | false",
        "setPowerStateNative | 0 | E KxMMITest_jni: SetPowerState, testScene:charging, para:enable, result:0 | true",
        "setPowerStateNative | 0 | E KxMMITest_jni: SetPowerState fail, kxPower is null | false",
        "executeHighTemperInterceptCmdNative | 0 | E KxMMITest_jni: ExecuteHighTemperInterceptCmd, resultCode: 0 | true",
        "getBsnNative | KX1 | E KxMMITest_jni: SetPowerState, result:0 | false"})
    void stepVerdicts(String method, String answer, String log, boolean passed) {
        Step step = step(method);
        Object result = answer.matches("-?[0-9]+") && !method.contains("Fps") ? (Object) Integer.parseInt(answer)
                : answer;
        StepRecord r = answered(step, result, log.equals("-") ? new String[0] : new String[] {log}).judge(step);
        assertEquals(passed, r.passed(), r.why());
    }

    /**
     * Each probe healthy before, at its failure value while down, as before once back; one probe
     * bent per case. The expected verdicts: the probe's row, then the line checks in order.
     */
    @ParameterizedTest(name = "{0}")
    @CsvSource(delimiter = '|', value = {
        "healthy | OK OK OK OK OK",
        "answered while down | FAIL OK OK OK OK",
        "not restored | FAIL OK OK OK OK",
        "failing before | SKIPPED FAIL OK OK OK",
        "called while down | OK OK OK FAIL OK",
        "death not logged | OK OK FAIL OK OK",
        "no new registration | OK OK OK OK FAIL"})
    void drillVerdicts(String bent, String verdicts) {
        Step step = step("getPowerStateNative");
        List<Step> probes = List.of(step);
        StepRecord before = answered(step, bent.equals("failing before") ? "" : "capacity=85").judge(step);
        StepRecord down = answered(step, bent.equals("answered while down") ? "capacity=85" : "").judge(step);
        if (!bent.equals("called while down")) {
            down.calls = List.of();
        }
        StepRecord after = answered(step, bent.equals("not restored") ? "" : "capacity=85").judge(step);
        Drill.Phases phases = new Drill.Phases(List.of(before), List.of(down), List.of(after),
                JunitCheck.logs(bent.equals("death not logged") ? "D nothing" : "W KxMMITest_jni: ProcessServiceDied"),
                List.of(), JunitCheck.logs(bent.equals("no new registration") ? "D nothing" : "W KxMMITest_jni: ReinitHal"),
                0, 0);
        List<String> got = new ArrayList<>();
        Drill.judge("power", probes, List.of("power"), phases, false).forEach(c -> got.add(c.status().name()));
        assertEquals(List.of(verdicts.split(" ")), got);
    }
}
