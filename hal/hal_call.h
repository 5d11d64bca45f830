// The shape every native method follows: take the call's own strong reference to its handle
// (logging the empty-handle line when there is none), cast to a newer minor version where the
// operation needs one, call, and read the answer. A transport failure is an ordinary failure of
// the method: one error line, and the caller returns its failure value.
#ifndef KXMMI_HAL_HAL_CALL_H
#define KXMMI_HAL_HAL_CALL_H

#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mmi_log.h"
#include "service_registry.h"

namespace kxmmi {

// The handle for one call, or empty after the line "<function> fail, <handle> is null".
template <Service S>
::android::sp<ServiceInterface<S>> Acquire(const char* function) {
    ::android::sp<ServiceInterface<S>> handle = Handle<S>();
    if (handle == nullptr) {
        KXLOGE("%s: %s fail, %s is null", function, ServiceTraits<S>::kHandleName);
    }
    return handle;
}

// Logs the transport failure of a call made by function; true when the call went through.
template <typename T>
bool TransportOk(const ::android::hardware::Return<T>& ret, const char* function) {
    if (ret.isOk()) return true;
    KXLOGE("%s: %s fail, transport error: %s", function, ret.description().c_str());
    return false;
}

// The value a call returned, or nothing when its transport failed.
template <typename T>
std::optional<T> ValueOf(::android::hardware::Return<T>&& ret, const char* function) {
    if (!TransportOk(ret, function)) return std::nullopt;
    return static_cast<T>(ret);
}

// The newer minor version of a handle for the length of one call, empty when the service does
// not implement it (or the handle is empty, or the cast's transport failed).
template <typename To, typename From>
::android::sp<To> CastTo(const ::android::sp<From>& handle, const char* function) {
    std::optional<::android::sp<To>> cast = ValueOf(To::castFrom(handle, false), function);
    return cast ? *cast : nullptr;
}

// Result locals of callback answers: preset before the call, filled by the service's callback,
// which runs on the calling thread before the call returns. Texts and vectors are copied, since
// the service's buffers live only during the callback.
template <typename Code>
struct CodeText {
    explicit CodeText(Code preset) : code(preset) {}
    auto Receiver() {
        return [this](Code c, const ::android::hardware::hidl_string& t) {
            code = c;
            text = t;
        };
    }
    Code code;
    std::string text;
};

struct FlagText {
    auto Receiver() {
        return [this](bool f, const ::android::hardware::hidl_string& t) {
            flag = f;
            text = t;
        };
    }
    bool flag = false;
    std::string text;
};

struct CodeValues {
    auto Receiver() {
        return [this](int32_t c, const ::android::hardware::hidl_vec<int32_t>& v) {
            code = c;
            values = v;
        };
    }
    int32_t code = -1;
    std::vector<int32_t> values;
};

struct CodeTextValues {
    auto Receiver() {
        return [this](int32_t c, const ::android::hardware::hidl_string& t,
                      const ::android::hardware::hidl_vec<int32_t>& v) {
            code = c;
            text = t;
            values = v;
        };
    }
    int32_t code = -1;
    std::string text;
    std::vector<int32_t> values;
};

}  // namespace kxmmi

#endif
