// Capacitance tests, touch keys, touch feature configuration and rotary crown.
#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;

jint GetCapacitanceTestResult(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("GetCapacitanceTestResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetCapacitanceTestResult fail, not wired to its service yet");
    return -1;
}

jint GetTouchkeyCapacitanceTestResult(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::OtherDevices>> handle =
        Acquire<Service::OtherDevices>("GetTouchkeyCapacitanceTestResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetTouchkeyCapacitanceTestResult fail, not wired to its service yet");
    return -1;
}

jint GetTouchKeySupportState(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::OtherDevices>> handle =
        kxmmi::Handle<Service::OtherDevices>();
    if (handle == nullptr) {
        KXLOGE("%s: GetTouchKeySupportState invalid, g_kxOtherdevices is null");
        return -1;
    }
    KXLOGE("%s: GetTouchKeySupportState fail, not wired to its service yet");
    return -1;
}

jstring GetCapacitanceCalibrateResult(JNIEnv* env, jobject /*object*/, jint value) {
    (void)env;
    (void)value;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("GetCapacitanceCalibrateResult");
    if (handle == nullptr) return NewJString(env, "Capacitance Calibrate Failed");
    KXLOGE("%s: GetCapacitanceCalibrateResult fail, not wired to its service yet");
    return NewJString(env, "Capacitance Calibrate Failed");
}

jint SetTouchScreenFeatureConfig(JNIEnv* env, jobject /*object*/, jint feature, jstring config) {
    (void)env;
    (void)feature;
    (void)config;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("SetTouchScreenFeatureConfig");
    if (handle == nullptr) return -1;
    KXLOGE("%s: SetTouchScreenFeatureConfig fail, not wired to its service yet");
    return -1;
}

jstring GetRotateCrownTestResult(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::TouchScreen>> handle =
        Acquire<Service::TouchScreen>("GetRotateCrownTestResult");
    if (handle == nullptr) return NewJString(env, "");
    KXLOGE("%s: GetRotateCrownTestResult fail, not wired to its service yet");
    return NewJString(env, "");
}
