// Flicker measurement from the light sensor's raw samples.
#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;

jint GetFlickerFrequency(JNIEnv* env, jobject /*object*/, jint value) {
    (void)env;
    (void)value;
    sp<kxmmi::ServiceInterface<Service::Sensors>> handle =
        Acquire<Service::Sensors>("GetFlickerFrequency");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetFlickerFrequency fail, not wired to its service yet");
    return -1;
}
