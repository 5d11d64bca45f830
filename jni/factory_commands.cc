// Signature verification, memory-card test and high-temperature command.
#include <bounds_checked.h>

#include <memory>
#include <string>

#include "factory_info.h"
#include "hal_call.h"
#include "hex_text.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::CodeText;
using kxmmi::IKxFactoryInterface;
using kxmmi::NewJString;
using kxmmi::Service;
using kxmmi::Utf;

jint GetVerifySignatureResult(JNIEnv* env, jobject /*object*/, jbyteArray data) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("GetVerifySignatureResult");
    if (factory == nullptr) return -1;
    if (data == nullptr) {
        KXLOGE("%s: GetVerifySignatureResult fail, data is null");
        return -1;
    }
    jbyte* elements = env->GetByteArrayElements(data, nullptr);
    if (elements == nullptr) {
        env->ExceptionClear();  // out of memory: the caller gets the failure value, not a throw
        KXLOGE("%s: GetVerifySignatureResult fail, data elements are null");
        return -1;
    }
    auto n = static_cast<uint32_t>(env->GetArrayLength(data));
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[n]);
    if (n != 0) {  // an empty array copies nothing; the encoder reports it below
        (void)memset_s(bytes.get(), n, 0, n);
        (void)memcpy_s(bytes.get(), n, elements, n);
    }
    env->ReleaseByteArrayElements(data, elements, 0);

    std::string hex(2 * static_cast<size_t>(n), '\0');
    if (ConvertBinToString(bytes.get(), n, hex.data(), 2 * n) != 0) {
        KXLOGE("%s: GetVerifySignatureResult, convertBinToString fail");
        return -1;
    }
    std::optional<int32_t> ret = kxmmi::ValueOf(factory->setFactoryInfo(kxmmi::kInfoSignature, hex),
                                                "GetVerifySignatureResult");
    if (!ret) return -1;
    KXLOGD("%s: GetVerifySignatureResult, ret: %d", *ret);
    return *ret;
}

jint SetZqCardTestMode(JNIEnv* env, jobject /*object*/, jstring mode) {
    // The characters are taken before the handle is looked at, and given back on every path.
    Utf modeChars(env, mode);
    if (!modeChars.Present("SetZqCardTestMode", "mode")) return -1;
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("SetZqCardTestMode");
    if (factory == nullptr) return -1;
    std::optional<int32_t> ret = kxmmi::ValueOf(
        factory->setFactoryInfo(kxmmi::kInfoZqCardTest, modeChars.c_str()), "SetZqCardTestMode");
    if (!ret) return -1;
    KXLOGD("%s: SetZqCardTestMode, ret: %d", *ret);
    return *ret;
}

jstring GetZqCardTestResult(JNIEnv* env, jobject /*object*/) {
    std::optional<CodeText<int32_t>> answer =
        kxmmi::ReadFactoryInfo(kxmmi::kInfoZqCardTest, "GetZqCardTestResult");
    if (!answer) return NewJString(env, "GetZqCardTestResult", "");
    KXLOGD("%s: GetZqCardTestResult, ret: %d, testResultArray = %s", answer->code,
           answer->text.c_str());
    return NewJString(env, "GetZqCardTestResult", answer->text);
}

jint ExecuteHighTemperInterceptCmd(JNIEnv* env, jobject /*object*/, jstring testScene,
                                   jstring parameters) {
    sp<IKxFactoryInterface> factory = kxmmi::Handle<Service::Factory>();
    if (factory == nullptr) {
        KXLOGE("%s: ExecuteHighTemperInterceptCmd fail, mIKxFactoryInterface is null");
        return -1;
    }
    Utf sceneChars(env, testScene);
    if (!sceneChars.Present("ExecuteHighTemperInterceptCmd", "testScene")) return -1;
    Utf parameterChars(env, parameters);
    if (!parameterChars.Present("ExecuteHighTemperInterceptCmd", "parameters")) return -1;

    CodeText<int32_t> answer(-1);
    if (!kxmmi::TransportOk(factory->executeHighTemperInterceptCmd(
                                sceneChars.c_str(), parameterChars.c_str(), answer.Receiver()),
                            "ExecuteHighTemperInterceptCmd")) {
        return -1;
    }
    // Logged at error priority whatever the outcome: the command's result belongs in the error log.
    KXLOGE(
        "%s: ExecuteHighTemperInterceptCmd, resultCode: %d, resultInfo: %s, testScene: %s, "
        "parameters: %s",
        answer.code, answer.text.c_str(), sceneChars.c_str(), parameterChars.c_str());
    return answer.code;
}
