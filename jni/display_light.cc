// Display refresh rate and light brightness.
#include <vendor/tavrin/hardware/kxdisplay/1.0/types.h>
#include <vendor/tavrin/hardware/kxdisplay/1.1/IDisplay.h>

#include <optional>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::CodeText;
using kxmmi::NewJString;
using kxmmi::Service;
using ::vendor::tavrin::hardware::kxdisplay::V1_0::DISPLAY_RET;
using IDisplayV1_1 = ::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay;

namespace {

constexpr const char* kFpsConfigFailed = "FAILED:getDisplayFpsConfig";

}  // namespace

jstring GetScreenFpsConfig(JNIEnv* env, jobject /*object*/) {
    sp<kxmmi::IDisplay> display = Acquire<Service::Display>("GetScreenFpsConfig");
    if (display == nullptr) return NewJString(env, "GetScreenFpsConfig", kFpsConfigFailed);
    sp<IDisplayV1_1> kxDisplayNew = kxmmi::CastTo<IDisplayV1_1>(display, "GetScreenFpsConfig");
    if (kxDisplayNew == nullptr) {
        // A display without 1.1 has a single refresh rate; "0" tells the app so.
        KXLOGE("%s: GetScreenFpsConfig fail, kxDisplayNew is null, not support multi fps");
        return NewJString(env, "GetScreenFpsConfig", "0");
    }

    // -2 rather than -1, so that a missing answer is told apart in the log.
    CodeText<DISPLAY_RET> answer(static_cast<DISPLAY_RET>(-2));
    if (!kxmmi::TransportOk(kxDisplayNew->getDisplayFpsConfig(answer.Receiver()),
                            "GetScreenFpsConfig")) {
        return NewJString(env, "GetScreenFpsConfig", kFpsConfigFailed);
    }
    if (answer.code != DISPLAY_RET::SUCCESS) {
        KXLOGE("%s: GetScreenFpsConfig fail, error info: %s, ret: %d", kFpsConfigFailed,
               static_cast<int32_t>(answer.code));
        return NewJString(env, "GetScreenFpsConfig", kFpsConfigFailed);
    }
    KXLOGI("%s: GetScreenFpsConfig, fpsConfig: %s", answer.text.c_str());
    return NewJString(env, "GetScreenFpsConfig", answer.text);
}

jboolean SetScreenFps(JNIEnv* /*env*/, jobject /*object*/, jint freqIndex) {
    sp<kxmmi::IDisplay> display = Acquire<Service::Display>("SetScreenFps");
    if (display == nullptr) return JNI_FALSE;
    sp<IDisplayV1_1> kxDisplayNew = kxmmi::CastTo<IDisplayV1_1>(display, "SetScreenFps");
    if (kxDisplayNew == nullptr) {
        // Nothing to switch on a single-rate display: the request counts as done.
        KXLOGE("%s: SetScreenFps fail, kxDisplayNew is null, not support multi fps");
        return JNI_TRUE;
    }

    std::optional<int32_t> ret =
        kxmmi::ValueOf(kxDisplayNew->setDisplayFps(freqIndex), "SetScreenFps");
    if (!ret) return JNI_FALSE;
    KXLOGI("%s: SetScreenFps, freqIndex: %d, ret: %d", freqIndex, *ret);
    return *ret == 0 ? JNI_TRUE : JNI_FALSE;
}

jint SetLightBrightness(JNIEnv* /*env*/, jobject /*object*/, jint id, jint brightness) {
    sp<kxmmi::ILight> light = Acquire<Service::Light>("SetLightBrightness");
    if (light == nullptr) return -1;

    std::optional<int32_t> result =
        kxmmi::ValueOf(light->setLightBrightness(id, brightness), "SetLightBrightness");
    if (!result) return -1;
    KXLOGD("%s: SetLightBrightness, Id: %d, brightness: %d, result: %d", id, brightness, *result);
    return *result;
}
