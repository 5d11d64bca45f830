// Display refresh rate and light brightness.
#include <vendor/tavrin/hardware/kxdisplay/1.1/IDisplay.h>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;
using IDisplayV1_1 = ::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay;

jstring GetScreenFpsConfig(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Display>> handle =
        Acquire<Service::Display>("GetScreenFpsConfig");
    if (handle == nullptr) return NewJString(env, "FAILED:getDisplayFpsConfig");
    sp<IDisplayV1_1> kxDisplayNew = kxmmi::CastTo<IDisplayV1_1>(handle, "GetScreenFpsConfig");
    if (kxDisplayNew == nullptr) {
        KXLOGE("%s: GetScreenFpsConfig fail, kxDisplayNew is null, not support multi fps");
        return NewJString(env, "0");
    }
    KXLOGE("%s: GetScreenFpsConfig fail, not wired to its service yet");
    return NewJString(env, "FAILED:getDisplayFpsConfig");
}

jboolean SetScreenFps(JNIEnv* env, jobject /*object*/, jint freqIndex) {
    (void)env;
    (void)freqIndex;
    sp<kxmmi::ServiceInterface<Service::Display>> handle =
        Acquire<Service::Display>("SetScreenFps");
    if (handle == nullptr) return JNI_FALSE;
    sp<IDisplayV1_1> kxDisplayNew = kxmmi::CastTo<IDisplayV1_1>(handle, "SetScreenFps");
    if (kxDisplayNew == nullptr) {
        KXLOGE("%s: SetScreenFps fail, kxDisplayNew is null, not support multi fps");
        return JNI_TRUE;
    }
    KXLOGE("%s: SetScreenFps fail, not wired to its service yet");
    return JNI_FALSE;
}

jint SetLightBrightness(JNIEnv* env, jobject /*object*/, jint id, jint brightness) {
    (void)env;
    (void)id;
    (void)brightness;
    sp<kxmmi::ServiceInterface<Service::Light>> handle =
        Acquire<Service::Light>("SetLightBrightness");
    if (handle == nullptr) return -1;
    KXLOGE("%s: SetLightBrightness fail, not wired to its service yet");
    return -1;
}
