// Sensor parameter commands, through version 1.1 of the sensor service.
#include <vendor/tavrin/hardware/sensors/1.1/ISensors.h>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;
using ISensorsV1_1 = ::vendor::tavrin::hardware::sensors::V1_1::ISensors;

jstring HandleSensorParameter(JNIEnv* env, jobject /*object*/, jint sensorId, jint mainCmd,
                              jint subCmd, jint length) {
    (void)env;
    (void)sensorId;
    (void)mainCmd;
    (void)subCmd;
    (void)length;
    sp<ISensorsV1_1> sensorNewVer =
        kxmmi::CastTo<ISensorsV1_1>(kxmmi::Handle<Service::Sensors>(), "HandleSensorParameter");
    if (sensorNewVer == nullptr) {
        KXLOGE("%s: HandleSensorParameter fail, sensorNewVer is null");
        return NewJString(env, "");
    }
    KXLOGE("%s: HandleSensorParameter fail, not wired to its service yet");
    return NewJString(env, "");
}

jintArray HandleAmbientLightParameter(JNIEnv* env, jobject /*object*/, jint sensorId, jint mainCmd,
                                      jint subCmd, jint length) {
    (void)env;
    (void)sensorId;
    (void)mainCmd;
    (void)subCmd;
    (void)length;
    sp<ISensorsV1_1> sensorNewVer = kxmmi::CastTo<ISensorsV1_1>(kxmmi::Handle<Service::Sensors>(),
                                                                "HandleAmbientLightParameter");
    if (sensorNewVer == nullptr) {
        KXLOGE("%s: HandleAmbientLightParameter fail, sensorNewVer is null");
        return nullptr;
    }
    KXLOGE("%s: HandleAmbientLightParameter fail, not wired to its service yet");
    return nullptr;
}
