// Host build of the way to the service manager: the host service manager lives in this process.
#ifndef HIDL_SERVICEMANAGEMENT_H
#define HIDL_SERVICEMANAGEMENT_H

#include <android/hidl/manager/1.0/IServiceManager.h>

namespace android {
namespace hardware {

sp<::android::hidl::manager::V1_0::IServiceManager> defaultServiceManager();

}  // namespace hardware
}  // namespace android

#endif
