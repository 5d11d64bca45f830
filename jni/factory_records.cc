// Test records sent to the factory interface.
#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;

jint SendBigDataOperation(JNIEnv* env, jobject /*object*/, jobject operation) {
    (void)env;
    (void)operation;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle = kxmmi::Handle<Service::Factory>();
    if (handle == nullptr) {
        KXLOGE("%s: SendBigDataOperation fail, env or g_kxFactoryInterface is null");
        return -1;
    }
    KXLOGE("%s: SendBigDataOperation fail, not wired to its service yet");
    return -1;
}

jint SendBigDataValue(JNIEnv* env, jobject /*object*/, jobject value) {
    (void)env;
    (void)value;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle = kxmmi::Handle<Service::Factory>();
    if (handle == nullptr) {
        KXLOGE("%s: SendBigDataValue fail, env or g_kxFactoryInterface is null");
        return -1;
    }
    KXLOGE("%s: SendBigDataValue fail, not wired to its service yet");
    return -1;
}
