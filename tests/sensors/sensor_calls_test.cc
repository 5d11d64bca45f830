// Calibration, self-test, activation and queries through the sensor service's 1.0 interface.
#include <climits>
#include <functional>

#include "device_test.h"

namespace kxtest {
namespace {

using simdevice::Service;

class SensorCalls : public DeviceTest {};

struct IntCase {
    std::function<jint()> call;
    const char* operation;
    jint answer;
    std::string line;
    std::string passed;
};

TEST_F(SensorCalls, IntegerMethodsPassTheirArgumentsInOrderAndReturnTheAnswer) {
    const IntCase cases[] = {
        {[] { return CallInt("getSensorCalibrateDelayTimeNative", "(I)I", 7); },
         "getSensorCalibrateDelayTime", 1500,
         "GetSensorCalibrateDelayTime, sensorId: 7, delayTime: 1500", "(7)"},
        {[] { return CallInt("getSensorSelfTestDelayTimeNative", "(I)I", 8); },
         "getSensorSelfTestDelayTime", 2500,
         "GetSensorSelfTestDelayTime, sensorId: 8, delayTime: 2500", "(8)"},
        {[] { return CallInt("startSensorCalibrateNative", "(II)I", 3, 9); },
         "startSensorCalibrate", -4, "StartSensorCalibrate, sensorId: 3, command: 9, result: -4",
         "(3, 9)"},
        {[] { return CallInt("startSensorSelfTestNative", "(II)I", 4, 10); }, "startSensorSelfTest",
         6, "StartSensorSelfTest, sensorId: 4, command: 10, result: 6", "(4, 10)"},
        {[] { return CallInt("getSensorCalibrateResultNative", "(I)I", 2); },
         "getSensorCalibrateResult", 1, "GetSensorCalibrateResult, sensorId: 2, result: 1\n",
         "(2)"},
        {[] { return CallInt("getSensorSelfTestResultNative", "(I)I", 5); },
         "getSensorSelfTestResult", -2, "GetSensorSelfTestResult, sensorId: 5, result: -2", "(5)"},
        {[] { return CallInt("getCompassRawValueLimitNative", "()I"); }, "getCompassRawValueLimit",
         4096, "GetCompassRawValueLimit, result: 4096", "()"},
        {[] { return CallInt("setProximitySensorExternalIrModeNative", "(I)I", 11); },
         "setPsExternalIrMode", 3, "SetPsExternalIrMode, result: 3", "(11)"},
    };
    for (const IntCase& c : cases) {
        SCOPED_TRACE(c.operation);
        Answer(Service::kSensors, c.operation, std::to_string(c.answer).c_str());
        EXPECT_EQ(c.call(), c.answer);
        EXPECT_EQ(TakeLogs(), std::vector<LogLine>{Line(D, c.line)});
        EXPECT_EQ(Calls(),
                  std::vector<std::string>{std::string("sensors.") + c.operation + c.passed});

        // A failed transport is one error line and -1, not the end of the process.
        Answer(Service::kSensors, c.operation, "transport-error");
        EXPECT_EQ(c.call(), -1);
        std::vector<LogLine> logs = TakeLogs();
        ASSERT_EQ(logs.size(), 1u);
        EXPECT_EQ(logs[0].priority, E);
        std::string function = c.line.substr(0, c.line.find(','));
        EXPECT_EQ(logs[0].text.rfind("KxMMITest_jni: " + function + " fail, transport error", 0),
                  0u)
            << logs[0].text;
        Calls();
    }
}

TEST_F(SensorCalls, ActivationWidensTheRateWithItsSignAndIsTrueOnlyForResultZero) {
    const struct {
        jboolean enable;
        jint rate;
        jint result;
        std::string passed;  // enable and rate as the service received them
        std::string line;    // switch, samplingRate and activeResult as logged
    } cases[] = {
        {JNI_TRUE, -1, 0, "true, -1", "switch: 1, samplingRate: -1, activeResult: 0"},
        {JNI_TRUE, INT32_MIN, 0, "true, -2147483648",
         "switch: 1, samplingRate: -2147483648, activeResult: 0"},
        {JNI_TRUE, INT32_MAX, 1, "true, 2147483647",
         "switch: 1, samplingRate: 2147483647, activeResult: 1"},
        {JNI_FALSE, 200, -3, "false, 200", "switch: 0, samplingRate: 200, activeResult: -3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        Answer(Service::kSensors, "sensorActivate", std::to_string(c.result).c_str());
        EXPECT_EQ(CallBool("sensorActivateNative", "(IZI)Z", 5, c.enable, c.rate), c.result == 0);
        EXPECT_EQ(Calls(), std::vector<std::string>{"sensors.sensorActivate(5, " + c.passed + ")"});
        EXPECT_EQ(TakeLogs(),
                  std::vector<LogLine>{Line(D, "SensorActivate, sensorType: 5, " + c.line)});
    }
}

TEST_F(SensorCalls, CalibrateTypeKeepsTheTextWhateverTheCodeAndAlwaysPasses1024) {
    const struct {
        jint sensorId;
        const char* answer;
        std::string result;
        std::string line;
    } cases[] = {
        {0, "0,\"offset\"", "offset", "resultCode: 0, calibType: offset"},
        {9, "1,\"gain\"", "gain", "resultCode: 1, calibType: gain"},
        {-1, "nocallback", "", "resultCode: -1, calibType: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer);
        Answer(Service::kSensors, "getSensorCalibrateType", c.answer);
        EXPECT_EQ(CallString("getSensorCalibrateTypeNative", "(I)Ljava/lang/String;", c.sensorId),
                  c.result);
        EXPECT_EQ(TakeLogs(), std::vector<LogLine>{Line(D, "GetSensorCalibrateType, " + c.line)});
        EXPECT_EQ(Calls(), std::vector<std::string>{"sensors.getSensorCalibrateType(" +
                                                    std::to_string(c.sensorId) + ", 1024)"});
    }
}

}  // namespace
}  // namespace kxtest
