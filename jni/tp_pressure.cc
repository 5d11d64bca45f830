// Touch-panel pressure calibration and verification.
#include <algorithm>
#include <cstdint>
#include <optional>

#include "hal_call.h"
#include "jni_util.h"
#include "native_methods.h"

using ::android::sp;
using ::android::hardware::hidl_vec;
using kxmmi::Acquire;
using kxmmi::ISensors;
using kxmmi::ITouchscreen;
using kxmmi::Service;
using kxmmi::ValueOf;

namespace {

// Waiting times and the extern calibration's answers under test code 11 are reported modulo this;
// the remainder truncates toward zero, so it keeps the answer's sign.
constexpr int32_t kPressureTimeModulus = 144000;
constexpr jint kReducedTestCtrl = 11;

// Calls, for one of the type-dispatching methods, the touchscreen operation that type selects:
// call0 for 0, call1 for 1; any other type calls nothing and reads as an unsuccessful operation.
// Answers nothing when the handle is empty or the call's transport failed.
template <typename Call0, typename Call1>
std::optional<bool> DispatchByType(const char* function, jint type, Call0 call0, Call1 call1) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>(function);
    if (tp == nullptr) return std::nullopt;
    if (type != 0 && type != 1) return false;
    return ValueOf(type == 1 ? call1(*tp) : call0(*tp), function);
}

// A calibration or verification step at index, by the procedure that type selects.
template <typename Call0, typename Call1>
jboolean StepByType(const char* function, jint type, jint index, Call0 call0, Call1 call1) {
    std::optional<bool> success = DispatchByType(function, type, call0, call1);
    if (!success) return JNI_FALSE;
    KXLOGD("%s: %s, type: %d, index: %d, isOperationSuccess: %d", function, type, index, *success);
    return static_cast<jboolean>(*success);
}

}  // namespace

jint SetApPressureCalibrationExtern(JNIEnv* env, jobject /*object*/, jint sensorId, jint testCtrl,
                                    jintArray rawData) {
    sp<ISensors> sensors = Acquire<Service::Sensors>("SetApPressureCalibrationExtern");
    if (sensors == nullptr) return -1;
    if (rawData == nullptr) {
        KXLOGE("%s: SetApPressureCalibrationExtern fail, rawData is null");
        return -1;
    }
    jsize length = env->GetArrayLength(rawData);
    KXLOGD("%s: SetApPressureCalibrationExtern rawDataLength: %d", length);
    jint* elements = env->GetIntArrayElements(rawData, nullptr);
    if (elements == nullptr) {
        env->ExceptionClear();  // out of memory: the caller gets -1, never an exception
        KXLOGE("%s: SetApPressureCalibrationExtern fail, g_kxSensors is null");
        return -1;
    }
    hidl_vec<int32_t> data(static_cast<size_t>(length));
    // Through data(), not begin(): the device's hidl_vec iterator derives from std::iterator,
    // which toolchains mark deprecated, so begin() is an error there under -Werror.
    std::copy(elements, elements + length, data.data());
    env->ReleaseIntArrayElements(rawData, elements, JNI_ABORT);  // the copy is all the call needs

    std::optional<int32_t> answer =
        ValueOf(sensors->setApPressureCalibrationExtern(sensorId, testCtrl, data),
                "SetApPressureCalibrationExtern");
    if (!answer) return -1;
    int32_t result = testCtrl == kReducedTestCtrl ? *answer % kPressureTimeModulus : *answer;
    KXLOGD("%s: SetApPressureCalibrationExtern, sensorId: %d, testCtrl: %d, result: %d", sensorId,
           testCtrl, result);
    return result;
}

