// Host build of the transport's support types: the text and vector types with the transport's
// 16-byte layout (pointer, 32-bit length, owns-buffer flag), and the death-recipient interface.
#ifndef HIDL_HIDLSUPPORT_H
#define HIDL_HIDLSUPPORT_H

#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {
struct IBase;
}  // namespace V1_0
}  // namespace base
}  // namespace hidl

namespace hardware {

namespace details {
// Keeps pointers 8 bytes wide on every architecture, as the wire layout demands.
template <typename T>
union hidl_pointer {
    T* mPointer;
    uint64_t _pad;
    hidl_pointer() : mPointer(nullptr) {}
    hidl_pointer(T* p) : mPointer(p) {}       // NOLINT(google-explicit-constructor)
    operator T*() const { return mPointer; }  // NOLINT(google-explicit-constructor)
    T* operator->() const { return mPointer; }
    T* get() const { return mPointer; }
};
}  // namespace details

struct hidl_string {
    hidl_string() = default;
    hidl_string(const char* s) { copyFrom(s, s == nullptr ? 0 : std::strlen(s)); }  // NOLINT
    hidl_string(const char* s, size_t length) { copyFrom(s, length); }
    hidl_string(const std::string& s) { copyFrom(s.data(), s.size()); }  // NOLINT
    hidl_string(const hidl_string& other) { copyFrom(other.c_str(), other.size()); }
    hidl_string(hidl_string&& other) noexcept { moveFrom(std::move(other)); }
    ~hidl_string() { clear(); }

    hidl_string& operator=(const hidl_string& other) {
        if (this != &other) {
            clear();
            copyFrom(other.c_str(), other.size());
        }
        return *this;
    }
    hidl_string& operator=(hidl_string&& other) noexcept {
        if (this != &other) {
            clear();
            moveFrom(std::move(other));
        }
        return *this;
    }
    hidl_string& operator=(const char* s) { return *this = hidl_string(s); }
    hidl_string& operator=(const std::string& s) { return *this = hidl_string(s); }

    const char* c_str() const { return mBuffer.get() == nullptr ? kEmpty : mBuffer.get(); }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    operator std::string() const { return std::string(c_str(), mSize); }  // NOLINT

    void clear() {
        if (mOwnsBuffer) std::free(const_cast<char*>(mBuffer.get()));
        mBuffer = nullptr;
        mSize = 0;
        mOwnsBuffer = false;
    }
    // Refers to characters owned elsewhere; they must outlive this text.
    void setToExternal(const char* data, size_t size) {
        clear();
        mBuffer = data;
        mSize = static_cast<uint32_t>(size);
    }

  private:
    static constexpr const char* kEmpty = "";
    void copyFrom(const char* data, size_t size) {
        if (size > UINT32_MAX) std::abort();
        char* buf = static_cast<char*>(std::malloc(size + 1));
        if (buf == nullptr) throw std::bad_alloc();
        if (size != 0) std::memcpy(buf, data, size);
        buf[size] = '\0';
        mBuffer = buf;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }
    void moveFrom(hidl_string&& other) {
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.mOwnsBuffer = false;
        other.mBuffer = nullptr;
        other.mSize = 0;
    }

    details::hidl_pointer<const char> mBuffer;  // null reads as the empty text
    uint32_t mSize = 0;
    bool mOwnsBuffer = false;
};
static_assert(sizeof(hidl_string) == 16, "hidl_string is 16 bytes on the wire");

inline bool operator==(const hidl_string& a, const hidl_string& b) {
    return a.size() == b.size() && std::memcmp(a.c_str(), b.c_str(), a.size()) == 0;
}
inline bool operator!=(const hidl_string& a, const hidl_string& b) { return !(a == b); }
inline bool operator==(const hidl_string& a, const char* b) { return a == hidl_string(b); }

template <typename T>
struct hidl_vec {
    hidl_vec() = default;
    explicit hidl_vec(size_t size) { resize(size); }
    hidl_vec(std::initializer_list<T> list) { assignRange(list.begin(), list.size()); }
    hidl_vec(const std::vector<T>& v) { assignRange(v.data(), v.size()); }  // NOLINT
    hidl_vec(const hidl_vec& other) { assignRange(other.data(), other.size()); }
    hidl_vec(hidl_vec&& other) noexcept { moveFrom(std::move(other)); }
    ~hidl_vec() { clear(); }

    hidl_vec& operator=(const hidl_vec& other) {
        if (this != &other) {
            clear();
            assignRange(other.data(), other.size());
        }
        return *this;
    }
    hidl_vec& operator=(hidl_vec&& other) noexcept {
        if (this != &other) {
            clear();
            moveFrom(std::move(other));
        }
        return *this;
    }

    size_t size() const { return mSize; }
    T* data() { return mBuffer.get(); }
    const T* data() const { return mBuffer.get(); }
    T& operator[](size_t i) { return mBuffer.get()[i]; }
    const T& operator[](size_t i) const { return mBuffer.get()[i]; }
    T* begin() { return data(); }
    T* end() { return data() + mSize; }
    const T* begin() const { return data(); }
    const T* end() const { return data() + mSize; }
    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }  // NOLINT

    // New elements are value-initialised (zero for integers); kept elements keep their values.
    void resize(size_t size) {
        if (size > UINT32_MAX) std::abort();
        T* buf = size == 0 ? nullptr : new T[size]();
        for (size_t i = 0; i < size && i < mSize; ++i) buf[i] = std::move(mBuffer.get()[i]);
        clear();
        mBuffer = buf;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }
    void setToExternal(T* data, size_t size, bool shouldOwn = false) {
        clear();
        mBuffer = data;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = shouldOwn;
    }
    void clear() {
        if (mOwnsBuffer) delete[] mBuffer.get();
        mBuffer = nullptr;
        mSize = 0;
        mOwnsBuffer = false;
    }

  private:
    void assignRange(const T* src, size_t n) {
        resize(n);
        for (size_t i = 0; i < n; ++i) mBuffer.get()[i] = src[i];
    }
    void moveFrom(hidl_vec&& other) {
        mBuffer = other.mBuffer;
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.mBuffer = nullptr;
        other.mSize = 0;
        other.mOwnsBuffer = false;
    }

    details::hidl_pointer<T> mBuffer;
    uint32_t mSize = 0;
    bool mOwnsBuffer = false;
};
static_assert(sizeof(hidl_vec<int32_t>) == 16, "hidl_vec is 16 bytes on the wire");

// Told when a service that it was linked to dies; cookie is the one given to linkToDeath.
struct hidl_death_recipient : virtual public RefBase {
    virtual void serviceDied(uint64_t cookie,
                             const wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

}  // namespace hardware
}  // namespace android

#include <hidl/Status.h>

#endif
