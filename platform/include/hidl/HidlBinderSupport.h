// Host build of what generated proxies and stubs use to put the transport's types into a parcel
// and take them out again, and of the bridge between transport references and interface objects.
#ifndef HIDL_HIDLBINDERSUPPORT_H
#define HIDL_HIDLBINDERSUPPORT_H

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlInstrumentor.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <hwbinder/IInterface.h>
#include <hwbinder/Parcel.h>

namespace android {
namespace hardware {

status_t writeToParcel(const Status& status, Parcel* parcel);
status_t readFromParcel(Status* status, const Parcel& parcel);

status_t writeEmbeddedToParcel(const hidl_string& string, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset);
status_t readEmbeddedFromParcel(const hidl_string& string, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset);
status_t writeEmbeddedToParcel(const hidl_handle& handle, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset);
status_t readEmbeddedFromParcel(const hidl_handle& handle, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset);

// The vector's elements travel as one child buffer; *handle names it for the elements' own
// embedded buffers.
template <typename T>
status_t writeEmbeddedToParcel(const hidl_vec<T>& vec, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset, size_t* handle) {
    return parcel->writeEmbeddedBuffer(vec.data(), sizeof(T) * vec.size(), handle, parentHandle,
                                       parentOffset + hidl_vec<T>::kOffsetOfBuffer);
}
template <typename T>
status_t readEmbeddedFromParcel(const hidl_vec<T>& vec, const Parcel& parcel, size_t parentHandle,
                                size_t parentOffset, size_t* handle) {
    const void* out = nullptr;
    return parcel.readNullableEmbeddedBuffer(sizeof(T) * vec.size(), handle, parentHandle,
                                             parentOffset + hidl_vec<T>::kOffsetOfBuffer, &out);
}

// Tells a death recipient of the interface object whose reference died.
class hidl_binder_death_recipient : public IBinder::DeathRecipient {
  public:
    hidl_binder_death_recipient(const sp<hidl_death_recipient>& recipient, uint64_t cookie,
                                const sp<::android::hidl::base::V1_0::IBase>& base)
        : mRecipient(recipient), mCookie(cookie), mBase(base) {}
    void binderDied(const wp<IBinder>& who) override;
    wp<hidl_death_recipient> getRecipient() { return mRecipient; }

  private:
    wp<hidl_death_recipient> mRecipient;
    uint64_t mCookie;
    wp<::android::hidl::base::V1_0::IBase> mBase;
};

// The reference through which a client reaches an interface object: a proxy's own reference, or
// the stub serving a local object (made once per object).
sp<IBinder> getOrCreateCachedBinder(::android::hidl::base::V1_0::IBase* ifacePtr);

namespace details {
Return<bool> canCastInterface(::android::hidl::base::V1_0::IBase* interface, const char* castTo,
                              bool emitError = false);
}  // namespace details

// The interface object behind a reference: the local object itself, or a new proxy.
template <typename IType, typename ProxyType, typename StubType>
sp<IType> fromBinder(const sp<IBinder>& binderIface) {
    if (binderIface == nullptr) return nullptr;
    if (BHwBinder* local = binderIface->localBinder()) {
        sp<::android::hidl::base::V1_0::IBase> base = static_cast<StubType*>(local)->getImpl();
        if (!details::canCastInterface(base.get(), IType::descriptor).withDefault(false)) {
            return nullptr;
        }
        return static_cast<IType*>(base.get());
    }
    return new ProxyType(binderIface);
}

}  // namespace hardware
}  // namespace android

#endif
