// With every service gone, each of the 52 natives answers its failure value and writes exactly
// its own lines, without touching a service or raising a Java exception.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "jvm_harness.h"

namespace {

using kxtest::CallBool;
using kxtest::CallInt;
using kxtest::CallIntArray;
using kxtest::CallLong;
using kxtest::CallString;
using kxtest::JStr;
using kxtest::LogLine;

constexpr int D = 3;
constexpr int E = 6;

std::string Quote(const std::optional<std::string>& s) { return s ? "\"" + *s + "\"" : "null"; }

struct Case {
    const char* method;
    std::function<std::string()> call;
    std::string result;
    std::vector<LogLine> lines;
};

std::string Null(const char* function, const char* handle) {
    return std::string("KxMMITest_jni: ") + function + " fail, " + handle + " is null";
}

#define INT(m, sig, ...) [] { return std::to_string(CallInt(m, sig, ##__VA_ARGS__)); }
#define LONG(m, sig, ...) [] { return std::to_string(CallLong(m, sig, ##__VA_ARGS__)); }
#define BOOL(m, sig, ...) \
    [] { return std::string(CallBool(m, sig, ##__VA_ARGS__) ? "true" : "false"); }
#define STR(m, sig, ...) [] { return Quote(CallString(m, sig, ##__VA_ARGS__)); }

std::vector<Case> Cases() {
    const char* F = "g_kxFactoryInterface";
    const char* T = "g_kxTouchScreen";
    const char* S = "g_kxSensors";
    return {
        {"setApPressureCalibExternNative",
         INT("setApPressureCalibExternNative", "(II[I)I", 1, 2, kxtest::JInts({1, 2})),
         "-1",
         {{E, Null("SetApPressureCalibrationExtern", S)}}},
        {"isTpPressureSupportNative",
         BOOL("isTpPressureSupportNative", "()Z"),
         "false",
         {{E, "KxMMITest_jni: IsTpPressureSupported false, g_kxTouchScreen is null"}}},
        {"getTpPressureStatusNative",
         INT("getTpPressureStatusNative", "()I"),
         "-1",
         {{E, Null("GetTpPressureStatus", T)}}},
        {"getTpPressureVerifyResultNative",
         INT("getTpPressureVerifyResultNative", "(I)I", 1),
         "-1",
         {{E, Null("GetTpPressureVerifyResult", T)}}},
        {"controlTpPressureCalibModeNative",
         BOOL("controlTpPressureCalibModeNative", "(I)Z", 0),
         "false",
         {{E, Null("ControlTpPressureCalibMode", T)}}},
        {"setTpPressureCalibrationNative",
         BOOL("setTpPressureCalibrationNative", "(II)Z", 0, 1),
         "false",
         {{E, Null("SetTpPressureCalibration", T)}}},
        {"setTpPressureVerificationNative",
         BOOL("setTpPressureVerificationNative", "(II)Z", 0, 1),
         "false",
         {{E, Null("SetTpPressureVerification", T)}}},
        {"getTpPressureWaitingTimeNative",
         LONG("getTpPressureWaitingTimeNative", "()J"),
         "-1",
         {{E, Null("GetTpPressureWaitingTime", T)}}},
        {"checkTpPressureCalibPositionNative",
         INT("checkTpPressureCalibPositionNative", "(III)I", 1, 2, 3),
         "-1",
         {{E, Null("CheckTpPressureCalibPosition", T)}}},
        {"isFactoryVersionNative",
         BOOL("isFactoryVersionNative", "()Z"),
         "false",
         {{E, "KxMMITest_jni: IsFactoryVersion failse, g_kxFactoryInterface is null"}}},
        {"getManufactureFileNameNative",
         STR("getManufactureFileNameNative", "()Ljava/lang/String;"),
         "\"\"",
         {{E, Null("GetManufactureFileName", F)}}},
        {"releaseFactoryHidlResourceNative",
         INT("releaseFactoryHidlResourceNative", "()I"),
         "-1",
         {{E, Null("ReleaseFactoryHidlResource", F)}}},
        {"setMmiResultNative",
         INT("setMmiResultNative", "(II)I", 1, 2),
         "-1",
         {{E, Null("SetMmiTestResult", F)}}},
        {"getCapacitanceTestResultNative",
         INT("getCapacitanceTestResultNative", "()I"),
         "-1",
         {{E, Null("GetCapacitanceTestResult", T)}}},
        {"getTouchKeyCapacitanceTestResultNative",
         INT("getTouchKeyCapacitanceTestResultNative", "()I"),
         "-1",
         {{E, Null("GetTouchkeyCapacitanceTestResult", "g_kxOtherdevices")}}},
        {"getTouchKeySupportFlagNative",
         INT("getTouchKeySupportFlagNative", "()I"),
         "-1",
         {{E, "KxMMITest_jni: GetTouchKeySupportState invalid, g_kxOtherdevices is null"}}},
        {"getCapacitanceCalibrateResultNative",
         STR("getCapacitanceCalibrateResultNative", "(I)Ljava/lang/String;", 1),
         "\"Capacitance Calibrate Failed\"",
         {{E, Null("GetCapacitanceCalibrateResult", T)}}},
        {"getSensorCalibrateDelayTimeNative",
         INT("getSensorCalibrateDelayTimeNative", "(I)I", 1),
         "-1",
         {{E, Null("GetSensorCalibrateDelayTime", S)}}},
        {"getSensorSelfTestDelayTimeNative",
         INT("getSensorSelfTestDelayTimeNative", "(I)I", 1),
         "-1",
         {{E, Null("GetSensorSelfTestDelayTime", S)}}},
        {"startSensorCalibrateNative",
         INT("startSensorCalibrateNative", "(II)I", 1, 2),
         "-1",
         {{E, Null("StartSensorCalibrate", S)}}},
        {"startSensorSelfTestNative",
         INT("startSensorSelfTestNative", "(II)I", 1, 2),
         "-1",
         {{E, Null("StartSensorSelfTest", S)}}},
        {"getSensorCalibrateResultNative",
         INT("getSensorCalibrateResultNative", "(I)I", 1),
         "-1",
         {{E, Null("GetSensorCalibrateResult", S)}}},
        {"getSensorSelfTestResultNative",
         INT("getSensorSelfTestResultNative", "(I)I", 1),
         "-1",
         {{E, Null("GetSensorSelfTestResult", S)}}},
        {"setLightBrightnessNative",
         INT("setLightBrightnessNative", "(II)I", 1, 2),
         "-1",
         {{E, Null("SetLightBrightness", "g_kxLight")}}},
        {"getBsnNative",
         STR("getBsnNative", "()Ljava/lang/String;"),
         "\"\"",
         {{E, Null("GetBsn", F)}}},
        {"getPowerStateNative",
         STR("getPowerStateNative", "(Ljava/lang/String;)Ljava/lang/String;", JStr("battery")),
         "\"\"",
         {{E, Null("GetPowerState", "g_kxPower")}}},
        {"getSensorCalibrateTypeNative",
         STR("getSensorCalibrateTypeNative", "(I)Ljava/lang/String;", 1),
         "\"\"",
         {{E, Null("GetSensorCalibrateType", S)}}},
        {"sendBigDataOperationNative",
         INT("sendBigDataOperationNative", "(Lcom/tavrin/mmitest/model/BigDataOperation;)I",
             kxtest::NewModel("BigDataOperation")),
         "-1",
         {{E, "KxMMITest_jni: SendBigDataOperation fail, env or g_kxFactoryInterface is null"}}},
        {"sendBigDataValueNative",
         INT("sendBigDataValueNative", "(Lcom/tavrin/mmitest/model/BigDataValue;)I",
             kxtest::NewModel("BigDataValue")),
         "-1",
         {{E, "KxMMITest_jni: SendBigDataValue fail, env or g_kxFactoryInterface is null"}}},
        {"checkUsbSpeedNative",
         INT("checkUsbSpeedNative", "(Ljava/lang/String;)I", JStr("usb")),
         "-1",
         {{E, Null("CheckUsbSpeed", "g_kxPower")}}},
        {"getMmiAutoStartFlagNative",
         STR("getMmiAutoStartFlagNative", "()Ljava/lang/String;"),
         "\"\"",
         {{E, Null("GetMmiAutoStartFlag", F)}}},
        {"disableMmiAutoStartNative",
         INT("disableMmiAutoStartNative", "(Ljava/lang/String;)I", JStr("0")),
         "-1",
         {{E, Null("SetMMIAutoStartFlag", F)}}},
        {"getCompassRawValueLimitNative",
         INT("getCompassRawValueLimitNative", "()I"),
         "-1",
         {{E, Null("GetCompassRawValueLimit", S)}}},
        {"getManufactureStationFlagNative",
         STR("getManufactureStationFlagNative", "(I)Ljava/lang/String;", 3),
         "\"\"",
         {{E, Null("GetManufactureStationFlag", F)}}},
        {"setTestCycleNative",
         INT("setTestCycleNative", "(II)I", 7, 3),
         "-1",
         {{D, "KxMMITest_jni: SetTestCycle, stationID: 7, cycle: 3"},
          {E, Null("SetTestCycle", "kxFactoryNew")}}},
        {"getManufactureModeNative",
         INT("getManufactureModeNative", "()I"),
         "-1",
         {{E, "KxMMITest_jni: GetManufactureMode, kxFactoryNew is null"}}},
        {"setProximitySensorExternalIrModeNative",
         INT("setProximitySensorExternalIrModeNative", "(I)I", 1),
         "-1",
         {{E, Null("SetPsExternalIrMode", S)}}},
        {"setPowerStateNative",
         INT("setPowerStateNative", "(Ljava/lang/String;Ljava/lang/String;)I", JStr("scene"),
             JStr("p")),
         "-1",
         {{E, Null("SetPowerState", "g_kxPower")}}},
        {"getMmiDeviceFeaturesCheckResultNative",
         INT("getMmiDeviceFeaturesCheckResultNative", "(I)I", 1),
         "-1",
         {{E, Null("GetMmiDeviceFeaturesCheckResult", F)}}},
        {"getOeminfoNative",
         STR("getOeminfoNative", "(III)Ljava/lang/String;", 1, 2, 3),
         "\"\"",
         {{E, Null("GetOeminfo", "kxFactoryNew")}}},
        {"sensorActivateNative",
         BOOL("sensorActivateNative", "(IZI)Z", 5, JNI_TRUE, 200),
         "false",
         {{E, Null("SensorActivate", S)}}},
        {"getFlickerFrequencyNative",
         INT("getFlickerFrequencyNative", "(I)I", 1),
         "-1",
         {{E, Null("GetFlickerFrequency", S)}}},
        {"handleSensorParameterNative",
         STR("handleSensorParameterNative", "(IIII)Ljava/lang/String;", 1, 2, 3, 4),
         "\"\"",
         {{E, Null("HandleSensorParameter", "sensorNewVer")}}},
        {"handleAmbientLightParameterNative",
         [] {
             return std::string(
                 CallIntArray("handleAmbientLightParameterNative", "(IIII)[I", 1, 2, 3, 4)
                     ? "array"
                     : "null");
         },
         "null",
         {{E, Null("HandleAmbientLightParameter", "sensorNewVer")}}},
        {"setTouchScreenFeatureConfigNative",
         INT("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 1, JStr("cfg")),
         "-1",
         {{E, Null("SetTouchScreenFeatureConfig", T)}}},
        {"getScreenFpsConfigNative",
         STR("getScreenFpsConfigNative", "()Ljava/lang/String;"),
         "\"FAILED:getDisplayFpsConfig\"",
         {{E, Null("GetScreenFpsConfig", "g_kxDisplay")}}},
        {"setScreenFpsNative",
         BOOL("setScreenFpsNative", "(I)Z", 2),
         "false",
         {{E, Null("SetScreenFps", "g_kxDisplay")}}},
        {"getVerifySignatureResultNative",
         INT("getVerifySignatureResultNative", "([B)I", kxtest::JBytes({1, 2})),
         "-1",
         {{E, Null("GetVerifySignatureResult", F)}}},
        {"setMockCardTestModeNative",
         INT("setMockCardTestModeNative", "(Ljava/lang/String;)I", JStr("1")),
         "-1",
         {{E, Null("SetZqCardTestMode", F)}}},
        {"getMockCardTestResultNative",
         STR("getMockCardTestResultNative", "()Ljava/lang/String;"),
         "\"\"",
         {{E, Null("GetZqCardTestResult", F)}}},
        {"getRotaryCrownSelfTestNative",
         STR("getRotaryCrownSelfTestNative", "()Ljava/lang/String;"),
         "\"\"",
         {{E, Null("GetRotateCrownTestResult", T)}}},
        {"executeHighTemperInterceptCmdNative",
         INT("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I",
             JStr("scene"), JStr("p")),
         "-1",
         {{E, "KxMMITest_jni: ExecuteHighTemperInterceptCmd fail, mIKxFactoryInterface is null"}}},
    };
}

class EmptyHandles : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        kxtest::Manager();
        for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().Kill(s);
        kxtest::WaitIdle();
    }
    static void TearDownTestSuite() {
        for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().Revive(s);
        kxtest::WaitIdle();
    }
    void SetUp() override {
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
    }
};

TEST_F(EmptyHandles, EveryNativeAnswersItsFailureValueWithItsOwnLines) {
    std::vector<Case> cases = Cases();
    ASSERT_EQ(cases.size(), 52u);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.method);
        kxtest::TakeLogs();
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(kxtest::TakeLogs(), c.lines);
    }
    EXPECT_TRUE(kxtest::Device().TakeCalls().empty()) << "a service was reached";
}

}  // namespace
