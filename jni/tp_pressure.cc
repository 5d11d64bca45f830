// Touch-panel pressure calibration and verification.
#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;

jint SetApPressureCalibrationExtern(JNIEnv* env, jobject /*object*/, jint sensorId, jint testCtrl,
                                    jintArray rawData) {
    (void)env;
    (void)sensorId;
    (void)testCtrl;
    (void)rawData;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("SetApPressureCalibrationExtern");
    if (handle == nullptr) return -1;
    KXLOGE("%s: SetApPressureCalibrationExtern fail, not wired to its service yet");
    return -1;
}

jboolean IsTpPressureSupported(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        kxmmi::Handle<Service::TouchScreen>();
    if (handle == nullptr) {
        KXLOGE("%s: IsTpPressureSupported false, g_kxTouchScreen is null");
        return JNI_FALSE;
    }
    KXLOGE("%s: IsTpPressureSupported fail, not wired to its service yet");
    return JNI_FALSE;
}

jint GetTpPressureStatus(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("GetTpPressureStatus");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetTpPressureStatus fail, not wired to its service yet");
    return -1;
}

jint GetTpPressureVerifyResult(JNIEnv* env, jobject /*object*/, jint value) {
    (void)env;
    (void)value;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("GetTpPressureVerifyResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetTpPressureVerifyResult fail, not wired to its service yet");
    return -1;
}

jboolean ControlTpPressureCalibMode(JNIEnv* env, jobject /*object*/, jint type) {
    (void)env;
    (void)type;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("ControlTpPressureCalibMode");
    if (handle == nullptr) return JNI_FALSE;
    KXLOGE("%s: ControlTpPressureCalibMode fail, not wired to its service yet");
    return JNI_FALSE;
}

jboolean SetTpPressureCalibration(JNIEnv* env, jobject /*object*/, jint type, jint index) {
    (void)env;
    (void)type;
    (void)index;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("SetTpPressureCalibration");
    if (handle == nullptr) return JNI_FALSE;
    KXLOGE("%s: SetTpPressureCalibration fail, not wired to its service yet");
    return JNI_FALSE;
}

jboolean SetTpPressureVerification(JNIEnv* env, jobject /*object*/, jint type, jint index) {
    (void)env;
    (void)type;
    (void)index;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("SetTpPressureVerification");
    if (handle == nullptr) return JNI_FALSE;
    KXLOGE("%s: SetTpPressureVerification fail, not wired to its service yet");
    return JNI_FALSE;
}

jlong GetTpPressureWaitingTime(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("GetTpPressureWaitingTime");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetTpPressureWaitingTime fail, not wired to its service yet");
    return -1;
}

jint CheckTpPressureCalibPosition(JNIEnv* env, jobject /*object*/, jint x, jint y, jint z) {
    (void)env;
    (void)x;
    (void)y;
    (void)z;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("CheckTpPressureCalibPosition");
    if (handle == nullptr) return -1;
    KXLOGE("%s: CheckTpPressureCalibPosition fail, not wired to its service yet");
    return -1;
}
