// Host build of the message-queue descriptor type that generated headers name; no host operation
// carries one.
#ifndef HIDL_MQDESCRIPTOR_H
#define HIDL_MQDESCRIPTOR_H

#include <hidl/HidlSupport.h>

#include <cstdint>

namespace android {
namespace hardware {

enum MQFlavor : uint32_t { kSynchronizedReadWrite = 0x01, kUnsynchronizedWrite = 0x02 };

template <typename T, MQFlavor flavor>
struct MQDescriptor {
    hidl_vec<uint8_t> mGrantors;
    details::hidl_pointer<native_handle_t> mHandle;
    uint32_t mQuantum = 0;
    uint32_t mFlags = 0;
};

}  // namespace hardware
}  // namespace android

#endif
