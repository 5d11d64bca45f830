// Capacitance tests, touch keys, touch feature configuration and rotary crown.
#include <cstdint>
#include <optional>
#include <string>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::CodeText;
using kxmmi::IOtherdevices;
using kxmmi::ITouchscreen;
using kxmmi::NewJString;
using kxmmi::Service;
using kxmmi::ValueOf;

namespace {

constexpr const char* kCalibrateFailed = "Capacitance Calibrate Failed";

// The capacitance tests hand their failure description to Java through a static field of the
// class that owns the natives. Class and field are looked up on every call; when either is
// missing, the lookup's Java exception is cleared so the method still just returns its code.
void PublishFailInfo(JNIEnv* env, const char* function, const char* field,
                     const std::string& info) {
    jclass manager = env->FindClass("com/tavrin/mmitest/controller/MmiNativeManager");
    jfieldID id =
        manager == nullptr ? nullptr : env->GetStaticFieldID(manager, field, "Ljava/lang/String;");
    if (id == nullptr) {
        env->ExceptionClear();
        KXLOGE("%s: %s fail, static field %s not found", function, field);
    } else {
        jstring text = NewJString(env, function, info);
        env->SetStaticObjectField(manager, id, text);
        if (text != nullptr) env->DeleteLocalRef(text);
    }
    if (manager != nullptr) env->DeleteLocalRef(manager);
}

// One capacitance test: call with a (code, text) callback, report, publish the text into field
// whatever the code, and return the code. start(receiver) makes the service call.
template <typename Start>
jint RunCapacitanceTest(JNIEnv* env, const char* function, const char* field, Start start) {
    CodeText<int32_t> answer(-1);
    if (!kxmmi::TransportOk(start(answer.Receiver()), function)) return -1;
    KXLOGI("%s: %s, ret: %d, info: %s", function, answer.code, answer.text.c_str());
    PublishFailInfo(env, function, field, answer.text);
    return answer.code;
}

}  // namespace

jint GetCapacitanceTestResult(JNIEnv* env, jobject /*object*/) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("GetCapacitanceTestResult");
    if (tp == nullptr) return -1;
    return RunCapacitanceTest(
        env, "GetCapacitanceTestResult", "sTpCapacitanceFailInfo",
        [&](auto receiver) { return tp->getCapacitanceTestResult(receiver); });
}

jint GetTouchkeyCapacitanceTestResult(JNIEnv* env, jobject /*object*/) {
    sp<IOtherdevices> other = Acquire<Service::OtherDevices>("GetTouchkeyCapacitanceTestResult");
    if (other == nullptr) return -1;
    return RunCapacitanceTest(
        env, "GetTouchkeyCapacitanceTestResult", "sTouchKeyCapacitanceFailInfo",
        [&](auto receiver) { return other->getTouchkeyCapacitanceTestResult(0, receiver); });
}

jint GetTouchKeySupportState(JNIEnv* /*env*/, jobject /*object*/) {
    sp<IOtherdevices> other = kxmmi::Handle<Service::OtherDevices>();
    if (other == nullptr) {
        KXLOGE("%s: GetTouchKeySupportState invalid, g_kxOtherdevices is null");
        return -1;
    }
    std::optional<int32_t> state =
        ValueOf(other->getTouchKeySupportState(0), "GetTouchKeySupportState");
    if (!state) return -1;
    KXLOGI("%s: GetTouchKeySupportState, state: %d", *state);
    return *state;
}

jstring GetCapacitanceCalibrateResult(JNIEnv* env, jobject /*object*/, jint value) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("GetCapacitanceCalibrateResult");
    if (tp == nullptr) return NewJString(env, "GetCapacitanceCalibrateResult", kCalibrateFailed);

    CodeText<int32_t> answer(-1);
    if (!kxmmi::TransportOk(tp->getCapacitanceCalibrateResult(value, answer.Receiver()),
                            "GetCapacitanceCalibrateResult")) {
        return NewJString(env, "GetCapacitanceCalibrateResult", kCalibrateFailed);
    }
    if (answer.code != 0) {
        KXLOGE("%s: GetCapacitanceCalibrateResult fail, ret: %d", answer.code);
        return NewJString(env, "GetCapacitanceCalibrateResult",
                          kCalibrateFailed);  // whatever text the service sent
    }
    return NewJString(env, "GetCapacitanceCalibrateResult", answer.text);
}

jint SetTouchScreenFeatureConfig(JNIEnv* env, jobject /*object*/, jint feature, jstring config) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("SetTouchScreenFeatureConfig");
    if (tp == nullptr) return -1;
    kxmmi::Utf configChars(env, config);
    if (!configChars.Present("SetTouchScreenFeatureConfig", "config")) return -1;

    std::optional<int32_t> result =
        ValueOf(tp->setTouchScreenFeatureConfig(feature, configChars.c_str()),
                "SetTouchScreenFeatureConfig");
    if (!result) return -1;
    KXLOGD("%s: SetTouchScreenFeatureConfig, feature: %d, config: %s", feature,
           configChars.c_str());
    return *result;
}

jstring GetRotateCrownTestResult(JNIEnv* env, jobject /*object*/) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("GetRotateCrownTestResult");
    if (tp == nullptr) return NewJString(env, "GetRotateCrownTestResult", "");

    kxmmi::FlagText answer;
    if (!kxmmi::TransportOk(tp->getRotateCrownTestResult(answer.Receiver()),
                            "GetRotateCrownTestResult")) {
        return NewJString(env, "GetRotateCrownTestResult", "");
    }
    if (answer.flag) return NewJString(env, "GetRotateCrownTestResult", answer.text);
    KXLOGE("%s: GetRotateCrownTestResult fail");  // the service's text of a failed test is dropped
    return NewJString(env, "GetRotateCrownTestResult", "error");
}
