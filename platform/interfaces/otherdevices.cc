// Host client proxies and service-manager glue of vendor.tavrin.hardware.otherdevices.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/otherdevices/1.0/IOtherdevices.h>

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

Return<void> IOtherdevices::interfaceChain(interfaceChain_cb _hidl_cb) {
    _hidl_cb(
        {hidl_string(::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices::descriptor),
         hidl_string(::android::hidl::base::V1_0::IBase::descriptor)});
    return ::android::hardware::Void();
}

Return<sp<IOtherdevices>> IOtherdevices::castFrom(
    const sp<::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices>& parent,
    bool emitError) {
    (void)emitError;
    return parent;
}

sp<IOtherdevices> IOtherdevices::getService(const std::string& serviceName, bool /*getStub*/) {
    return ::android::hardware::details::getServiceInternal<IOtherdevices,
                                                            OtherdevicesProxyV1_0<IOtherdevices>>(
        serviceName);
}

::android::status_t IOtherdevices::registerAsService(const std::string& serviceName) {
    return ::android::hardware::details::registerAsServiceInternal(this, serviceName);
}

bool IOtherdevices::registerForNotifications(
    const std::string& serviceName,
    const sp<::android::hidl::manager::V1_0::IServiceNotification>& notification) {
    return ::android::hardware::details::registerForNotificationsInternal(descriptor, serviceName,
                                                                          notification);
}

}  // namespace V1_0
}  // namespace otherdevices
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
