// The host parcel and the marshalling of the transport's own types.
#include <hidl/HidlBinderSupport.h>
#include <hwbinder/Parcel.h>

#include <cstring>

namespace android {
namespace hardware {

Parcel::Parcel() = default;
Parcel::~Parcel() = default;

status_t Parcel::writeBytes(const void* data, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    mData.insert(mData.end(), bytes, bytes + size);
    return OK;
}

status_t Parcel::readBytes(void* data, size_t size) const {
    if (mWithheld && mStatusRead) return Status::kCallbackWithheldStatus;
    if (mData.size() - mDataPos < size) return NOT_ENOUGH_DATA;
    std::memcpy(data, mData.data() + mDataPos, size);
    mDataPos += size;
    return OK;
}

status_t Parcel::writeInterfaceToken(const char* interface) {
    size_t length = std::strlen(interface);
    writeInt32(static_cast<int32_t>(length));
    return writeBytes(interface, length);
}

bool Parcel::enforceInterface(const char* interface) const {
    int32_t length = 0;
    if (readInt32(&length) != OK || length < 0) return false;
    std::string token(static_cast<size_t>(length), '\0');
    if (readBytes(token.data(), token.size()) != OK) return false;
    return token == interface;
}

status_t Parcel::writeInt32(int32_t value) { return writeBytes(&value, sizeof(value)); }
status_t Parcel::writeInt64(int64_t value) { return writeBytes(&value, sizeof(value)); }
status_t Parcel::writeBool(bool value) { return writeInt32(value ? 1 : 0); }
status_t Parcel::readInt32(int32_t* value) const { return readBytes(value, sizeof(*value)); }
status_t Parcel::readInt64(int64_t* value) const { return readBytes(value, sizeof(*value)); }
status_t Parcel::readBool(bool* value) const {
    int32_t v = 0;
    status_t err = readInt32(&v);
    if (err == OK) *value = v != 0;
    return err;
}

status_t Parcel::writeStatusHeader(int32_t exception, const std::string& message) {
    writeInt32(exception);
    if (exception == Status::EX_NONE) return OK;
    writeInt32(static_cast<int32_t>(message.size()));
    return writeBytes(message.data(), message.size());
}

status_t Parcel::readStatusHeader(int32_t* exception, std::string* message) const {
    status_t err = readInt32(exception);
    if (err == OK && *exception != Status::EX_NONE) {
        int32_t length = 0;
        err = readInt32(&length);
        if (err == OK && length < 0) err = BAD_VALUE;
        if (err == OK) {
            message->resize(static_cast<size_t>(length));
            err = readBytes(message->data(), message->size());
        }
    }
    mStatusRead = true;  // from here on, what the service answered
    return err;
}

status_t Parcel::addBuffer(const void* buffer, size_t length, size_t* handle, bool embedded,
                           size_t parentHandle, size_t parentOffset) {
    Buffer b{std::make_unique<uint64_t[]>((length + 7) / 8 + 1), length, embedded, parentHandle,
             parentOffset};
    if (length != 0 && buffer != nullptr) std::memcpy(b.data.get(), buffer, length);
    if (handle != nullptr) *handle = mBuffers.size();
    mBuffers.push_back(std::move(b));
    return OK;
}

status_t Parcel::writeBuffer(const void* buffer, size_t length, size_t* handle) {
    return addBuffer(buffer, length, handle, false, 0, 0);
}

status_t Parcel::writeEmbeddedBuffer(const void* buffer, size_t length, size_t* handle,
                                     size_t parentHandle, size_t parentOffset) {
    if (parentHandle >= mBuffers.size()) return BAD_VALUE;
    Buffer& parent = mBuffers[parentHandle];
    if (parentOffset + sizeof(void*) > parent.length) return BAD_VALUE;
    status_t err = addBuffer(buffer, length, handle, true, parentHandle, parentOffset);
    if (err != OK) return err;
    // The parent's copy now points at this copy; a null pointer stays null.
    void* copy = buffer == nullptr ? nullptr : mBuffers.back().data.get();
    std::memcpy(reinterpret_cast<uint8_t*>(mBuffers[parentHandle].data.get()) + parentOffset, &copy,
                sizeof(copy));
    return OK;
}

status_t Parcel::nextBuffer(size_t length, bool nullable, size_t* handle, size_t parentHandle,
                            size_t parentOffset, bool embedded, const void** buffer) const {
    if (mWithheld && mStatusRead) return Status::kCallbackWithheldStatus;
    if (mBufferPos >= mBuffers.size()) return NOT_ENOUGH_DATA;
    const Buffer& b = mBuffers[mBufferPos];
    if (b.embedded != embedded || b.length != length) return BAD_VALUE;
    if (embedded && (b.parentHandle != parentHandle || b.parentOffset != parentOffset)) {
        return BAD_VALUE;
    }
    if (handle != nullptr) *handle = mBufferPos;
    ++mBufferPos;
    *buffer = (length == 0 && nullable) ? nullptr : b.data.get();
    return OK;
}

status_t Parcel::readBuffer(size_t length, size_t* handle, const void** buffer) const {
    return nextBuffer(length, false, handle, 0, 0, false, buffer);
}

status_t Parcel::readNullableBuffer(size_t length, size_t* handle, const void** buffer) const {
    return nextBuffer(length, true, handle, 0, 0, false, buffer);
}

status_t Parcel::readEmbeddedBuffer(size_t length, size_t* handle, size_t parentHandle,
                                    size_t parentOffset, const void** buffer) const {
    return nextBuffer(length, false, handle, parentHandle, parentOffset, true, buffer);
}

status_t Parcel::readNullableEmbeddedBuffer(size_t length, size_t* handle, size_t parentHandle,
                                            size_t parentOffset, const void** buffer) const {
    return nextBuffer(length, true, handle, parentHandle, parentOffset, true, buffer);
}

status_t Parcel::writeStrongBinder(const sp<IBinder>& binder) {
    mBinders.push_back(binder);
    return OK;
}

status_t Parcel::readNullableStrongBinder(sp<IBinder>* binder) const {
    if (mWithheld && mStatusRead) return Status::kCallbackWithheldStatus;
    if (mBinderPos >= mBinders.size()) return NOT_ENOUGH_DATA;
    *binder = mBinders[mBinderPos++];
    return OK;
}

status_t Parcel::readStrongBinder(sp<IBinder>* binder) const {
    status_t err = readNullableStrongBinder(binder);
    return err == OK && *binder == nullptr ? UNEXPECTED_NULL : err;
}

status_t Parcel::writeNativeHandleNoDup(const native_handle_t* handle) {
    return handle == nullptr ? writeInt32(0) : BAD_VALUE;
}

status_t Parcel::readNullableNativeHandleNoDup(const native_handle_t** handle) const {
    int32_t present = 0;
    status_t err = readInt32(&present);
    if (err != OK) return err;
    *handle = nullptr;
    return present == 0 ? OK : BAD_VALUE;
}

status_t Parcel::writeEmbeddedNativeHandle(const native_handle_t* handle, size_t, size_t) {
    return writeNativeHandleNoDup(handle);
}

status_t Parcel::readNullableEmbeddedNativeHandle(size_t, size_t,
                                                  const native_handle_t** handle) const {
    return readNullableNativeHandleNoDup(handle);
}

status_t writeToParcel(const Status& status, Parcel* parcel) {
    return parcel->writeStatusHeader(status.exceptionCode(), status.exceptionMessage());
}

status_t readFromParcel(Status* status, const Parcel& parcel) {
    int32_t exception = 0;
    std::string message;
    status_t err = parcel.readStatusHeader(&exception, &message);
    if (err != OK) return err;
    *status = exception == Status::EX_NONE ? Status::ok()
                                           : Status::fromExceptionCode(exception, message.c_str());
    return OK;
}

status_t writeEmbeddedToParcel(const hidl_string& string, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset) {
    return parcel->writeEmbeddedBuffer(string.c_str(), string.size() + 1, nullptr, parentHandle,
                                       parentOffset + hidl_string::kOffsetOfBuffer);
}

status_t readEmbeddedFromParcel(const hidl_string& string, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset) {
    const void* out = nullptr;
    return parcel.readEmbeddedBuffer(string.size() + 1, nullptr, parentHandle,
                                     parentOffset + hidl_string::kOffsetOfBuffer, &out);
}

status_t writeEmbeddedToParcel(const hidl_handle& handle, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset) {
    return parcel->writeEmbeddedNativeHandle(handle.getNativeHandle(), parentHandle,
                                             parentOffset + hidl_handle::kOffsetOfNativeHandle);
}

status_t readEmbeddedFromParcel(const hidl_handle& handle, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset) {
    const native_handle_t* out = nullptr;
    (void)handle;
    return parcel.readNullableEmbeddedNativeHandle(
        parentHandle, parentOffset + hidl_handle::kOffsetOfNativeHandle, &out);
}

}  // namespace hardware
}  // namespace android