jboolean IsTpPressureSupported(JNIEnv* /*env*/, jobject /*object*/) {
    const uint32_t queryStart = kxmmi::SupportQueryStart();
    if ((kxmmi::g_tpPressureSupportCache.load() & 1) != 0) return JNI_TRUE;
    sp<ITouchscreen> tp = kxmmi::Handle<Service::TouchScreen>();
    if (tp == nullptr) {
        KXLOGE("%s: IsTpPressureSupported false, g_kxTouchScreen is null");
        return JNI_FALSE;
    }
    std::optional<bool> supported = ValueOf(tp->isTpPressureSupported(), "IsTpPressureSupported");
    if (!supported) return JNI_FALSE;
    if (*supported) {
        KXLOGD("%s: IsTpPressureSupported true");
        kxmmi::CacheTpPressureSupport(queryStart);
        return JNI_TRUE;
    }
    // A false answer is never cached; a concurrent true may have been meanwhile.
    return (kxmmi::g_tpPressureSupportCache.load() & 1) != 0 ? JNI_TRUE : JNI_FALSE;
}

jint GetTpPressureStatus(JNIEnv* /*env*/, jobject /*object*/) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("GetTpPressureStatus");
    if (tp == nullptr) return -1;
    std::optional<int32_t> result = ValueOf(tp->getTpPressureStatus(), "GetTpPressureStatus");
    if (!result) return -1;
    KXLOGD("%s: GetTpPressureStatus, result: %d", *result);
    return *result;
}

jint GetTpPressureVerifyResult(JNIEnv* /*env*/, jobject /*object*/, jint value) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("GetTpPressureVerifyResult");
    if (tp == nullptr) return -1;
    std::optional<int32_t> result =
        ValueOf(tp->getTpPressureVerifyResult(value), "GetTpPressureVerifyResult");
    if (!result) return -1;
    KXLOGD("%s: GetTpPressureVerifyResult, result: %d", *result);
    return *result;
}

jboolean ControlTpPressureCalibMode(JNIEnv* /*env*/, jobject /*object*/, jint type) {
    std::optional<bool> success = DispatchByType(
        "ControlTpPressureCalibMode", type,
        [](ITouchscreen& tp) { return tp.controlTpPressureCalibMode0(); },
        [](ITouchscreen& tp) { return tp.controlTpPressureCalibMode1(); });
    if (!success) return JNI_FALSE;
    KXLOGD("%s: ControlTpPressureCalibMode, type: %d, isOperationSuccess: %d", type, *success);
    return static_cast<jboolean>(*success);
}

jboolean SetTpPressureCalibration(JNIEnv* /*env*/, jobject /*object*/, jint type, jint index) {
    return StepByType(
        "SetTpPressureCalibration", type, index,
        [index](ITouchscreen& tp) { return tp.setTpPressureCalibration0(index); },
        [index](ITouchscreen& tp) { return tp.setTpPressureCalibration1(index); });
}

jboolean SetTpPressureVerification(JNIEnv* /*env*/, jobject /*object*/, jint type, jint index) {
    return StepByType(
        "SetTpPressureVerification", type, index,
        [index](ITouchscreen& tp) { return tp.setTpPressureVerification0(index); },
        [index](ITouchscreen& tp) { return tp.setTpPressureVerification1(index); });
}

jlong GetTpPressureWaitingTime(JNIEnv* /*env*/, jobject /*object*/) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("GetTpPressureWaitingTime");
    if (tp == nullptr) return -1;
    std::optional<int64_t> waiting =
        ValueOf(tp->getTpPressureWaitingTime(), "GetTpPressureWaitingTime");
    if (!waiting) return -1;
    return *waiting % kPressureTimeModulus;
}

jint CheckTpPressureCalibPosition(JNIEnv* /*env*/, jobject /*object*/, jint x, jint y, jint z) {
    sp<ITouchscreen> tp = Acquire<Service::TouchScreen>("CheckTpPressureCalibPosition");
    if (tp == nullptr) return -1;
    std::optional<int32_t> result =
        ValueOf(tp->checkTpPressureCalibPosition(x, y, z), "CheckTpPressureCalibPosition");
    if (!result) return -1;
    KXLOGD("%s: CheckTpPressureCalibPosition, result: %d", *result);
    return *result;
}
