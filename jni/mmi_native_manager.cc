// Library entry: connects the vendor services and binds MmiNativeManager's native methods.
#include <jni.h>

#include "mmi_log.h"
#include "native_methods.h"
#include "service_registry.h"

namespace {

constexpr const char* kClassName = "com/tavrin/mmitest/controller/MmiNativeManager";

#define NATIVE(javaName, signature, function) \
    { const_cast<char*>(javaName), const_cast<char*>(signature), reinterpret_cast<void*>(function) }

const JNINativeMethod kMethods[] = {
    NATIVE("setApPressureCalibExternNative", "(II[I)I", SetApPressureCalibrationExtern),
    NATIVE("isTpPressureSupportNative", "()Z", IsTpPressureSupported),
    NATIVE("getTpPressureStatusNative", "()I", GetTpPressureStatus),
    NATIVE("getTpPressureVerifyResultNative", "(I)I", GetTpPressureVerifyResult),
    NATIVE("controlTpPressureCalibModeNative", "(I)Z", ControlTpPressureCalibMode),
    NATIVE("setTpPressureCalibrationNative", "(II)Z", SetTpPressureCalibration),
    NATIVE("setTpPressureVerificationNative", "(II)Z", SetTpPressureVerification),
    NATIVE("getTpPressureWaitingTimeNative", "()J", GetTpPressureWaitingTime),
    NATIVE("checkTpPressureCalibPositionNative", "(III)I", CheckTpPressureCalibPosition),
    NATIVE("isFactoryVersionNative", "()Z", IsFactoryVersion),
    NATIVE("getManufactureFileNameNative", "()Ljava/lang/String;", GetManufactureFileName),
    NATIVE("releaseFactoryHidlResourceNative", "()I", ReleaseFactoryHidlResource),
    NATIVE("setMmiResultNative", "(II)I", SetMmiTestResult),
    NATIVE("getCapacitanceTestResultNative", "()I", GetCapacitanceTestResult),
    NATIVE("getTouchKeyCapacitanceTestResultNative", "()I", GetTouchkeyCapacitanceTestResult),
    NATIVE("getTouchKeySupportFlagNative", "()I", GetTouchKeySupportState),
    NATIVE("getCapacitanceCalibrateResultNative", "(I)Ljava/lang/String;",
           GetCapacitanceCalibrateResult),
    NATIVE("getSensorCalibrateDelayTimeNative", "(I)I", GetSensorCalibrateDelayTime),
    NATIVE("getSensorSelfTestDelayTimeNative", "(I)I", GetSensorSelfTestDelayTime),
    NATIVE("startSensorCalibrateNative", "(II)I", StartSensorCalibrate),
    NATIVE("startSensorSelfTestNative", "(II)I", StartSensorSelfTest),
    NATIVE("getSensorCalibrateResultNative", "(I)I", GetSensorCalibrateResult),
    NATIVE("getSensorSelfTestResultNative", "(I)I", GetSensorSelfTestResult),
    NATIVE("setLightBrightnessNative", "(II)I", SetLightBrightness),
    NATIVE("getBsnNative", "()Ljava/lang/String;", GetBsn),
    NATIVE("getPowerStateNative", "(Ljava/lang/String;)Ljava/lang/String;", GetPowerState),
    NATIVE("getSensorCalibrateTypeNative", "(I)Ljava/lang/String;", GetSensorCalibrateType),
    NATIVE("sendBigDataOperationNative", "(Lcom/tavrin/mmitest/model/BigDataOperation;)I",
           SendBigDataOperation),
    NATIVE("sendBigDataValueNative", "(Lcom/tavrin/mmitest/model/BigDataValue;)I",
           SendBigDataValue),
    NATIVE("checkUsbSpeedNative", "(Ljava/lang/String;)I", CheckUsbSpeed),
    NATIVE("getMmiAutoStartFlagNative", "()Ljava/lang/String;", GetMmiAutoStartFlag),
    NATIVE("disableMmiAutoStartNative", "(Ljava/lang/String;)I", SetMMIAutoStartFlag),
    NATIVE("getCompassRawValueLimitNative", "()I", GetCompassRawValueLimit),
    NATIVE("getManufactureStationFlagNative", "(I)Ljava/lang/String;", GetManufactureStationFlag),
    NATIVE("setTestCycleNative", "(II)I", SetTestCycle),
    NATIVE("getManufactureModeNative", "()I", GetManufactureMode),
    NATIVE("setProximitySensorExternalIrModeNative", "(I)I", SetPsExternalIrMode),
    NATIVE("setPowerStateNative", "(Ljava/lang/String;Ljava/lang/String;)I", SetPowerState),
    NATIVE("getMmiDeviceFeaturesCheckResultNative", "(I)I", GetMmiDeviceFeaturesCheckResult),
    NATIVE("getOeminfoNative", "(III)Ljava/lang/String;", GetOeminfo),
    NATIVE("sensorActivateNative", "(IZI)Z", SensorActivate),
    NATIVE("getFlickerFrequencyNative", "(I)I", GetFlickerFrequency),
    NATIVE("handleSensorParameterNative", "(IIII)Ljava/lang/String;", HandleSensorParameter),
    NATIVE("handleAmbientLightParameterNative", "(IIII)[I", HandleAmbientLightParameter),
    NATIVE("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I",
           SetTouchScreenFeatureConfig),
    NATIVE("getScreenFpsConfigNative", "()Ljava/lang/String;", GetScreenFpsConfig),
    NATIVE("setScreenFpsNative", "(I)Z", SetScreenFps),
    NATIVE("getVerifySignatureResultNative", "([B)I", GetVerifySignatureResult),
    NATIVE("setMockCardTestModeNative", "(Ljava/lang/String;)I", SetZqCardTestMode),
    NATIVE("getMockCardTestResultNative", "()Ljava/lang/String;", GetZqCardTestResult),
    NATIVE("getRotaryCrownSelfTestNative", "()Ljava/lang/String;", GetRotateCrownTestResult),
    NATIVE("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I",
           ExecuteHighTemperInterceptCmd),
};
#undef NATIVE
static_assert(sizeof(kMethods) / sizeof(kMethods[0]) == 52, "MmiNativeManager has 52 natives");

bool RegisterNativeMethods(JNIEnv* env) {
    if (env == nullptr) {
        KXLOGE("%s: RegisterNativeMethods fail, env is null");
        return false;
    }
    jclass clazz = env->FindClass(kClassName);
    if (clazz == nullptr) {
        KXLOGE("%s: RegisterNativeMethods fail, class not found");
        return false;
    }
    if (env->RegisterNatives(clazz, kMethods, sizeof(kMethods) / sizeof(kMethods[0])) < 0) {
        // "cont not" as written: the text is part of the interface (log readers match it), keep it.
        KXLOGE("%s: RegisterNativeMethods fail, cont not register all the methods");
        return false;
    }
    return true;
}

}  // namespace

extern "C" JNIEXPORT jint JNI_OnLoad(JavaVM* vm, void* /*reserved*/) {
    if (vm == nullptr) {
        KXLOGD("%s: JNI_OnLoad fail, vm is null");
        return -1;
    }
    g_hidlUtil = new HidlUtil(ProcessServiceDied, ReinitHal);
    KXLOGD("%s: registerForNotifications");
    kxmmi::WatchServices();
    InitMmiNativeManager();

    JNIEnv* env = nullptr;
    if (vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_4) != JNI_OK) {
        KXLOGE("%s: JNI_OnLoad fail, GetEnv error");
        return -1;
    }
    if (!RegisterNativeMethods(env)) {
        KXLOGE("%s: JNI_OnLoad fail, registerNatives failed");
        return -1;
    }
    return JNI_VERSION_1_4;
}

extern "C" JNIEXPORT void JNI_OnUnload(JavaVM* /*vm*/, void* /*reserved*/) {
    ExitMmiNativeManager();
}
