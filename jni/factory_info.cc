// Manufacturing information and station state, through the factory interface.
#include "factory_info.h"

#include <bounds_checked.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.1/IKxFactoryInterface.h>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using kxmmi::Acquire;
using kxmmi::CodeText;
using kxmmi::IKxFactoryInterface;
using kxmmi::NewJString;
using kxmmi::Service;
using kxmmi::Utf;
using kxmmi::ValueOf;
using IKxFactoryInterfaceV1_1 =
    ::vendor::tavrin::hardware::kxfactoryinterface::V1_1::IKxFactoryInterface;

namespace {

// The qrcode record of SetTestCycle: oeminfo item 143, always written with size 64.
constexpr int32_t kQrcodeItem = 143;
constexpr size_t kQrcodeSize = 64;
// A cycle of -100 writes the record empty.
constexpr jint kNoCycle = -100;

sp<IKxFactoryInterfaceV1_1> CastV1_1(const char* function) {
    return kxmmi::CastTo<IKxFactoryInterfaceV1_1>(kxmmi::Handle<Service::Factory>(), function);
}

}  // namespace

std::optional<CodeText<int32_t>> kxmmi::ReadFactoryInfo(int32_t kind, const char* function) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>(function);
    if (factory == nullptr) return std::nullopt;
    CodeText<int32_t> answer(-1);
    if (!TransportOk(factory->getFactoryInfo(kind, answer.Receiver()), function)) {
        return std::nullopt;
    }
    return answer;
}

jboolean IsFactoryVersion(JNIEnv* /*env*/, jobject /*object*/) {
    sp<IKxFactoryInterface> factory = kxmmi::Handle<Service::Factory>();
    if (factory == nullptr) {
        // "failse" as written: the text is part of the interface (log readers match it), keep it.
        KXLOGE("%s: IsFactoryVersion failse, g_kxFactoryInterface is null");
        return JNI_FALSE;
    }
    std::optional<bool> factoryVersion = ValueOf(factory->isFactoryVersion(), "IsFactoryVersion");
    if (!factoryVersion) return JNI_FALSE;
    KXLOGD("%s: IsFactoryVersion: %d", *factoryVersion ? 1 : 0);
    return *factoryVersion ? JNI_TRUE : JNI_FALSE;
}

jstring GetManufactureFileName(JNIEnv* env, jobject /*object*/) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("GetManufactureFileName");
    if (factory == nullptr) return NewJString(env, "GetManufactureFileName", "");
    CodeText<int32_t> answer(-1);
    if (!kxmmi::TransportOk(factory->getManufactureFileName(answer.Receiver()),
                            "GetManufactureFileName")) {
        return NewJString(env, "GetManufactureFileName", "");
    }
    KXLOGD("%s: GetManufactureFileName, ret: %d, fileName: %s", answer.code, answer.text.c_str());
    return NewJString(env, "GetManufactureFileName", answer.text);
}

jint ReleaseFactoryHidlResource(JNIEnv* /*env*/, jobject /*object*/) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("ReleaseFactoryHidlResource");
    if (factory == nullptr) return -1;
    std::optional<int32_t> result =
        ValueOf(factory->releaseFactoryHidlResource(), "ReleaseFactoryHidlResource");
    if (!result) return -1;
    KXLOGD("%s: ReleaseFactoryHidlResource, result: %d", *result);
    return *result;
}

jint SetMmiTestResult(JNIEnv* /*env*/, jobject /*object*/, jint first, jint second) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("SetMmiTestResult");
    if (factory == nullptr) return -1;
    std::optional<int32_t> ret =
        ValueOf(factory->setMmiTestResult(first, second), "SetMmiTestResult");
    if (!ret) return -1;
    KXLOGD("%s: SetMmiTestResult ret = %d", *ret);
    return *ret;
}

jstring GetBsn(JNIEnv* env, jobject /*object*/) {
    std::optional<CodeText<int32_t>> answer = kxmmi::ReadFactoryInfo(kxmmi::kInfoBsn, "GetBsn");
    if (!answer) return NewJString(env, "GetBsn", "");
    KXLOGD("%s: GetBsn, ret: %d", answer->code);  // the BSN itself stays out of the log
    return NewJString(env, "GetBsn", answer->text);
}

jstring GetMmiAutoStartFlag(JNIEnv* env, jobject /*object*/) {
    std::optional<CodeText<int32_t>> answer =
        kxmmi::ReadFactoryInfo(kxmmi::kInfoMmiAutoStart, "GetMmiAutoStartFlag");
    if (!answer) return NewJString(env, "GetMmiAutoStartFlag", "");
    KXLOGD("%s: GetMmiAutoStartFlag, ret: %d, flag: %s", answer->code, answer->text.c_str());
    if (answer->code != 0) {
        KXLOGE("%s: getMMIAutoStart failed");
        return NewJString(env, "GetMmiAutoStartFlag", "Error");
    }
    return NewJString(env, "GetMmiAutoStartFlag", answer->text);
}

