// Host client proxies and service-manager glue of vendor.tavrin.hardware.light.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/light/2.0/ILight.h>

#include "interface_glue.h"

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::details::HostProxy;

template <typename I>
class LightProxyV2_0 : public HostProxy<I> {
  public:
    using HostProxy<I>::HostProxy;
    Return<int32_t> setLightBrightness(int32_t lightId, int32_t brightness) override {
        return this->template transact<::vendor::tavrin::hardware::light::V2_0::ILight, int32_t>(
            5, "setLightBrightness", [&](::vendor::tavrin::hardware::light::V2_0::ILight& s) {
                return s.setLightBrightness(lightId, brightness);
            });
    }
};

}  // namespace

namespace vendor {
namespace tavrin {
namespace hardware {
namespace light {
namespace V2_0 {

const char* ILight::descriptor = "vendor.tavrin.hardware.light@2.0::ILight";

HOST_INTERFACE_GLUE(ILight, LightProxyV2_0<ILight>, ::vendor::tavrin::hardware::light::V2_0::ILight,
                    ::vendor::tavrin::hardware::light::V2_0::ILight::descriptor)

}  // namespace V2_0
}  // namespace light
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
