// Test records sent to the factory interface.
#include "factory_records.h"

#include "hal_call.h"
#include "native_methods.h"

using ::android::sp;
using ::android::hardware::hidl_string;
using kxmmi::IKxFactoryInterface;
using kxmmi::Service;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdEvent;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdOperation;

namespace {

constexpr const char* kValueClass = "com/tavrin/mmitest/model/BigDataValue";
constexpr const char* kOperationClass = "com/tavrin/mmitest/model/BigDataOperation";

// The field's id, or null after one line when the model class or the field is missing on the
// Java side. The lookup's Java exception is cleared: the record is still sent with the default.
jfieldID FindField(JNIEnv* env, const char* reader, const char* className, const char* fieldName,
                   const char* type) {
    jclass clazz = env->FindClass(className);
    if (clazz == nullptr) {
        env->ExceptionClear();
        KXLOGE("%s: %s fail, class %s not found", reader, className);
        return nullptr;
    }
    jfieldID field = env->GetFieldID(clazz, fieldName, type);
    env->DeleteLocalRef(clazz);  // sixteen fields would outgrow the guaranteed local capacity
    if (field == nullptr) {
        env->ExceptionClear();
        KXLOGE("%s: %s fail, field %s not found", reader, fieldName);
    }
    return field;
}

// The record's texts refer to the method's own copies, which outlive the service call.
void Refer(hidl_string& field, const std::string& text) {
    field.setToExternal(text.data(), text.size());
}

}  // namespace

int32_t GetIntFromObject(JNIEnv* env, jobject object, const char* className,
                         const char* fieldName) {
    if (env == nullptr || object == nullptr || className == nullptr || fieldName == nullptr) {
        KXLOGE("%s: GetIntFromObject fail, invalid parameter");
        return -1;
    }
    jfieldID field = FindField(env, "GetIntFromObject", className, fieldName, "I");
    if (field == nullptr) return -1;
    return env->GetIntField(object, field);
}

std::string GetStringFromObject(JNIEnv* env, jobject object, const char* className,
                                const char* fieldName) {
    if (env == nullptr || object == nullptr || className == nullptr || fieldName == nullptr) {
        KXLOGE("%s: GetBigDataValueString fail, invalid parameter");
        return kxmmi::EmptyText();
    }
    jfieldID field =
        FindField(env, "GetBigDataValueString", className, fieldName, "Ljava/lang/String;");
    if (field == nullptr) return kxmmi::EmptyText();
    auto string = static_cast<jstring>(env->GetObjectField(object, field));
    if (string == nullptr) {
        KXLOGE("%s: GetBigDataValueString fail, field object is null");
        return kxmmi::EmptyText();
    }
    const char* chars = env->GetStringUTFChars(string, nullptr);
    if (chars == nullptr) {
        env->ExceptionClear();  // out of memory: the field reads as empty
        env->DeleteLocalRef(string);
        KXLOGE("%s: GetBigDataValueString fail, string value is null");
        return kxmmi::EmptyText();
    }
    std::string text(chars);
    env->ReleaseStringUTFChars(string, chars);
    env->DeleteLocalRef(string);
    return text;
}

void InitFmdMessage(FmdMsg& msg, int32_t version, int32_t dataSource, FmdEvent event) {
    msg.version = version;
    msg.dataSource = dataSource;
    msg.eventCount = 1;
    // Copy-constructing the element copies the texts even where event only refers to them; the
    // message owns the new element and frees whatever vector it held before.
    msg.events.setToExternal(new FmdEvent[1]{event}, 1, /*shouldOwn=*/true);
}

