// Host build of the service manager's registration listener.
#ifndef ANDROID_HIDL_MANAGER_V1_0_ISERVICENOTIFICATION_H
#define ANDROID_HIDL_MANAGER_V1_0_ISERVICENOTIFICATION_H

#include <android/hidl/base/1.0/IBase.h>

namespace android {
namespace hidl {
namespace manager {
namespace V1_0 {

struct IServiceNotification : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;
    // fqName is "package@version::IName"; preexisting is set for instances that were registered
    // before the listener was.
    virtual ::android::hardware::Return<void> onRegistration(
        const ::android::hardware::hidl_string& fqName,
        const ::android::hardware::hidl_string& name, bool preexisting) = 0;
};

}  // namespace V1_0
}  // namespace manager
}  // namespace hidl
}  // namespace android

#endif
