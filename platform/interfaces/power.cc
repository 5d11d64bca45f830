// Host client proxies and service-manager glue of vendor.tavrin.hardware.power.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/power/1.0/IKXPower.h>

#include "interface_glue.h"

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::details::HostProxy;

template <typename I>
class KXPowerProxyV1_0 : public HostProxy<I> {
  public:
    using HostProxy<I>::HostProxy;
    Return<void> getPowerState(
        const ::android::hardware::hidl_string& query,
        typename ::vendor::tavrin::hardware::power::V1_0::IKXPower::getPowerState_cb _hidl_cb)
        override {
        return this->template transact<::vendor::tavrin::hardware::power::V1_0::IKXPower, void>(
            5, "getPowerState", [&](::vendor::tavrin::hardware::power::V1_0::IKXPower& s) {
                return s.getPowerState(query, _hidl_cb);
            });
    }
    Return<int32_t> setPowerState(const ::android::hardware::hidl_string& testScene,
                                  const ::android::hardware::hidl_string& para) override {
        return this->template transact<::vendor::tavrin::hardware::power::V1_0::IKXPower, int32_t>(
            6, "setPowerState", [&](::vendor::tavrin::hardware::power::V1_0::IKXPower& s) {
                return s.setPowerState(testScene, para);
            });
    }
    Return<void> checkUsbSpeed(
        const ::android::hardware::hidl_string& scene, const ::android::hardware::hidl_string& arg1,
        const ::android::hardware::hidl_string& arg2, const ::android::hardware::hidl_string& arg3,
        typename ::vendor::tavrin::hardware::power::V1_0::IKXPower::checkUsbSpeed_cb _hidl_cb)
        override {
        return this->template transact<::vendor::tavrin::hardware::power::V1_0::IKXPower, void>(
            9, "checkUsbSpeed", [&](::vendor::tavrin::hardware::power::V1_0::IKXPower& s) {
                return s.checkUsbSpeed(scene, arg1, arg2, arg3, _hidl_cb);
            });
    }
};

}  // namespace

namespace vendor {
namespace tavrin {
namespace hardware {
namespace power {
namespace V1_0 {

const char* IKXPower::descriptor = "vendor.tavrin.hardware.power@1.0::IKXPower";

HOST_INTERFACE_GLUE(IKXPower, KXPowerProxyV1_0<IKXPower>,
                    ::vendor::tavrin::hardware::power::V1_0::IKXPower,
                    ::vendor::tavrin::hardware::power::V1_0::IKXPower::descriptor)

}  // namespace V1_0
}  // namespace power
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
