// Host build of the passthrough wrapping of interface arguments: the host hands local objects on
// as they are.
#ifndef HIDL_HIDLPASSTHROUGHSUPPORT_H
#define HIDL_HIDLPASSTHROUGHSUPPORT_H

#include <android/hidl/base/1.0/IBase.h>

namespace android {
namespace hardware {
namespace details {

template <typename IType>
sp<IType> wrapPassthrough(sp<IType> iface) {
    return iface;
}

}  // namespace details
}  // namespace hardware
}  // namespace android

#endif
