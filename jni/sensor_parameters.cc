// Sensor parameter commands, through version 1.1 of the sensor service.
#include <vendor/tavrin/hardware/sensors/1.1/ISensors.h>

#include <algorithm>
#include <array>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::CodeTextValues;
using kxmmi::NewJString;
using kxmmi::Service;
using ISensorsV1_1 = ::vendor::tavrin::hardware::sensors::V1_1::ISensors;

namespace {

// The answer array always has this many elements, whatever length the caller asked for.
constexpr jsize kParameterCount = 64;

}  // namespace

jstring HandleSensorParameter(JNIEnv* env, jobject /*object*/, jint sensorId, jint mainCmd,
                              jint subCmd, jint length) {
    // An empty g_kxSensors casts to an empty view, so this one test covers both.
    sp<ISensorsV1_1> sensorNewVer =
        kxmmi::CastTo<ISensorsV1_1>(kxmmi::Handle<Service::Sensors>(), "HandleSensorParameter");
    if (sensorNewVer == nullptr) {
        KXLOGE("%s: HandleSensorParameter fail, sensorNewVer is null");
        return NewJString(env, "HandleSensorParameter", "");
    }

    CodeTextValues answer;
    if (!kxmmi::TransportOk(sensorNewVer->handleSensorParameter(sensorId, mainCmd, subCmd, length,
                                                                answer.Receiver()),
                            "HandleSensorParameter")) {
        return NewJString(env, "HandleSensorParameter", "");
    }
    KXLOGD(
        "%s: HandleSensorParameter, ret: %d, resultInfo: %s, sensorId: %d, mainCmd: %d, subCmd: "
        "%d, length: %d",
        answer.code, answer.text.c_str(), sensorId, mainCmd, subCmd, length);
    return NewJString(env, "HandleSensorParameter", answer.text);
}

jintArray HandleAmbientLightParameter(JNIEnv* env, jobject /*object*/, jint sensorId, jint mainCmd,
                                      jint subCmd, jint length) {
    sp<ISensorsV1_1> sensorNewVer = kxmmi::CastTo<ISensorsV1_1>(kxmmi::Handle<Service::Sensors>(),
                                                                "HandleAmbientLightParameter");
    if (sensorNewVer == nullptr) {
        KXLOGE("%s: HandleAmbientLightParameter fail, sensorNewVer is null");
        return nullptr;
    }

    jintArray parameters = env->NewIntArray(kParameterCount);
    if (parameters == nullptr) {
        env->ExceptionClear();  // out of memory: the caller gets null, never an exception
        KXLOGE("%s: HandleAmbientLightParameter fail, NewIntArray failed");
        return nullptr;
    }
    CodeTextValues answer;
    if (!kxmmi::TransportOk(sensorNewVer->handleSensorParameter(sensorId, mainCmd, subCmd, length,
                                                                answer.Receiver()),
                            "HandleAmbientLightParameter")) {
        env->DeleteLocalRef(parameters);
        return nullptr;
    }
    // Values the service did not deliver stay 0; those past the 64th are dropped.
    std::array<jint, kParameterCount> staging{};
    std::copy_n(answer.values.begin(),
                std::min(answer.values.size(), static_cast<size_t>(kParameterCount)),
                staging.begin());
    KXLOGD(
        "%s: HandleAmbientLightParameter, ret: %d, para: %s, sensorId: %d, mainCmd: %d, subCmd: "
        "%d, length: %d",
        answer.code, answer.text.c_str(), sensorId, mainCmd, subCmd, length);
    env->SetIntArrayRegion(parameters, 0, kParameterCount, staging.data());
    return parameters;
}
