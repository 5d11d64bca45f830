// Host build of the transport's message: scalars in write order, and buffers the parcel copies
// into storage of its own, so that a reply can be read after the call that wrote it returned.
// An embedded buffer is copied too, and the pointer to it inside its parent's copy is made to
// point at the copy, as the kernel driver's fix-ups do on a device.
#ifndef HWBINDER_PARCEL_H
#define HWBINDER_PARCEL_H

#include <cutils/native_handle.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace android {
namespace hardware {

class IBinder;

class Parcel {
  public:
    Parcel();
    ~Parcel();
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    status_t writeInterfaceToken(const char* interface);
    bool enforceInterface(const char* interface) const;

    status_t writeInt32(int32_t value);
    status_t writeInt64(int64_t value);
    status_t writeBool(bool value);
    status_t readInt32(int32_t* value) const;
    status_t readInt64(int64_t* value) const;
    status_t readBool(bool* value) const;

    status_t writeBuffer(const void* buffer, size_t length, size_t* handle);
    status_t writeEmbeddedBuffer(const void* buffer, size_t length, size_t* handle,
                                 size_t parentHandle, size_t parentOffset);
    status_t readBuffer(size_t length, size_t* handle, const void** buffer) const;
    status_t readNullableBuffer(size_t length, size_t* handle, const void** buffer) const;
    status_t readEmbeddedBuffer(size_t length, size_t* handle, size_t parentHandle,
                                size_t parentOffset, const void** buffer) const;
    status_t readNullableEmbeddedBuffer(size_t length, size_t* handle, size_t parentHandle,
                                        size_t parentOffset, const void** buffer) const;

    status_t writeStrongBinder(const sp<IBinder>& binder);
    status_t readNullableStrongBinder(sp<IBinder>* binder) const;
    status_t readStrongBinder(sp<IBinder>* binder) const;

    // Handles carry file descriptors, which stay in their process: only null crosses.
    status_t writeNativeHandleNoDup(const native_handle_t* handle);
    status_t readNullableNativeHandleNoDup(const native_handle_t** handle) const;
    status_t writeEmbeddedNativeHandle(const native_handle_t* handle, size_t parentHandle,
                                       size_t parentOffset);
    status_t readNullableEmbeddedNativeHandle(size_t parentHandle, size_t parentOffset,
                                              const native_handle_t** handle) const;

    // The status that heads every reply (see HidlBinderSupport.h).
    status_t writeStatusHeader(int32_t exception, const std::string& message);
    status_t readStatusHeader(int32_t* exception, std::string* message) const;

    // Host only: every read after the reply's status fails with Status::kCallbackWithheldStatus,
    // which the generated client code turns into a successful call whose callback never ran.
    void withholdValues() { mWithheld = true; }

  private:
    status_t writeBytes(const void* data, size_t size);
    status_t addBuffer(const void* buffer, size_t length, size_t* handle, bool embedded,
                       size_t parentHandle, size_t parentOffset);
    status_t readBytes(void* data, size_t size) const;
    status_t nextBuffer(size_t length, bool nullable, size_t* handle, size_t parentHandle,
                        size_t parentOffset, bool embedded, const void** buffer) const;

    struct Buffer {
        std::unique_ptr<uint64_t[]> data;  // 8-byte aligned, like the structures it holds
        size_t length;
        bool embedded;
        size_t parentHandle;
        size_t parentOffset;
    };
    std::vector<uint8_t> mData;
    std::vector<Buffer> mBuffers;
    std::vector<sp<IBinder>> mBinders;
    mutable size_t mDataPos = 0;
    mutable size_t mBufferPos = 0;
    mutable size_t mBinderPos = 0;
    mutable bool mStatusRead = false;
    bool mWithheld = false;
};

}  // namespace hardware
}  // namespace android

#endif
