// Manufacturing information and station state, through the factory interface.
#include <vendor/tavrin/hardware/kxfactoryinterface/1.1/IKxFactoryInterface.h>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;
using IKxFactoryInterfaceV1_1 =
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface;

jboolean IsFactoryVersion(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle = kxmmi::Handle<Service::Factory>();
    if (handle == nullptr) {
        KXLOGE("%s: IsFactoryVersion failse, g_kxFactoryInterface is null");
        return JNI_FALSE;
    }
    KXLOGE("%s: IsFactoryVersion fail, not wired to its service yet");
    return JNI_FALSE;
}

jstring GetManufactureFileName(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("GetManufactureFileName");
    if (handle == nullptr) return NewJString(env, "");
    KXLOGE("%s: GetManufactureFileName fail, not wired to its service yet");
    return NewJString(env, "");
}

jint ReleaseFactoryHidlResource(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("ReleaseFactoryHidlResource");
    if (handle == nullptr) return -1;
    KXLOGE("%s: ReleaseFactoryHidlResource fail, not wired to its service yet");
    return -1;
}

jint SetMmiTestResult(JNIEnv* env, jobject /*object*/, jint first, jint second) {
    (void)env;
    (void)first;
    (void)second;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("SetMmiTestResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: SetMmiTestResult fail, not wired to its service yet");
    return -1;
}

jstring GetBsn(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle = Acquire<Service::Factory>("GetBsn");
    if (handle == nullptr) return NewJString(env, "");
    KXLOGE("%s: GetBsn fail, not wired to its service yet");
    return NewJString(env, "");
}

jstring GetMmiAutoStartFlag(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("GetMmiAutoStartFlag");
    if (handle == nullptr) return NewJString(env, "");
    KXLOGE("%s: GetMmiAutoStartFlag fail, not wired to its service yet");
    return NewJString(env, "");
}

jint SetMMIAutoStartFlag(JNIEnv* env, jobject /*object*/, jstring flag) {
    (void)env;
    (void)flag;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("SetMMIAutoStartFlag");
    if (handle == nullptr) return -1;
    KXLOGE("%s: SetMMIAutoStartFlag fail, not wired to its service yet");
    return -1;
}

jstring GetManufactureStationFlag(JNIEnv* env, jobject /*object*/, jint stationId) {
    (void)env;
    (void)stationId;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("GetManufactureStationFlag");
    if (handle == nullptr) return NewJString(env, "");
    KXLOGE("%s: GetManufactureStationFlag fail, not wired to its service yet");
    return NewJString(env, "");
}

jint SetTestCycle(JNIEnv* env, jobject /*object*/, jint stationId, jint cycle) {
    (void)env;
    KXLOGD("%s: SetTestCycle, stationID: %d, cycle: %d", stationId, cycle);
    sp<IKxFactoryInterfaceV1_1> kxFactoryNew =
        kxmmi::CastTo<IKxFactoryInterfaceV1_1>(kxmmi::Handle<Service::Factory>(), "SetTestCycle");
    if (kxFactoryNew == nullptr) {
        KXLOGE("%s: SetTestCycle fail, kxFactoryNew is null");
        return -1;
    }
    KXLOGE("%s: SetTestCycle fail, not wired to its service yet");
    return -1;
}

jint GetManufactureMode(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<IKxFactoryInterfaceV1_1> kxFactoryNew = kxmmi::CastTo<IKxFactoryInterfaceV1_1>(
        kxmmi::Handle<Service::Factory>(), "GetManufactureMode");
    if (kxFactoryNew == nullptr) {
        KXLOGE("%s: GetManufactureMode, kxFactoryNew is null");
        return -1;
    }
    KXLOGE("%s: GetManufactureMode fail, not wired to its service yet");
    return -1;
}

jint GetMmiDeviceFeaturesCheckResult(JNIEnv* env, jobject /*object*/, jint feature) {
    (void)env;
    (void)feature;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("GetMmiDeviceFeaturesCheckResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetMmiDeviceFeaturesCheckResult fail, not wired to its service yet");
    return -1;
}

jstring GetOeminfo(JNIEnv* env, jobject /*object*/, jint a, jint b, jint c) {
    (void)env;
    (void)a;
    (void)b;
    (void)c;
    sp<IKxFactoryInterfaceV1_1> kxFactoryNew =
        kxmmi::CastTo<IKxFactoryInterfaceV1_1>(kxmmi::Handle<Service::Factory>(), "GetOeminfo");
    if (kxFactoryNew == nullptr) {
        KXLOGE("%s: GetOeminfo fail, kxFactoryNew is null");
        return NewJString(env, "");
    }
    KXLOGE("%s: GetOeminfo fail, not wired to its service yet");
    return NewJString(env, "");
}
