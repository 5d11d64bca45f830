// Host build of the transport's call status and result types. As on a device, a result whose
// transport failed and whose status nobody looked at ends the process when it is destroyed.
#ifndef HIDL_STATUS_H
#define HIDL_STATUS_H

#include <utils/Errors.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace android {
namespace hardware {

class Status final {
  public:
    enum Exception : int32_t {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_HAS_REPLY_HEADER = -128,
        EX_TRANSACTION_FAILED = -129,
    };

    Status() = default;
    static Status ok() { return Status(); }
    static Status fromStatusT(status_t status) {
        Status s;
        if (status != OK) {
            s.mException = EX_TRANSACTION_FAILED;
            s.mErrorCode = status;
        }
        return s;
    }

    static Status fromExceptionCode(int32_t exception, const char* message = nullptr) {
        Status s;
        s.mException = exception;
        if (exception == EX_TRANSACTION_FAILED) s.mErrorCode = FAILED_TRANSACTION;
        if (message != nullptr) s.mMessage = message;
        return s;
    }
    // What generated client code records after each call; kCallbackWithheld (a host-only value,
    // see hwbinder/Parcel.h) leaves the call successful.
    void setFromStatusT(status_t status) {
        *this = status == kCallbackWithheldStatus ? Status() : fromStatusT(status);
    }
    static constexpr status_t kCallbackWithheldStatus = -0x7e57;

    bool isOk() const { return mException == EX_NONE; }
    const std::string& exceptionMessage() const { return mMessage; }
    int32_t exceptionCode() const { return mException; }
    status_t transactionError() const { return mErrorCode; }
    // The device runtime's own wording: "No error", or "Status(<exception>): '<message>'" with the
    // transport error's name before the message of a failed transaction.
    std::string description() const {
        if (isOk()) return "No error";
        std::string text = "Status(" + exceptionName(mException) + "): '";
        if (mException == EX_TRANSACTION_FAILED) text += statusName(mErrorCode) + ": ";
        return text + mMessage + "'";
    }

    static std::string exceptionName(int32_t exception) {
        switch (exception) {
            case EX_NONE:
                return "EX_NONE";
            case EX_SECURITY:
                return "EX_SECURITY";
            case EX_BAD_PARCELABLE:
                return "EX_BAD_PARCELABLE";
            case EX_ILLEGAL_ARGUMENT:
                return "EX_ILLEGAL_ARGUMENT";
            case EX_NULL_POINTER:
                return "EX_NULL_POINTER";
            case EX_ILLEGAL_STATE:
                return "EX_ILLEGAL_STATE";
            case EX_NETWORK_MAIN_THREAD:
                return "EX_NETWORK_MAIN_THREAD";
            case EX_UNSUPPORTED_OPERATION:
                return "EX_UNSUPPORTED_OPERATION";
            case EX_HAS_REPLY_HEADER:
                return "EX_HAS_REPLY_HEADER";
            case EX_TRANSACTION_FAILED:
                return "EX_TRANSACTION_FAILED";
        }
        return std::to_string(exception);
    }

    static std::string statusName(status_t status) {
        switch (status) {
            case OK:
                return "OK";
            case UNKNOWN_ERROR:
                return "UNKNOWN_ERROR";
            case NO_MEMORY:
                return "NO_MEMORY";
            case INVALID_OPERATION:
                return "INVALID_OPERATION";
            case BAD_VALUE:
                return "BAD_VALUE";
            case BAD_TYPE:
                return "BAD_TYPE";
            case NAME_NOT_FOUND:
                return "NAME_NOT_FOUND";
            case PERMISSION_DENIED:
                return "PERMISSION_DENIED";
            case NO_INIT:
                return "NO_INIT";
            case ALREADY_EXISTS:
                return "ALREADY_EXISTS";
            case DEAD_OBJECT:
                return "DEAD_OBJECT";
            case FAILED_TRANSACTION:
                return "FAILED_TRANSACTION";
            case BAD_INDEX:
                return "BAD_INDEX";
            case NOT_ENOUGH_DATA:
                return "NOT_ENOUGH_DATA";
            case WOULD_BLOCK:
                return "WOULD_BLOCK";
            case TIMED_OUT:
                return "TIMED_OUT";
            case UNKNOWN_TRANSACTION:
                return "UNKNOWN_TRANSACTION";
            case FDS_NOT_ALLOWED:
                return "FDS_NOT_ALLOWED";
            case UNEXPECTED_NULL:
                return "UNEXPECTED_NULL";
        }
        return std::to_string(status);
    }

  private:
    int32_t mException = EX_NONE;
    status_t mErrorCode = OK;
    std::string mMessage;
};

namespace details {
class return_status {
  public:
    return_status() = default;
    explicit return_status(const Status& s) : mStatus(s) {}
    return_status(return_status&& other) noexcept : mStatus(other.mStatus) {
        mCheckedStatus = other.mCheckedStatus;
        other.mCheckedStatus = true;
    }
    return_status& operator=(return_status&& other) noexcept {
        if (!mCheckedStatus) assertOk();
        mStatus = other.mStatus;
        mCheckedStatus = other.mCheckedStatus;
        other.mCheckedStatus = true;
        return *this;
    }
    return_status(const return_status&) = delete;
    return_status& operator=(const return_status&) = delete;
    ~return_status() {
        if (!mCheckedStatus && !mStatus.isOk()) {
            std::fprintf(stderr, "Failed HIDL return status not checked: %s\n",
                         mStatus.description().c_str());
            std::abort();
        }
    }

    bool isOk() const {
        mCheckedStatus = true;
        return mStatus.isOk();
    }
    bool isDeadObject() const {
        return !mStatus.isOk() && mStatus.transactionError() == DEAD_OBJECT;
    }
    std::string description() const { return mStatus.description(); }
    void assertOk() const {
        mCheckedStatus = true;
        if (!mStatus.isOk()) {
            std::fprintf(stderr, "Attempted to retrieve value from failed HIDL call: %s\n",
                         mStatus.description().c_str());
            std::abort();
        }
    }

  protected:
    Status mStatus;
    mutable bool mCheckedStatus = false;
};
}  // namespace details

template <typename T>
class Return : public details::return_status {
  public:
    Return(T v) : details::return_status(), mVal(std::move(v)) {}  // NOLINT
    Return(Status s) : details::return_status(s), mVal{} {}        // NOLINT
    Return(Return&& other) noexcept = default;
    Return& operator=(Return&&) noexcept = default;

    // The checked accessor: reading the value of a failed call ends the process.
    operator T() const {  // NOLINT(google-explicit-constructor)
        assertOk();
        return mVal;
    }
    T withDefault(T t) { return isOk() ? mVal : t; }

  private:
    T mVal;
};

template <>
class Return<void> : public details::return_status {
  public:
    Return() : details::return_status() {}
    Return(const Status& s) : details::return_status(s) {}  // NOLINT
    Return(Return&& other) noexcept = default;
    Return& operator=(Return&&) noexcept = default;
};

inline Return<void> Void() { return Return<void>(); }

}  // namespace hardware
}  // namespace android

#endif
