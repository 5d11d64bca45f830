// IOtherdevices 1.0 of vendor.tavrin.hardware.otherdevices: the operations this library calls, at
// their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_OTHERDEVICES_V1_0_IOTHERDEVICES_H
#define VENDOR_TAVRIN_HARDWARE_OTHERDEVICES_V1_0_IOTHERDEVICES_H

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <functional>
#include <string>

namespace vendor {
namespace tavrin {
namespace hardware {
namespace otherdevices {
namespace V1_0 {

struct IOtherdevices : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    using getTouchkeyCapacitanceTestResult_cb =
        std::function<void(int32_t ret, const ::android::hardware::hidl_string& failInfo)>;
    // Position 1.
    virtual ::android::hardware::Return<void> getTouchkeyCapacitanceTestResult(
        int32_t value, getTouchkeyCapacitanceTestResult_cb _hidl_cb) = 0;
    // Position 2.
    virtual ::android::hardware::Return<int32_t> getTouchKeySupportState(int32_t value) = 0;

    ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
    static ::android::hardware::Return<::android::sp<IOtherdevices>> castFrom(
        const ::android::sp<::vendor::tavrin::hardware::otherdevices::V1_0::IOtherdevices>& parent,
        bool emitError = false);
    static ::android::sp<IOtherdevices> getService(const std::string& serviceName = "default",
                                                   bool getStub = false);
    static ::android::sp<IOtherdevices> getService(const char serviceName[], bool getStub = false) {
        return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
    }
    static ::android::sp<IOtherdevices> getService(
        const ::android::hardware::hidl_string& serviceName, bool getStub = false) {
        return getService(std::string(serviceName.c_str()), getStub);
    }
    ::android::status_t registerAsService(const std::string& serviceName = "default");
    static bool registerForNotifications(
        const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);
};

}  // namespace V1_0
}  // namespace otherdevices
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