jint SendBigDataValue(JNIEnv* env, jobject /*object*/, jobject record) {
    sp<IKxFactoryInterface> factory = env == nullptr ? nullptr : kxmmi::Handle<Service::Factory>();
    if (factory == nullptr) {
        KXLOGE("%s: SendBigDataValue fail, env or g_kxFactoryInterface is null");
        return -1;
    }
    int32_t version = GetIntFromObject(env, record, kValueClass, "mVersion");
    int32_t dataSource = GetIntFromObject(env, record, kValueClass, "mDataSource");
    int32_t errorCode = GetIntFromObject(env, record, kValueClass, "mErrorCode");
    int32_t itemId = GetIntFromObject(env, record, kValueClass, "mItemId");
    int32_t cycle = GetIntFromObject(env, record, kValueClass, "mCycle");
    std::string deviceName = GetStringFromObject(env, record, kValueClass, "mDeviceName");
    std::string station = GetStringFromObject(env, record, kValueClass, "mStation");
    std::string testName = GetStringFromObject(env, record, kValueClass, "mTestName");
    std::string bsn = GetStringFromObject(env, record, kValueClass, "mBsn");
    std::string value = GetStringFromObject(env, record, kValueClass, "mValue");
    std::string thresholdMin = GetStringFromObject(env, record, kValueClass, "mThresholdMin");
    std::string thresholdMax = GetStringFromObject(env, record, kValueClass, "mThresholdMax");
    std::string result = GetStringFromObject(env, record, kValueClass, "mResult");
    std::string time = GetStringFromObject(env, record, kValueClass, "mTime");
    std::string firmware = GetStringFromObject(env, record, kValueClass, "mFirmware");
    std::string description = GetStringFromObject(env, record, kValueClass, "mDescription");
    KXLOGD(
        "%s: SendBigDataValue, version: %d; dataSource: %d; errorCode: %d; itemId: %d; station: "
        "%s; cycle: %d; deviceName: %s; testName: %s; value: %s; minThreshold: %s; maxThreshold: "
        "%s; result: %s; time: %s; firmware: %s; description: %s",
        version, dataSource, errorCode, itemId, station.c_str(), cycle, deviceName.c_str(),
        testName.c_str(), value.c_str(), thresholdMin.c_str(), thresholdMax.c_str(), result.c_str(),
        time.c_str(), firmware.c_str(), description.c_str());

    FmdEvent event{};
    event.errorCode = errorCode;
    event.itemId = itemId;
    event.cycle = cycle;
    Refer(event.result, result);
    Refer(event.station, station);
    Refer(event.bsn, bsn);
    Refer(event.time, time);
    Refer(event.deviceName, deviceName);
    Refer(event.testName, testName);
    Refer(event.value, value);
    Refer(event.thresholdMin, thresholdMin);
    Refer(event.thresholdMax, thresholdMax);
    Refer(event.firmware, firmware);
    Refer(event.description, description);
    FmdMsg msg{};
    InitFmdMessage(msg, version, dataSource, event);
    return kxmmi::ValueOf(factory->sendBigDataValue(msg), "SendBigDataValue").value_or(-1);
}

jint SendBigDataOperation(JNIEnv* env, jobject /*object*/, jobject record) {
    sp<IKxFactoryInterface> factory = env == nullptr ? nullptr : kxmmi::Handle<Service::Factory>();
    if (factory == nullptr) {
        KXLOGE("%s: SendBigDataOperation fail, env or g_kxFactoryInterface is null");
        return -1;
    }
    FmdOperation operation{};
    operation.version = GetIntFromObject(env, record, kOperationClass, "mVersion");
    operation.commandId = GetIntFromObject(env, record, kOperationClass, "mCommandId");
    operation.operation = GetIntFromObject(env, record, kOperationClass, "mOperation");
    std::string bsn = GetStringFromObject(env, record, kOperationClass, "mBsn");
    std::string station = GetStringFromObject(env, record, kOperationClass, "mStation");
    operation.cycle = GetIntFromObject(env, record, kOperationClass, "mCycle");
    KXLOGD(
        "%s: SendBigDataOperation, version: %d; commandId: %d; operation: %d; station: %s; "
        "cycle: %d",
        operation.version, operation.commandId, operation.operation, station.c_str(),
        operation.cycle);
    Refer(operation.station, station);
    Refer(operation.bsn, bsn);
    return kxmmi::ValueOf(factory->sendBigDataOperation(operation), "SendBigDataOperation")
        .value_or(-1);
}
