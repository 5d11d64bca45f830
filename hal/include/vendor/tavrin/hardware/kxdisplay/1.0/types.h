// Types of vendor.tavrin.hardware.kxdisplay@1.0.
#ifndef VENDOR_TAVRIN_HARDWARE_KXDISPLAY_V1_0_TYPES_H
#define VENDOR_TAVRIN_HARDWARE_KXDISPLAY_V1_0_TYPES_H

#include <cstdint>

namespace vendor {
namespace tavrin {
namespace hardware {
namespace kxdisplay {
namespace V1_0 {

// Result of the display's operations. The service defines further failure values; only success
// is known to its clients.
enum class DISPLAY_RET : int32_t {
    SUCCESS = 0,
};

}  // namespace V1_0
}  // namespace kxdisplay
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
