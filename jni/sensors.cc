// Sensor calibration, self-test, activation and queries.
#include <optional>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using ::android::hardware::Return;
using kxmmi::Acquire;
using kxmmi::CodeText;
using kxmmi::ISensors;
using kxmmi::NewJString;
using kxmmi::Service;

namespace {

// One integer operation of the sensor service, on the call's own handle. The answer goes to
// report (the method's result line) and back to the caller; nothing comes back after the
// empty-handle or transport-failure line.
template <typename Report, typename... Params, typename... Args>
std::optional<int32_t> AskSensors(const char* function, Report report,
                                  Return<int32_t> (ISensors::*operation)(Params...), Args... args) {
    sp<ISensors> sensors = Acquire<Service::Sensors>(function);
    if (sensors == nullptr) return std::nullopt;
    std::optional<int32_t> answer = kxmmi::ValueOf(((*sensors).*operation)(args...), function);
    if (answer) report(*answer);
    return answer;
}

}  // namespace

jint GetSensorCalibrateDelayTime(JNIEnv* /*env*/, jobject /*object*/, jint sensorId) {
    auto report = [=](int32_t delayTime) {
        KXLOGD("%s: GetSensorCalibrateDelayTime, sensorId: %d, delayTime: %d", sensorId, delayTime);
    };
    return AskSensors("GetSensorCalibrateDelayTime", report, &ISensors::getSensorCalibrateDelayTime,
                      sensorId)
        .value_or(-1);
}

jint GetSensorSelfTestDelayTime(JNIEnv* /*env*/, jobject /*object*/, jint sensorId) {
    auto report = [=](int32_t delayTime) {
        KXLOGD("%s: GetSensorSelfTestDelayTime, sensorId: %d, delayTime: %d", sensorId, delayTime);
    };
    return AskSensors("GetSensorSelfTestDelayTime", report, &ISensors::getSensorSelfTestDelayTime,
                      sensorId)
        .value_or(-1);
}

jint StartSensorCalibrate(JNIEnv* /*env*/, jobject /*object*/, jint sensorId, jint command) {
    auto report = [=](int32_t result) {
        KXLOGD("%s: StartSensorCalibrate, sensorId: %d, command: %d, result: %d", sensorId, command,
               result);
    };
    return AskSensors("StartSensorCalibrate", report, &ISensors::startSensorCalibrate, sensorId,
                      command)
        .value_or(-1);
}

jint StartSensorSelfTest(JNIEnv* /*env*/, jobject /*object*/, jint sensorId, jint command) {
    auto report = [=](int32_t result) {
        KXLOGD("%s: StartSensorSelfTest, sensorId: %d, command: %d, result: %d", sensorId, command,
               result);
    };
    return AskSensors("StartSensorSelfTest", report, &ISensors::startSensorSelfTest, sensorId,
                      command)
        .value_or(-1);
}

jint GetSensorCalibrateResult(JNIEnv* /*env*/, jobject /*object*/, jint sensorId) {
    auto report = [=](int32_t result) {
        KXLOGD("%s: GetSensorCalibrateResult, sensorId: %d, result: %d\n", sensorId, result);
    };
    return AskSensors("GetSensorCalibrateResult", report, &ISensors::getSensorCalibrateResult,
                      sensorId)
        .value_or(-1);
}

jint GetSensorSelfTestResult(JNIEnv* /*env*/, jobject /*object*/, jint sensorId) {
    auto report = [=](int32_t result) {
        KXLOGD("%s: GetSensorSelfTestResult, sensorId: %d, result: %d", sensorId, result);
    };
    return AskSensors("GetSensorSelfTestResult", report, &ISensors::getSensorSelfTestResult,
                      sensorId)
        .value_or(-1);
}

jstring GetSensorCalibrateType(JNIEnv* env, jobject /*object*/, jint sensorId) {
    sp<ISensors> sensors = Acquire<Service::Sensors>("GetSensorCalibrateType");
    if (sensors == nullptr) return NewJString(env, "GetSensorCalibrateType", "");

    CodeText<int32_t> answer(-1);
    // 1024 is the fixed flag the service expects with this query.
    if (!kxmmi::TransportOk(sensors->getSensorCalibrateType(sensorId, 1024, answer.Receiver()),
                            "GetSensorCalibrateType")) {
        return NewJString(env, "GetSensorCalibrateType", "");
    }
    KXLOGD("%s: GetSensorCalibrateType, resultCode: %d, calibType: %s", answer.code,
           answer.text.c_str());
    return NewJString(env, "GetSensorCalibrateType", answer.text);
}

jint GetCompassRawValueLimit(JNIEnv* /*env*/, jobject /*object*/) {
    auto report = [](int32_t result) { KXLOGD("%s: GetCompassRawValueLimit, result: %d", result); };
    return AskSensors("GetCompassRawValueLimit", report, &ISensors::getCompassRawValueLimit)
        .value_or(-1);
}

jint SetPsExternalIrMode(JNIEnv* /*env*/, jobject /*object*/, jint mode) {
    auto report = [](int32_t result) { KXLOGD("%s: SetPsExternalIrMode, result: %d", result); };
    return AskSensors("SetPsExternalIrMode", report, &ISensors::setPsExternalIrMode, mode)
        .value_or(-1);
}

jboolean SensorActivate(JNIEnv* /*env*/, jobject /*object*/, jint sensorType, jboolean enable,
                        jint samplingRate) {
    // The log shows the Java values: the boolean's byte and the 32-bit rate.
    auto report = [=](int32_t activeResult) {
        KXLOGD("%s: SensorActivate, sensorType: %d, switch: %d, samplingRate: %d, activeResult: %d",
               sensorType, enable, samplingRate, activeResult);
    };
    // The rate keeps its sign when widened: -1 reaches the service as -1.
    std::optional<int32_t> activeResult =
        AskSensors("SensorActivate", report, &ISensors::sensorActivate, sensorType,
                   enable != JNI_FALSE, static_cast<int64_t>(samplingRate));
    return activeResult == 0 ? JNI_TRUE : JNI_FALSE;
}
