// Signature verification, memory-card test and high-temperature command.
#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::NewJString;
using kxmmi::Service;

jint GetVerifySignatureResult(JNIEnv* env, jobject /*object*/, jbyteArray data) {
    (void)env;
    (void)data;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("GetVerifySignatureResult");
    if (handle == nullptr) return -1;
    KXLOGE("%s: GetVerifySignatureResult fail, not wired to its service yet");
    return -1;
}

jint SetZqCardTestMode(JNIEnv* env, jobject /*object*/, jstring mode) {
    (void)env;
    (void)mode;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("SetZqCardTestMode");
    if (handle == nullptr) return -1;
    KXLOGE("%s: SetZqCardTestMode fail, not wired to its service yet");
    return -1;
}

jstring GetZqCardTestResult(JNIEnv* env, jobject /*object*/) {
    (void)env;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle =
        Acquire<Service::Factory>("GetZqCardTestResult");
    if (handle == nullptr) return NewJString(env, "");
    KXLOGE("%s: GetZqCardTestResult fail, not wired to its service yet");
    return NewJString(env, "");
}

jint ExecuteHighTemperInterceptCmd(JNIEnv* env, jobject /*object*/, jstring testScene,
                                   jstring parameters) {
    (void)env;
    (void)testScene;
    (void)parameters;
    sp<kxmmi::ServiceInterface<Service::Factory>> handle = kxmmi::Handle<Service::Factory>();
    if (handle == nullptr) {
        KXLOGE("%s: ExecuteHighTemperInterceptCmd fail, mIKxFactoryInterface is null");
        return -1;
    }
    KXLOGE("%s: ExecuteHighTemperInterceptCmd fail, not wired to its service yet");
    return -1;
}
