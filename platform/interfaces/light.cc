// Host client proxies and service-manager glue of vendor.tavrin.hardware.light.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/light/2.0/ILight.h>

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

Return<void> ILight::interfaceChain(interfaceChain_cb _hidl_cb) {
    _hidl_cb({hidl_string(::vendor::tavrin::hardware::light::V2_0::ILight::descriptor),
              hidl_string(::android::hidl::base::V1_0::IBase::descriptor)});
    return ::android::hardware::Void();
}

Return<sp<ILight>> ILight::castFrom(
    const sp<::vendor::tavrin::hardware::light::V2_0::ILight>& parent, bool emitError) {
    (void)emitError;
    return parent;
}

sp<ILight> ILight::getService(const std::string& serviceName, bool /*getStub*/) {
    return ::android::hardware::details::getServiceInternal<ILight, LightProxyV2_0<ILight>>(
        serviceName);
}

::android::status_t ILight::registerAsService(const std::string& serviceName) {
    return ::android::hardware::details::registerAsServiceInternal(this, serviceName);
}

bool ILight::registerForNotifications(
    const std::string& serviceName,
    const sp<::android::hidl::manager::V1_0::IServiceNotification>& notification) {
    return ::android::hardware::details::registerForNotificationsInternal(descriptor, serviceName,
                                                                          notification);
}

}  // namespace V2_0
}  // namespace light
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
