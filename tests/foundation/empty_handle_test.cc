// With every service gone, each of the 52 natives answers its failure value and writes exactly
// its own lines, without touching a service or raising a Java exception.
#include "device_test.h"

namespace {

using kxtest::JStr;
using kxtest::Lines;

struct Case {
    const char* method;
    kxtest::Native call;
    std::string result;
    Lines lines;
};

template <typename... A>
Case Row(const char* method, const char* signature, const char* result, Lines lines, A... args) {
    return {method, kxtest::Bind(method, signature, args...), result, std::move(lines)};
}

Lines Null(const std::string& function, const std::string& handle) {
    return {kxtest::Line(kxtest::E, function + " fail, " + handle + " is null")};
}
Lines Own(const std::string& text) { return {kxtest::Line(kxtest::E, text)}; }

std::vector<Case> Cases() {
    const char *F = "g_kxFactoryInterface", *T = "g_kxTouchScreen", *S = "g_kxSensors";
    const char *P = "g_kxPower", *V = "kxFactoryNew", *N = "sensorNewVer";
    const char* kStr = "()Ljava/lang/String;";
    return {
        Row("setApPressureCalibExternNative", "(II[I)I", "-1",
            Null("SetApPressureCalibrationExtern", S), 1, 2, kxtest::JInts({1, 2})),
        Row("isTpPressureSupportNative", "()Z", "false",
            Own("IsTpPressureSupported false, g_kxTouchScreen is null")),
        Row("getTpPressureStatusNative", "()I", "-1", Null("GetTpPressureStatus", T)),
        Row("getTpPressureVerifyResultNative", "(I)I", "-1", Null("GetTpPressureVerifyResult", T),
            1),
        Row("controlTpPressureCalibModeNative", "(I)Z", "false",
            Null("ControlTpPressureCalibMode", T), 0),
        Row("setTpPressureCalibrationNative", "(II)Z", "false", Null("SetTpPressureCalibration", T),
            0, 1),
        Row("setTpPressureVerificationNative", "(II)Z", "false",
            Null("SetTpPressureVerification", T), 0, 1),
        Row("getTpPressureWaitingTimeNative", "()J", "-1", Null("GetTpPressureWaitingTime", T)),
        Row("checkTpPressureCalibPositionNative", "(III)I", "-1",
            Null("CheckTpPressureCalibPosition", T), 1, 2, 3),
        Row("isFactoryVersionNative", "()Z", "false",
            Own("IsFactoryVersion failse, g_kxFactoryInterface is null")),
        Row("getManufactureFileNameNative", kStr, "", Null("GetManufactureFileName", F)),
        Row("releaseFactoryHidlResourceNative", "()I", "-1", Null("ReleaseFactoryHidlResource", F)),
        Row("setMmiResultNative", "(II)I", "-1", Null("SetMmiTestResult", F), 1, 2),
        Row("getCapacitanceTestResultNative", "()I", "-1", Null("GetCapacitanceTestResult", T)),
        Row("getTouchKeyCapacitanceTestResultNative", "()I", "-1",
            Null("GetTouchkeyCapacitanceTestResult", "g_kxOtherdevices")),
        Row("getTouchKeySupportFlagNative", "()I", "-1",
            Own("GetTouchKeySupportState invalid, g_kxOtherdevices is null")),
        Row("getCapacitanceCalibrateResultNative", "(I)Ljava/lang/String;",
            "Capacitance Calibrate Failed", Null("GetCapacitanceCalibrateResult", T), 1),
        Row("getSensorCalibrateDelayTimeNative", "(I)I", "-1",
            Null("GetSensorCalibrateDelayTime", S), 1),
        Row("getSensorSelfTestDelayTimeNative", "(I)I", "-1", Null("GetSensorSelfTestDelayTime", S),
            1),
        Row("startSensorCalibrateNative", "(II)I", "-1", Null("StartSensorCalibrate", S), 1, 2),
        Row("startSensorSelfTestNative", "(II)I", "-1", Null("StartSensorSelfTest", S), 1, 2),
        Row("getSensorCalibrateResultNative", "(I)I", "-1", Null("GetSensorCalibrateResult", S), 1),
        Row("getSensorSelfTestResultNative", "(I)I", "-1", Null("GetSensorSelfTestResult", S), 1),
        Row("setLightBrightnessNative", "(II)I", "-1", Null("SetLightBrightness", "g_kxLight"), 1,
            2),
        Row("getBsnNative", kStr, "", Null("GetBsn", F)),
        Row("getPowerStateNative", "(Ljava/lang/String;)Ljava/lang/String;", "",
            Null("GetPowerState", P), JStr("battery")),
        Row("getSensorCalibrateTypeNative", "(I)Ljava/lang/String;", "",
            Null("GetSensorCalibrateType", S), 1),
        Row("sendBigDataOperationNative", "(Lcom/tavrin/mmitest/model/BigDataOperation;)I", "-1",
            Own("SendBigDataOperation fail, env or g_kxFactoryInterface is null"),
            kxtest::NewModel("BigDataOperation")),
        Row("sendBigDataValueNative", "(Lcom/tavrin/mmitest/model/BigDataValue;)I", "-1",
            Own("SendBigDataValue fail, env or g_kxFactoryInterface is null"),
            kxtest::NewModel("BigDataValue")),
        Row("checkUsbSpeedNative", "(Ljava/lang/String;)I", "-1", Null("CheckUsbSpeed", P),
            JStr("usb")),
        Row("getMmiAutoStartFlagNative", kStr, "", Null("GetMmiAutoStartFlag", F)),
        Row("disableMmiAutoStartNative", "(Ljava/lang/String;)I", "-1",
            Null("SetMMIAutoStartFlag", F), JStr("0")),
        Row("getCompassRawValueLimitNative", "()I", "-1", Null("GetCompassRawValueLimit", S)),
        Row("getManufactureStationFlagNative", "(I)Ljava/lang/String;", "",
            Null("GetManufactureStationFlag", F), 3),
        Row("setTestCycleNative", "(II)I", "-1",
            {kxtest::Line(kxtest::D, "SetTestCycle, stationID: 7, cycle: 3"),
             Null("SetTestCycle", V)[0]},
            7, 3),
        Row("getManufactureModeNative", "()I", "-1",
            Own("GetManufactureMode, kxFactoryNew is null")),
        Row("setProximitySensorExternalIrModeNative", "(I)I", "-1", Null("SetPsExternalIrMode", S),
            1),
        Row("setPowerStateNative", "(Ljava/lang/String;Ljava/lang/String;)I", "-1",
            Null("SetPowerState", P), JStr("scene"), JStr("p")),
        Row("getMmiDeviceFeaturesCheckResultNative", "(I)I", "-1",
            Null("GetMmiDeviceFeaturesCheckResult", F), 1),
        Row("getOeminfoNative", "(III)Ljava/lang/String;", "", Null("GetOeminfo", V), 1, 2, 3),
        Row("sensorActivateNative", "(IZI)Z", "false", Null("SensorActivate", S), 5, JNI_TRUE, 200),
        Row("getFlickerFrequencyNative", "(I)I", "-1", Null("GetFlickerFrequency", S), 1),
        Row("handleSensorParameterNative", "(IIII)Ljava/lang/String;", "",
            Null("HandleSensorParameter", N), 1, 2, 3, 4),
        Row("handleAmbientLightParameterNative", "(IIII)[I", "<null>",
            Null("HandleAmbientLightParameter", N), 1, 2, 3, 4),
        Row("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", "-1",
            Null("SetTouchScreenFeatureConfig", T), 1, JStr("cfg")),
        Row("getScreenFpsConfigNative", kStr, "FAILED:getDisplayFpsConfig",
            Null("GetScreenFpsConfig", "g_kxDisplay")),
        Row("setScreenFpsNative", "(I)Z", "false", Null("SetScreenFps", "g_kxDisplay"), 2),
        Row("getVerifySignatureResultNative", "([B)I", "-1", Null("GetVerifySignatureResult", F),
            kxtest::JBytes({1, 2})),
        Row("setMockCardTestModeNative", "(Ljava/lang/String;)I", "-1",
            Null("SetZqCardTestMode", F), JStr("1")),
        Row("getMockCardTestResultNative", kStr, "", Null("GetZqCardTestResult", F)),
        Row("getRotaryCrownSelfTestNative", kStr, "", Null("GetRotateCrownTestResult", T)),
        Row("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I", "-1",
            Own("ExecuteHighTemperInterceptCmd fail, mIKxFactoryInterface is null"), JStr("scene"),
            JStr("p")),
    };
}

TEST(EmptyHandles, EveryNativeAnswersItsFailureValueWithItsOwnLines) {
    kxtest::Manager();
    for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().Kill(s);
    kxtest::WaitIdle();
    kxtest::Device().TakeCalls();
    std::vector<Case> cases = Cases();
    ASSERT_EQ(cases.size(), 52u);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.method);
        kxtest::TakeLogs();
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(kxtest::TakeLogs(), c.lines);
    }
    EXPECT_TRUE(kxtest::Device().TakeCalls().empty()) << "a service was reached";
    for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().Revive(s);
    kxtest::WaitIdle();
}

}  // namespace
