// Sensor calibration, self-test, activation and queries.
#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;

jint GetSensorCalibrateDelayTime(JNIEnv* env, jobject /*object*/, jint sensorId) {
    (void)env;
    (void)sensorId;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("GetSensorCalibrateDelayTime");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetSensorCalibrateDelayTime fail, not wired to its service yet");
    return -1;
}

jint GetSensorSelfTestDelayTime(JNIEnv* env, jobject /*object*/, jint sensorId) {
    (void)env;
    (void)sensorId;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("GetSensorSelfTestDelayTime");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetSensorSelfTestDelayTime fail, not wired to its service yet");
    return -1;
}

jint StartSensorCalibrate(JNIEnv* env, jobject /*object*/, jint sensorId, jint command) {
    (void)env;
    (void)sensorId;
    (void)command;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("StartSensorCalibrate");
    if (handle == nullptr) return -1;
    KXLOGE("%s: StartSensorCalibrate fail, not wired to its service yet");
    return -1;
}

jint StartSensorSelfTest(JNIEnv* env, jobject /*object*/, jint sensorId, jint command) {
    (void)env;
    (void)sensorId;
    (void)command;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("StartSensorSelfTest");
    if (handle == nullptr) return -1;
    KXLOGE("%s: StartSensorSelfTest fail, not wired to its service yet");
    return -1;
}

jint GetSensorCalibrateResult(JNIEnv* env, jobject /*object*/, jint sensorId) {
    (void)env;
    (void)sensorId;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("GetSensorCalibrateResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetSensorCalibrateResult fail, not wired to its service yet");
    return -1;
}

jint GetSensorSelfTestResult(JNIEnv* env, jobject /*object*/, jint sensorId) {
    (void)env;
    (void)sensorId;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("GetSensorSelfTestResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetSensorSelfTestResult fail, not wired to its service yet");
    return -1;
}

jstring GetSensorCalibrateType(JNIEnv* env, jobject /*object*/, jint sensorId) {
    (void)env;
    (void)sensorId;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("GetSensorCalibrateType");
    if (handle == nullptr) return NewJString(env, "");
    KXLOGE("%s: GetSensorCalibrateType fail, not wired to its service yet");
    return NewJString(env, "");
}

jint GetCompassRawValueLimit(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("GetCompassRawValueLimit");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetCompassRawValueLimit fail, not wired to its service yet");
    return -1;
}

jint SetPsExternalIrMode(JNIEnv* env, jobject /*object*/, jint mode) {
    (void)env;
    (void)mode;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("SetPsExternalIrMode");
    if (handle == nullptr) return -1;
    KXLOGE("%s: SetPsExternalIrMode fail, not wired to its service yet");
    return -1;
}

jboolean SensorActivate(JNIEnv* env, jobject /*object*/, jint sensorType, jboolean enable,
                        jint samplingRate) {
    (void)env;
    (void)sensorType;
    (void)enable;
    (void)samplingRate;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("SensorActivate");
    if (handle == nullptr) return JNI_FALSE;
    KXLOGE("%s: SensorActivate fail, not wired to its service yet");
    return JNI_FALSE;
}
