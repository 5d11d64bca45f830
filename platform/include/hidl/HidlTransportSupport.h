// Host build of the transport functions that generated interface code calls: casts between
// versions, lookup and registration.
#ifndef HIDL_HIDLTRANSPORTSUPPORT_H
#define HIDL_HIDLTRANSPORTSUPPORT_H

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlBinderSupport.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <string>

namespace android {
namespace hardware {
namespace details {

// A newer version of the parent's interface, asked of the service itself (its interface chain);
// empty when it does not implement childIndicator.
template <typename IChild, typename IParent, typename BpChild>
Return<sp<IChild>> castInterface(sp<IParent> parent, const char* childIndicator, bool emitError) {
    if (parent.get() == nullptr) return sp<IChild>(nullptr);
    Return<bool> canCast = canCastInterface(parent.get(), childIndicator, emitError);
    if (!canCast.isOk()) {
        if (emitError) return Status::fromStatusT(DEAD_OBJECT);
        return sp<IChild>(nullptr);
    }
    if (!canCast) return sp<IChild>(nullptr);
    if (parent->isRemote()) {
        sp<IBinder> binder = IInterface::asBinder(dynamic_cast<IInterface*>(parent.get()));
        return sp<IChild>(new BpChild(binder));
    }
    return sp<IChild>(static_cast<IChild*>(parent.get()));
}

// The registered service's reference for descriptor and instance name, or null.
sp<IBinder> getServiceBinder(const std::string& descriptor, const std::string& name);

template <typename BpType, typename IType = typename BpType::Pure>
sp<IType> getServiceInternal(const std::string& instance, bool /*retry*/, bool /*getStub*/) {
    sp<IBinder> binder = getServiceBinder(IType::descriptor, instance);
    if (binder == nullptr) return nullptr;
    return new BpType(binder);
}

status_t registerAsServiceInternal(const sp<::android::hidl::base::V1_0::IBase>& service,
                                   const std::string& name);

inline int32_t getPidIfSharable() { return -1; }
inline bool debuggable() { return false; }

}  // namespace details
}  // namespace hardware
}  // namespace android

#endif
