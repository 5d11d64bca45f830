// Host build of the transport's support types: the text and vector types with the transport's
// 16-byte layout (pointer, 32-bit length, owns-buffer flag), the fixed-size array, handle and
// memory types the generated interface code names, the death-recipient interface and the
// toString helpers of generated types.
#ifndef HIDL_HIDLSUPPORT_H
#define HIDL_HIDLSUPPORT_H

#include <cutils/native_handle.h>
#include <hidl/HidlInstrumentor.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <new>
#include <sstream>
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
    // Refers to characters owned elsewhere; they must outlive this text. As on a device, they must
    // end with a zero byte: the transport hands the buffer to the other side as a C string.
    void setToExternal(const char* data, size_t size) {
        if (size > UINT32_MAX || data == nullptr || data[size] != '\0') {
            std::fprintf(stderr,
                         "hidl_string::setToExternal: text of %zu bytes without a zero byte\n",
                         size);
            std::abort();
        }
        clear();
        mBuffer = data;
        mSize = static_cast<uint32_t>(size);
    }

    static constexpr size_t kOffsetOfBuffer = 0;

  private:
    static constexpr const char* kEmpty = "";
    void copyFrom(const char* data, size_t size) {
        if (size > UINT32_MAX) std::abort();
        char* buf = static_cast<char*>(std::malloc(size + 1));
        if (buf == nullptr) std::abort();  // as a device's, built without exceptions
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
inline bool operator<(const hidl_string& a, const hidl_string& b) {
    return std::string(a) < std::string(b);
}

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
    // The device's iterators derive from std::iterator, which current toolchains mark deprecated:
    // under clang, the device's compiler, code that iterates a hidl_vec warns there and so here.
    // GCC warns at the definition itself, used or not, so the host's GCC build is spared.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#endif
    template <bool kConst>
    class iter : public std::iterator<std::random_access_iterator_tag, T, std::ptrdiff_t,
                                      std::conditional_t<kConst, const T*, T*>,
                                      std::conditional_t<kConst, const T&, T&>> {
        using Ptr = std::conditional_t<kConst, const T*, T*>;
        using Ref = std::conditional_t<kConst, const T&, T&>;

      public:
        iter(Ptr p) : mPtr(p) {}  // NOLINT
        Ref operator*() const { return *mPtr; }
        Ptr operator->() const { return mPtr; }
        Ref operator[](std::ptrdiff_t n) const { return mPtr[n]; }
        iter& operator++() {
            ++mPtr;
            return *this;
        }
        iter operator++(int) { return iter(mPtr++); }
        iter& operator--() {
            --mPtr;
            return *this;
        }
        iter operator--(int) { return iter(mPtr--); }
        iter& operator+=(std::ptrdiff_t n) {
            mPtr += n;
            return *this;
        }
        iter& operator-=(std::ptrdiff_t n) {
            mPtr -= n;
            return *this;
        }
        iter operator+(std::ptrdiff_t n) const { return iter(mPtr + n); }
        iter operator-(std::ptrdiff_t n) const { return iter(mPtr - n); }
        std::ptrdiff_t operator-(const iter& o) const { return mPtr - o.mPtr; }
        bool operator==(const iter& o) const { return mPtr == o.mPtr; }
        bool operator!=(const iter& o) const { return mPtr != o.mPtr; }
        bool operator<(const iter& o) const { return mPtr < o.mPtr; }
        bool operator>(const iter& o) const { return mPtr > o.mPtr; }
        bool operator<=(const iter& o) const { return mPtr <= o.mPtr; }
        bool operator>=(const iter& o) const { return mPtr >= o.mPtr; }

      private:
        Ptr mPtr;
    };
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
    using iterator = iter<false>;
    using const_iterator = iter<true>;
    iterator begin() { return data(); }
    iterator end() { return data() + mSize; }
    const_iterator begin() const { return data(); }
    const_iterator end() const { return data() + mSize; }
    operator std::vector<T>() const { return std::vector<T>(data(), data() + mSize); }  // NOLINT

    // New elements are default-initialised, as on a device, where integers start with whatever the
    // heap held; here they start as kPoison bytes, so code that reads them before writing them
    // shows. Kept elements keep their values.
    void resize(size_t size) {
        if (size > UINT32_MAX) std::abort();
        T* buf = size == 0 ? nullptr : new T[size];
        if constexpr (std::is_trivially_default_constructible_v<T>) {
            if (buf != nullptr) std::memset(static_cast<void*>(buf), kPoison, size * sizeof(T));
        }
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

    static constexpr size_t kOffsetOfBuffer = 0;
    static constexpr unsigned char kPoison = 0xA5;

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

template <typename T>
bool operator==(const hidl_vec<T>& a, const hidl_vec<T>& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (!(a[i] == b[i])) return false;
    }
    return true;
}
template <typename T>
bool operator!=(const hidl_vec<T>& a, const hidl_vec<T>& b) {
    return !(a == b);
}

// A fixed-size array, as the transport lays it out: the elements and nothing else.
template <typename T, size_t N>
struct hidl_array {
    hidl_array() = default;
    hidl_array(const T (&in)[N]) {  // NOLINT(google-explicit-constructor)
        for (size_t i = 0; i < N; ++i) mBuffer[i] = in[i];
    }
    T& operator[](size_t i) { return mBuffer[i]; }
    const T& operator[](size_t i) const { return mBuffer[i]; }
    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    static constexpr size_t size() { return N; }
    bool operator==(const hidl_array& other) const {
        for (size_t i = 0; i < N; ++i) {
            if (!(mBuffer[i] == other.mBuffer[i])) return false;
        }
        return true;
    }

  private:
    T mBuffer[N] = {};
};

// A native handle reference (file descriptors); the host transport never carries one.
struct hidl_handle {
    hidl_handle() = default;
    hidl_handle(const native_handle_t* handle) : mHandle(handle) {}  // NOLINT
    hidl_handle& operator=(const native_handle_t* handle) {
        mHandle = handle;
        mOwnsHandle = false;
        return *this;
    }
    const native_handle_t* getNativeHandle() const { return mHandle.get(); }
    operator const native_handle_t*() const { return mHandle.get(); }  // NOLINT
    bool operator==(const hidl_handle& other) const { return mHandle.get() == other.mHandle.get(); }
    static constexpr size_t kOffsetOfNativeHandle = 0;

  private:
    details::hidl_pointer<const native_handle_t> mHandle;
    bool mOwnsHandle = false;
};
static_assert(sizeof(hidl_handle) == 16, "hidl_handle is 16 bytes on the wire");

struct hidl_memory {
    hidl_memory() = default;
    const hidl_handle& handle() const { return mHandle; }
    uint64_t size() const { return mSize; }
    const hidl_string& name() const { return mName; }

  private:
    hidl_handle mHandle;
    uint64_t mSize = 0;
    hidl_string mName;
};
static_assert(sizeof(hidl_memory) == 40, "hidl_memory is 40 bytes on the wire");

// The underlying integer of an enumeration used as a set of flags.
template <typename Enum>
using hidl_bitfield = std::underlying_type_t<Enum>;

// Told when a service that it was linked to dies; cookie is the one given to linkToDeath.
struct hidl_death_recipient : virtual public RefBase {
    virtual void serviceDied(uint64_t cookie,
                             const wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

namespace details {
// Kind tags the generated classes carry.
struct i_tag {};
struct bnhw_tag {};
struct bphw_tag {};
struct bs_tag {};

// Every value of an enumeration, specialised by generated code.
template <typename T>
constexpr void* hidl_enum_values = nullptr;

template <typename T>
std::string toHexString(T value) {
    std::ostringstream os;
    os << std::hex << "0x" << static_cast<uint64_t>(value);
    return os.str();
}
}  // namespace details

// What generated toString functions print for the transport's own types.
inline std::string toString(const hidl_string& s) { return "\"" + std::string(s) + "\""; }
inline std::string toString(bool b) { return b ? "true" : "false"; }
template <typename T, typename = std::enable_if_t<std::is_arithmetic_v<T>>>
std::string toString(T value) {
    return std::to_string(value);
}
inline std::string toString(const hidl_handle& h) {
    return h.getNativeHandle() == nullptr ? "(null)" : "(handle)";
}
inline std::string toString(const hidl_memory& m) {
    return "memory{.name = " + toString(m.name()) + ", .size = " + std::to_string(m.size()) + "}";
}
template <typename T>
std::string toString(const hidl_vec<T>& v) {
    std::string out = "[";
    for (size_t i = 0; i < v.size(); ++i) {
        if (i != 0) out += ", ";
        using ::android::hardware::toString;
        out += toString(v[i]);
    }
    return out + "]";
}
template <typename T, size_t N>
std::string toString(const hidl_array<T, N>& a) {
    std::string out = "[";
    for (size_t i = 0; i < N; ++i) {
        if (i != 0) out += ", ";
        out += toString(a[i]);
    }
    return out + "]";
}
template <typename I>
std::string toString(const sp<I>& o) {
    return o == nullptr ? "(null)" : "(interface)";
}

}  // namespace hardware
}  // namespace android

#include <hidl/Status.h>

#endif
