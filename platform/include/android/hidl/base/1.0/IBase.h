// Host build of the transport's root interface, which every service interface extends.
#ifndef ANDROID_HIDL_BASE_V1_0_IBASE_H
#define ANDROID_HIDL_BASE_V1_0_IBASE_H

#include <hidl/HidlSupport.h>

#include <functional>

namespace android {
namespace hidl {
namespace base {
namespace V1_0 {

struct IBase : virtual public ::android::RefBase {
    static const char* descriptor;

    using interfaceChain_cb =
        std::function<void(const ::android::hardware::hidl_vec<::android::hardware::hidl_string>&)>;

    virtual bool isRemote() const { return false; }
    // Descriptors of this interface and every interface it extends, most derived first.
    virtual ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb);
    // A local object cannot die apart from its process, so linking to it is refused.
    virtual ::android::hardware::Return<bool> linkToDeath(
        const ::android::sp<::android::hardware::hidl_death_recipient>& recipient, uint64_t cookie);
    virtual ::android::hardware::Return<bool> unlinkToDeath(
        const ::android::sp<::android::hardware::hidl_death_recipient>& recipient);

    static ::android::hardware::Return<::android::sp<IBase>> castFrom(
        const ::android::sp<IBase>& parent, bool emitError = false);
};

}  // namespace V1_0
}  // namespace base
}  // namespace hidl
}  // namespace android

#endif
