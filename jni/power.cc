// Power state and USB speed, through the power service.
#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::CodeText;
using kxmmi::IKXPower;
using kxmmi::NewJString;
using kxmmi::Service;
using kxmmi::Utf;

jstring GetPowerState(JNIEnv* env, jobject /*object*/, jstring query) {
    sp<IKXPower> power = Acquire<Service::Power>("GetPowerState");
    if (power == nullptr) return NewJString(env, "GetPowerState", "");
    Utf queryChars(env, query);
    if (!queryChars.Present("GetPowerState", "query")) return NewJString(env, "GetPowerState", "");

    CodeText<int32_t> answer(-1);
    if (kxmmi::TransportOk(power->getPowerState(queryChars.c_str(), answer.Receiver()),
                           "GetPowerState")) {
        if (answer.code != 0) answer.text.clear();  // a failed query's text means nothing
        KXLOGD("%s: GetPowerState, result code: %d, result info: %s", answer.code,
               answer.text.c_str());
    } else {
        answer.text.clear();
    }
    queryChars.Release();  // before the result string is made
    return NewJString(env, "GetPowerState", answer.text);
}

jint SetPowerState(JNIEnv* env, jobject /*object*/, jstring testScene, jstring para) {
    sp<IKXPower> power = Acquire<Service::Power>("SetPowerState");
    if (power == nullptr) return -1;
    Utf sceneChars(env, testScene);
    if (!sceneChars.Present("SetPowerState", "testScene")) return -1;
    Utf paraChars(env, para);
    if (!paraChars.Present("SetPowerState", "para")) return -1;

    std::optional<int32_t> result = kxmmi::ValueOf(
        power->setPowerState(sceneChars.c_str(), paraChars.c_str()), "SetPowerState");
    if (result) {
        KXLOGE("%s: SetPowerState, testScene:%s, para:%s, result:%d", sceneChars.c_str(),
               paraChars.c_str(), *result);
    }
    sceneChars.Release();  // in the order they were taken
    paraChars.Release();
    return result.value_or(-1);
}

jint CheckUsbSpeed(JNIEnv* env, jobject /*object*/, jstring scene) {
    sp<IKXPower> power = Acquire<Service::Power>("CheckUsbSpeed");
    if (power == nullptr) return -1;
    Utf sceneChars(env, scene);
    if (!sceneChars.Present("CheckUsbSpeed", "scene")) return -1;

    CodeText<int32_t> answer(-1);
    if (!kxmmi::TransportOk(power->checkUsbSpeed(sceneChars.c_str(), "", "", "", answer.Receiver()),
                            "CheckUsbSpeed")) {
        return -1;
    }
    KXLOGD("%s: CheckUsbSpeed, scene: %s, resultCode: %d, resultInfo: %s", sceneChars.c_str(),
           answer.code, answer.text.c_str());
    return answer.code;
}
