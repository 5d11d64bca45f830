// Host client proxies and service-manager glue of vendor.tavrin.hardware.otherdevices.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/otherdevices/1.0/IOtherdevices.h>

#include "interface_glue.h"

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::details::HostProxy;

template <typename I>
class OtherdevicesProxyV1_0 : public HostProxy<I> {
  public:
    using HostProxy<I>::HostProxy;
    Return<void> getTouchkeyCapacitanceTestResult(
        int32_t value, typename ::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices::
                           getTouchkeyCapacitanceTestResult_cb _hidl_cb) override {
        return this->template transact<
            ::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices, void>(
            1, "getTouchkeyCapacitanceTestResult",
            [&](::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices& s) {
                return s.getTouchkeyCapacitanceTestResult(value, _hidl_cb);
            });
    }
    Return<int32_t> getTouchKeySupportState(int32_t value) override {
        return this->template transact<
            ::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices, int32_t>(
            2, "getTouchKeySupportState",
            [&](::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices& s) {
                return s.getTouchKeySupportState(value);
            });
    }
};

}  // namespace

namespace vendor {
namespace tavrin {
namespace hardware {
namespace otherdevices {
namespace V1_0 {

const char* IOtherdevices::descriptor = "vendor.tavrin.hardware.otherdevices@1.0::IOtherdevices";

HOST_INTERFACE_GLUE(IOtherdevices, OtherdevicesProxyV1_0<IOtherdevices>,
                    ::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices,
                    ::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices::descriptor)

}  // namespace V1_0
}  // namespace otherdevices
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
