// Every native against a service whose transport fails in the middle of the call, and, where the
// operation answers through a callback, against a service that returns without calling back.
// Each answers its failure value (or the value its callback presets give), writes its lines, and
// the next call works as before.
#include <gtest/gtest.h>
#include <hidl/HostTransport.h>

#include <future>
#include <optional>
#include <string>
#include <vector>

#include "workload.h"

namespace reliability {
namespace {

using simdevice::Service;

struct Fault {
    int index;             // row of the registration table
    const char* function;  // as its lines name it
    Service service;
    const char* operation;  // the operation the call reaches
    std::string transportError;
    std::optional<std::string> noCallback;  // only for operations that call back
};

const std::vector<Fault>& FaultTable() {
    const Service F = Service::kFactory;
    const Service D = Service::kDisplay;
    const Service T = Service::kTouchscreen;
    const Service S = Service::kSensors;
    const Service P = Service::kPower;
    const Service L = Service::kLight;
    const Service O = Service::kOtherdevices;
    const std::string empty = "\"\"";
    static const std::vector<Fault> faults = {
        {0, "SetApPressureCalibrationExtern", S, "setApPressureCalibrationExtern", "-1", {}},
        {1, "IsTpPressureSupported", T, "isTpPressureSupported", "false", {}},
        {2, "GetTpPressureStatus", T, "getTpPressureStatus", "-1", {}},
        {3, "GetTpPressureVerifyResult", T, "getTpPressureVerifyResult", "-1", {}},
        {4, "ControlTpPressureCalibMode", T, "controlTpPressureCalibMode0", "false", {}},
        {5, "SetTpPressureCalibration", T, "setTpPressureCalibration1", "false", {}},
        {6, "SetTpPressureVerification", T, "setTpPressureVerification0", "false", {}},
        {7, "GetTpPressureWaitingTime", T, "getTpPressureWaitingTime", "-1", {}},
        {8, "CheckTpPressureCalibPosition", T, "checkTpPressureCalibPosition", "-1", {}},
        {9, "IsFactoryVersion", F, "isFactoryVersion", "false", {}},
        {10, "GetManufactureFileName", F, "getManufactureFileName", empty, empty},
        {11, "ReleaseFactoryHidlResource", F, "releaseFactoryHidlResource", "-1", {}},
        {12, "SetMmiTestResult", F, "setMmiTestResult", "-1", {}},
        {13, "GetCapacitanceTestResult", T, "getCapacitanceTestResult", "-1", "-1"},
        {14, "GetTouchkeyCapacitanceTestResult", O, "getTouchkeyCapacitanceTestResult", "-1", "-1"},
        {15, "GetTouchKeySupportState", O, "getTouchKeySupportState", "-1", {}},
        {16, "GetCapacitanceCalibrateResult", T, "getCapacitanceCalibrateResult",
         "\"Capacitance Calibrate Failed\"", "\"Capacitance Calibrate Failed\""},
        {17, "GetSensorCalibrateDelayTime", S, "getSensorCalibrateDelayTime", "-1", {}},
        {18, "GetSensorSelfTestDelayTime", S, "getSensorSelfTestDelayTime", "-1", {}},
        {19, "StartSensorCalibrate", S, "startSensorCalibrate", "-1", {}},
        {20, "StartSensorSelfTest", S, "startSensorSelfTest", "-1", {}},
        {21, "GetSensorCalibrateResult", S, "getSensorCalibrateResult", "-1", {}},
        {22, "GetSensorSelfTestResult", S, "getSensorSelfTestResult", "-1", {}},
        {23, "SetLightBrightness", L, "setLightBrightness", "-1", {}},
        {24, "GetBsn", F, "getFactoryInfo", empty, empty},
        {25, "GetPowerState", P, "getPowerState", empty, empty},
        {26, "GetSensorCalibrateType", S, "getSensorCalibrateType", empty, empty},
        {27, "SendBigDataOperation", F, "sendBigDataOperation", "-1", {}},
        {28, "SendBigDataValue", F, "sendBigDataValue", "-1", {}},
        {29, "CheckUsbSpeed", P, "checkUsbSpeed", "-1", "-1"},
        {30, "GetMmiAutoStartFlag", F, "getFactoryInfo", empty, "\"Error\""},
        {31, "SetMMIAutoStartFlag", F, "setFactoryInfo", "-1", {}},
        {32, "GetCompassRawValueLimit", S, "getCompassRawValueLimit", "-1", {}},
        {33, "GetManufactureStationFlag", F, "getManufactureStationFlag", empty, empty},
        {34, "SetTestCycle", F, "writeOeminfo", "-1", {}},
        {35, "GetManufactureMode", F, "getManufactureMode", "-1", {}},
        {36, "SetPsExternalIrMode", S, "setPsExternalIrMode", "-1", {}},
        {37, "SetPowerState", P, "setPowerState", "-1", {}},
        {38, "GetMmiDeviceFeaturesCheckResult", F, "getMmiDeviceFeaturesCheckResult", "-1", {}},
        {39, "GetOeminfo", F, "readOeminfo", empty, empty},
        {40, "SensorActivate", S, "sensorActivate", "false", {}},
        {41, "GetFlickerFrequency", S, "getFlickerRawData", "-1", "-1"},
        {42, "HandleSensorParameter", S, "handleSensorParameter", empty, empty},
        // Without an answer the 64 values stay as the new Java array holds them.
        {43, "HandleAmbientLightParameter", S, "handleSensorParameter", "null",
         "[" +
             [] {
                 std::string zeros = "0";
                 for (int i = 1; i < 64; ++i) zeros += ", 0";
                 return zeros;
             }() +
             "]"},
        {44, "SetTouchScreenFeatureConfig", T, "setTouchScreenFeatureConfig", "-1", {}},
        {45, "GetScreenFpsConfig", D, "getDisplayFpsConfig", "\"FAILED:getDisplayFpsConfig\"",
         "\"FAILED:getDisplayFpsConfig\""},
        {46, "SetScreenFps", D, "setDisplayFps", "false", {}},
        {47, "GetVerifySignatureResult", F, "setFactoryInfo", "-1", {}},
        {48, "SetZqCardTestMode", F, "setFactoryInfo", "-1", {}},
        {49, "GetZqCardTestResult", F, "getFactoryInfo", empty, empty},
        {50, "GetRotateCrownTestResult", T, "getRotateCrownTestResult", empty, "\"error\""},
        {51, "ExecuteHighTemperInterceptCmd", F, "executeHighTemperInterceptCmd", "-1", "-1"},
    };
    return faults;
}

class Faults : public testing::Test {
  protected:
    void SetUp() override { HealthyDevice(); }