jint SetMMIAutoStartFlag(JNIEnv* env, jobject /*object*/, jstring flag) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("SetMMIAutoStartFlag");
    if (factory == nullptr) return -1;
    std::optional<int32_t> result;
    {
        Utf flagChars(env, flag);
        if (!flagChars.Present("SetMMIAutoStartFlag", "flag")) return -1;
        result = ValueOf(factory->setFactoryInfo(kxmmi::kInfoMmiAutoStart, flagChars.c_str()),
                         "SetMMIAutoStartFlag");
    }  // the characters go back before the result line
    if (!result) return -1;
    KXLOGD("%s: SetMMIAutoStartFlag, result: %d", *result);
    return *result;
}

jstring GetManufactureStationFlag(JNIEnv* env, jobject /*object*/, jint stationId) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("GetManufactureStationFlag");
    if (factory == nullptr) return NewJString(env, "GetManufactureStationFlag", "");
    CodeText<int32_t> answer(-1);
    if (!kxmmi::TransportOk(factory->getManufactureStationFlag(stationId, answer.Receiver()),
                            "GetManufactureStationFlag")) {
        return NewJString(env, "GetManufactureStationFlag", "");
    }
    KXLOGD("%s: GetManufactureStationFlag, station id: %d, result: %d, stationFlag: %s", stationId,
           answer.code, answer.text.c_str());
    return NewJString(env, "GetManufactureStationFlag", answer.text);
}

jint SetTestCycle(JNIEnv* /*env*/, jobject /*object*/, jint stationId, jint cycle) {
    KXLOGD("%s: SetTestCycle, stationID: %d, cycle: %d", stationId, cycle);
    sp<IKxFactoryInterfaceV1_1> kxFactoryNew = CastV1_1("SetTestCycle");
    if (kxFactoryNew == nullptr) {
        KXLOGE("%s: SetTestCycle fail, kxFactoryNew is null");
        return -1;
    }
    char qrcode[kQrcodeSize];
    errno_t e = memset_s(qrcode, kQrcodeSize, 0, kQrcodeSize);
    if (e != EOK) {
        KXLOGE("%s: SetTestCycle, memset_s error, ret =0x%x", static_cast<unsigned>(e));
        return -1;
    }
    if (cycle != kNoCycle) {
        // Two characters each: a wider value keeps its first two, so the text is always four.
        (void)snprintf_s(qrcode, kQrcodeSize, 2, "%02d", stationId);
        (void)snprintf_s(qrcode + 2, kQrcodeSize - 2, 2, "%02d", cycle);
        KXLOGD("%s: SetTestCycle, qrcodeInfo: %s", qrcode);
    }
    std::optional<int32_t> result =
        ValueOf(kxFactoryNew->writeOeminfo(kQrcodeItem, static_cast<int32_t>(kQrcodeSize), qrcode),
                "SetTestCycle");
    if (!result) return -1;
    KXLOGD("%s: SetTestCycle, result: %d", *result);
    return *result;
}

jint GetManufactureMode(JNIEnv* /*env*/, jobject /*object*/) {
    sp<IKxFactoryInterfaceV1_1> kxFactoryNew = CastV1_1("GetManufactureMode");
    if (kxFactoryNew == nullptr) {
        KXLOGE("%s: GetManufactureMode, kxFactoryNew is null");
        return -1;
    }
    std::optional<int32_t> result =
        ValueOf(kxFactoryNew->getManufactureMode(), "GetManufactureMode");
    if (!result) return -1;
    KXLOGD("%s: GetManufactureMode, result: %d", *result);
    return *result;
}

jint GetMmiDeviceFeaturesCheckResult(JNIEnv* /*env*/, jobject /*object*/, jint feature) {
    sp<IKxFactoryInterface> factory = Acquire<Service::Factory>("GetMmiDeviceFeaturesCheckResult");
    if (factory == nullptr) return -1;
    std::optional<int32_t> result = ValueOf(factory->getMmiDeviceFeaturesCheckResult(feature),
                                            "GetMmiDeviceFeaturesCheckResult");
    if (!result) return -1;
    KXLOGD("%s: GetMmiDeviceFeaturesCheckResult, result: %d", *result);
    return *result;
}

jstring GetOeminfo(JNIEnv* env, jobject /*object*/, jint a, jint b, jint c) {
    sp<IKxFactoryInterfaceV1_1> kxFactoryNew = CastV1_1("GetOeminfo");
    if (kxFactoryNew == nullptr) {
        KXLOGE("%s: GetOeminfo fail, kxFactoryNew is null");
        return NewJString(env, "GetOeminfo", "");
    }
    CodeText<int32_t> answer(-1);
    if (!kxmmi::TransportOk(kxFactoryNew->readOeminfo(a, b, c, answer.Receiver()), "GetOeminfo")) {
        return NewJString(env, "GetOeminfo", "");
    }
    if (answer.code != 0) {
        KXLOGE("%s: GetOeminfo fail, read failed result: %d ", answer.code);
        return NewJString(env, "GetOeminfo", "");
    }
    return NewJString(env, "GetOeminfo", answer.text);
}
