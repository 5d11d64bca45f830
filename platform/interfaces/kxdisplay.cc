// Host client proxies and service-manager glue of vendor.tavrin.hardware.kxdisplay.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/kxdisplay/1.0/IDisplay.h>
#include <vendor/tavrin/hardware/kxdisplay/1.1/IDisplay.h>

#include "interface_glue.h"

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::details::HostProxy;

template <typename I>
class DisplayProxyV1_0 : public HostProxy<I> {
  public:
    using HostProxy<I>::HostProxy;
};

template <typename I>
class DisplayProxyV1_1 : public DisplayProxyV1_0<I> {
  public:
    using DisplayProxyV1_0<I>::DisplayProxyV1_0;
    Return<int32_t> setDisplayFps(int32_t freqIndex) override {
        return this
            ->template transact<::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay, int32_t>(
                23, "setDisplayFps", [&](::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay& s) {
                    return s.setDisplayFps(freqIndex);
                });
    }
    Return<void> getDisplayFpsConfig(
        typename ::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay::getDisplayFpsConfig_cb
            _hidl_cb) override {
        return this->template transact<::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay, void>(
            24, "getDisplayFpsConfig",
            [&](::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay& s) {
                return s.getDisplayFpsConfig(_hidl_cb);
            });
    }
};

}  // namespace

namespace vendor {
namespace tavrin {
namespace hardware {
namespace kxdisplay {
namespace V1_0 {

const char* IDisplay::descriptor = "vendor.tavrin.hardware.kxdisplay@1.0::IDisplay";

HOST_INTERFACE_GLUE(IDisplay, DisplayProxyV1_0<IDisplay>,
                    ::vendor::tavrin::hardware::kxdisplay::V1_0::IDisplay,
                    ::vendor::tavrin::hardware::kxdisplay::V1_0::IDisplay::descriptor)

}  // namespace V1_0
}  // namespace kxdisplay
namespace kxdisplay {
namespace V1_1 {

const char* IDisplay::descriptor = "vendor.tavrin.hardware.kxdisplay@1.1::IDisplay";

HOST_INTERFACE_GLUE(IDisplay, DisplayProxyV1_1<IDisplay>,
                    ::vendor::tavrin::hardware::kxdisplay::V1_0::IDisplay,
                    ::vendor::tavrin::hardware::kxdisplay::V1_1::IDisplay::descriptor,
                    ::vendor::tavrin::hardware::kxdisplay::V1_0::IDisplay::descriptor)

}  // namespace V1_1
}  // namespace kxdisplay
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