    static void Program(const Fault& f, const char* answer) {
        std::string error;
        ASSERT_TRUE(kxtest::Device().Program(f.service, f.operation, answer, &error)) << error;
    }
    // One call of the native on connections made afresh, with its lines and the operations it
    // reached.
    static std::string CallFresh(const Fault& f, std::vector<kxtest::LogLine>* lines,
                                 std::vector<std::string>* operations) {
        Reconnect();
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
        std::string answer = CallNative(f.index);
        *lines = kxtest::TakeLogs();
        operations->clear();
        for (const simdevice::Call& c : kxtest::Device().TakeCalls()) {
            operations->push_back(c.operation);
        }
        return answer;
    }
};

TEST_F(Faults, TableCoversEveryNativeOnce) {
    ASSERT_EQ(FaultTable().size(), static_cast<size_t>(kMethods));
    for (int i = 0; i < kMethods; ++i) EXPECT_EQ(FaultTable()[i].index, i);
}

TEST_F(Faults, TransportFailureMidCallAnswersTheFailureValueWithOneErrorLine) {
    for (const Fault& f : FaultTable()) {
        SCOPED_TRACE(f.function);
        std::vector<kxtest::LogLine> lines;
        std::vector<std::string> operations;
        const std::string healthy = CallFresh(f, &lines, &operations);
        ASSERT_NE(healthy, f.transportError) << "the fault would not show";

        Program(f, "transport-error");
        EXPECT_EQ(CallFresh(f, &lines, &operations), f.transportError);
        // The call did reach the service: the failure came from the middle of it.
        EXPECT_EQ(operations, std::vector<std::string>{f.operation});
        EXPECT_EQ(LinesAt(lines, kError),
                  std::vector<std::string>{Tagged(
                      std::string(f.function) +
                      " fail, transport error: Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT'")});

        kxtest::Device().ResetAnswers();
        EXPECT_EQ(CallFresh(f, &lines, &operations), healthy) << "after the fault";
    }
}

TEST_F(Faults, ServiceThatNeverCallsBackLeavesThePresets) {
    int callbacks = 0;
    for (const Fault& f : FaultTable()) {
        if (!f.noCallback) continue;
        SCOPED_TRACE(f.function);
        ++callbacks;
        std::vector<kxtest::LogLine> lines;
        std::vector<std::string> operations;
        const std::string healthy = CallFresh(f, &lines, &operations);

        Program(f, "nocallback");
        EXPECT_EQ(CallFresh(f, &lines, &operations), *f.noCallback);
        EXPECT_EQ(operations, std::vector<std::string>{f.operation});
        for (const std::string& line : LinesAt(lines, kError)) {
            EXPECT_EQ(line.find("transport"), std::string::npos) << line;
        }

        kxtest::Device().ResetAnswers();
        EXPECT_EQ(CallFresh(f, &lines, &operations), healthy) << "after the fault";
    }
    EXPECT_EQ(callbacks, 18);  // every native whose operation answers through a callback
}

// Every service dead while its death report still waits on the transport thread: the natives
// still hold their handles and meet dead proxies. The display's natives cannot tell a dead service
// from one without version 1.1 (the cast answers empty either way) and give that answer; the
// others give their failure values.
TEST_F(Faults, DeadServiceWhoseDeathIsNotYetReportedAnswersTheFailureValue) {
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    ::android::hardware::details::postToTransport([released] { released.wait(); });
    for (Service s : simdevice::kAllServices) ASSERT_TRUE(kxtest::Device().Kill(s));
    kxtest::TakeLogs();

    for (const Fault& f : FaultTable()) {
        SCOPED_TRACE(f.function);
        std::string expected = f.index == 45 ? "\"0\"" : f.index == 46 ? "true" : f.transportError;
        EXPECT_EQ(CallNative(f.index), expected);
        std::vector<std::string> errors = LinesAt(kxtest::TakeLogs(), kError);
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_NE(errors[0].find(f.function), std::string::npos) << errors[0];
        EXPECT_TRUE(errors[0].find("transport error") != std::string::npos ||
                    errors[0].find(" is null") != std::string::npos)
            << errors[0];
    }
    EXPECT_TRUE(kxtest::Device().TakeCalls().empty());

    release.set_value();
    ReviveAll();
    for (const Fault& f : FaultTable()) {
        EXPECT_NE(CallNative(f.index), f.transportError) << f.function << " after the revival";
    }
}

}  // namespace
}  // namespace reliability
