// Sensor calibration, self-test, activation and parameters; flicker; display fps and brightness.
#include <algorithm>
#include <climits>
#include <numeric>
#include <tuple>

#include "device_test.h"

namespace kxtest {
namespace {

using simdevice::Service;

class Sensors : public DeviceTest {};

TEST_F(Sensors, IntegerMethodsPassTheirArgumentsInOrderAndReturnTheAnswer) {
    const std::tuple<const char*, const char*, const char*, std::string, std::string> cases[] = {
        {"getSensorCalibrateDelayTimeNative", "(I)I", "1500", "getSensorCalibrateDelayTime(7)",
         "GetSensorCalibrateDelayTime, sensorId: 7, delayTime: 1500"},
        {"getSensorSelfTestDelayTimeNative", "(I)I", "2500", "getSensorSelfTestDelayTime(7)",
         "GetSensorSelfTestDelayTime, sensorId: 7, delayTime: 2500"},
        {"startSensorCalibrateNative", "(II)I", "-4", "startSensorCalibrate(7, 9)",
         "StartSensorCalibrate, sensorId: 7, command: 9, result: -4"},
        {"startSensorSelfTestNative", "(II)I", "6", "startSensorSelfTest(7, 9)",
         "StartSensorSelfTest, sensorId: 7, command: 9, result: 6"},
        {"getSensorCalibrateResultNative", "(I)I", "1", "getSensorCalibrateResult(7)",
         "GetSensorCalibrateResult, sensorId: 7, result: 1\n"},
        {"getSensorSelfTestResultNative", "(I)I", "-2", "getSensorSelfTestResult(7)",
         "GetSensorSelfTestResult, sensorId: 7, result: -2"},
        {"getCompassRawValueLimitNative", "()I", "4096", "getCompassRawValueLimit()",
         "GetCompassRawValueLimit, result: 4096"},
        {"setProximitySensorExternalIrModeNative", "(I)I", "3", "setPsExternalIrMode(7)",
         "SetPsExternalIrMode, result: 3"}};
    for (const auto& [method, signature, answer, call, line] : cases) {
        // extra arguments are not read
        Check(Bind(method, signature, 7, 9), answer, "sensors." + call, answer, {Line(D, line)});
    }
}

TEST_F(Sensors, ActivationWidensTheRateWithItsSignAndIsTrueOnlyForResultZero) {
    const std::tuple<jboolean, jint, jint> cases[] = {{JNI_TRUE, -1, 0},
                                                      {JNI_TRUE, INT32_MIN, 0},
                                                      {JNI_TRUE, INT32_MAX, 1},
                                                      {JNI_FALSE, 200, -3}};
    for (const auto& [enable, rate, result] : cases) {
        const std::string args = std::to_string(rate), code = std::to_string(result);
        Check(
            Bind("sensorActivateNative", "(IZI)Z", 5, enable, rate), code,
            "sensors.sensorActivate(5, " + std::string(enable ? "true, " : "false, ") + args + ")",
            result == 0 ? "true" : "false",
            {Line(D, "SensorActivate, sensorType: 5, switch: " + std::to_string(enable) +
                         ", samplingRate: " + args + ", activeResult: " + code)});
    }
}

TEST_F(Sensors, CalibrateTypeKeepsTheTextWhateverTheCodeAndAlwaysPasses1024) {
    const std::tuple<jint, const char*, std::string, std::string> cases[] = {
        {0, "0,\"offset\"", "offset", "resultCode: 0, calibType: offset"},
        {9, "1,\"gain\"", "gain", "resultCode: 1, calibType: gain"}};
    for (const auto& [sensorId, answer, result, line] : cases) {
        Check(Bind("getSensorCalibrateTypeNative", "(I)Ljava/lang/String;", sensorId), answer,
              "sensors.getSensorCalibrateType(" + std::to_string(sensorId) + ", 1024)", result,
              {Line(D, "GetSensorCalibrateType, " + line)});
    }
}

std::vector<int32_t> Count(int from, size_t n, size_t size = 0) {  // zeros after n values
    std::vector<int32_t> v(std::max(n, size));
    std::iota(v.begin(), v.begin() + n, from);
    return v;
}

TEST_F(Sensors, ParameterCommandsPassTheirIntsInOrderAndAnswerTextOr64Values) {
    Check(Bind("handleSensorParameterNative", "(IIII)Ljava/lang/String;", 1, 2, 3, 4),
          "3,\"busy\",[1,2]", "sensors.handleSensorParameter(1, 2, 3, 4)", "busy",
          {Line(D,
                "HandleSensorParameter, ret: 3, resultInfo: busy, sensorId: 1, mainCmd: 2, "
                "subCmd: 3, length: 4")});

    // ret, para and how many values the service delivers, counting up from -5 (0: no callback)
    const std::tuple<int, const char*, size_t> cases[] = {
        {0, "p", 3}, {2, "q", 64}, {0, "", 100}, {-1, "", 0}};
    for (const auto& [ret, para, n] : cases) {
        SCOPED_TRACE(n);
        Answer(Service::kSensors, "handleSensorParameter",
               n ? simdevice::Answer::Values({int64_t{ret}, std::string(para), Count(-5, n)})
                 : simdevice::Answer::NoCallback());
        EXPECT_EQ(CallIntArray("handleAmbientLightParameterNative", "(IIII)[I", 5, 6, 7, 1),
                  Count(-5, std::min<size_t>(n, 64), 64));
        EXPECT_EQ(TakeLogs(),
                  Lines{Line(D, "HandleAmbientLightParameter, ret: " + std::to_string(ret) +
                                    ", para: " + para +
                                    ", sensorId: 5, mainCmd: 6, subCmd: 7, length: 1")});
        EXPECT_EQ(Calls(), Texts{"sensors.handleSensorParameter(5, 6, 7, 1)"});
    }
}

// 100 Hz at 1000 samples a second: on for five samples, off for five, starting on; a steady level,
// which alone reads 21, from sample `steadyFrom` on.
std::vector<int32_t> Square(size_t n, size_t steadyFrom = SIZE_MAX) {
    std::vector<int32_t> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = i >= steadyFrom || (i / 5) % 2 == 0 ? 1000 : 0;
    return v;
}

TEST_F(Sensors, FlickerIsDetectedOnTheFirst256SamplesOfASuccessfulFetch) {
    const LogLine illegal = Line(E, "GetFlickerFrequency fail, original data is illegal");
    const LogLine failed = Line(E, "GetFlickerFrequency fail, result fail");
    const LogLine detected = Line(D, "GetFlickerFrequency, frequenceDetected: 99");
    EXPECT_EQ(CallInt("getFlickerFrequencyNative", "(I)I", 42), 99);  // the default light
    EXPECT_EQ(TakeLogs(), Lines{detected});
    EXPECT_EQ(Calls(), Texts{"sensors.getFlickerRawData(42)"});
    const std::tuple<simdevice::Answer, jint, LogLine> cases[] = {
        {simdevice::Answer::Values({int64_t{0}, Square(256)}), 99, detected},
        {simdevice::Answer::Values({int64_t{0}, Square(1000, 256)}), 99, detected},
        {simdevice::Answer::Values({int64_t{0}, Square(255)}), -1, illegal},
        {simdevice::Answer::Values({int64_t{1}, Square(300)}), -1, failed},
        {simdevice::Answer::Values({int64_t{-1}, Square(300)}), -1, failed}};
    for (const auto& [answer, result, line] : cases) {
        Answer(Service::kSensors, "getFlickerRawData", answer);
        EXPECT_EQ(CallInt("getFlickerFrequencyNative", "(I)I", 1), result);
        EXPECT_EQ(TakeLogs(), Lines{line});
    }
}

TEST_F(Sensors, DisplayFpsSucceedsOnlyForResultZeroAndBrightnessPassesThrough) {
    const std::string failed = "FAILED:getDisplayFpsConfig";
    const std::tuple<const char*, std::string, LogLine> cases[] = {
        {"0,\"60,90,120\"", "60,90,120", Line(I, "GetScreenFpsConfig, fpsConfig: 60,90,120")},
        {"3,\"60,90\"", failed,
         Line(E, "GetScreenFpsConfig fail, error info: " + failed + ", ret: 3")},
        {"nocallback", failed,
         Line(E, "GetScreenFpsConfig fail, error info: " + failed + ", ret: -2")}};
    for (const auto& [answer, result, line] : cases) {
        Check(Bind("getScreenFpsConfigNative", "()Ljava/lang/String;"), answer,
              "display.getDisplayFpsConfig()", result, {line});
    }
    for (jint ret : {0, 1, -1}) {
        Check(Bind("setScreenFpsNative", "(I)Z", 2), std::to_string(ret),
              "display.setDisplayFps(2)", ret == 0 ? "true" : "false",
              {Line(I, "SetScreenFps, freqIndex: 2, ret: " + std::to_string(ret))});
    }
    Check(Bind("setLightBrightnessNative", "(II)I", 3, 255), "-5",
          "light.setLightBrightness(3, 255)", "-5",
          {Line(D, "SetLightBrightness, Id: 3, brightness: 255, result: -5")});
}

}  // namespace
}  // namespace kxtest
