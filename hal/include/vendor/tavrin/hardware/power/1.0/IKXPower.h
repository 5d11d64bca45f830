// IKXPower 1.0 of vendor.tavrin.hardware.power: the operations this library calls, at
// their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_POWER_V1_0_IKXPOWER_H
#define VENDOR_TAVRIN_HARDWARE_POWER_V1_0_IKXPOWER_H

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
namespace power {
namespace V1_0 {

struct IKXPower : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    using getPowerState_cb =
        std::function<void(int32_t code, const ::android::hardware::hidl_string& info)>;
    // Position 5.
    virtual ::android::hardware::Return<void> getPowerState(
        const ::android::hardware::hidl_string& query, getPowerState_cb _hidl_cb) = 0;
    // Position 6.
    virtual ::android::hardware::Return<int32_t> setPowerState(
        const ::android::hardware::hidl_string& testScene,
        const ::android::hardware::hidl_string& para) = 0;
    using checkUsbSpeed_cb =
        std::function<void(int32_t code, const ::android::hardware::hidl_string& info)>;
    // Position 9.
    virtual ::android::hardware::Return<void> checkUsbSpeed(
        const ::android::hardware::hidl_string& scene, const ::android::hardware::hidl_string& arg1,
        const ::android::hardware::hidl_string& arg2, const ::android::hardware::hidl_string& arg3,
        checkUsbSpeed_cb _hidl_cb) = 0;

    ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
    static ::android::hardware::Return<::android::sp<IKXPower>> castFrom(
        const ::android::sp<::vendor::tavrin::hardware::power::V1_0::IKXPower>& parent,
        bool emitError = false);
    static ::android::sp<IKXPower> getService(const std::string& serviceName = "default",
                                              bool getStub = false);
    static ::android::sp<IKXPower> getService(const char serviceName[], bool getStub = false) {
        return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
    }
    static ::android::sp<IKXPower> getService(const ::android::hardware::hidl_string& serviceName,
                                              bool getStub = false) {
        return getService(std::string(serviceName.c_str()), getStub);
    }
    ::android::status_t registerAsService(const std::string& serviceName = "default");
    static bool registerForNotifications(
        const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);
};

}  // namespace V1_0
}  // namespace power
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
