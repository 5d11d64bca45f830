// IDisplay 1.1 of vendor.tavrin.hardware.kxdisplay: the operations this library calls, at
// their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_KXDISPLAY_V1_1_IDISPLAY_H
#define VENDOR_TAVRIN_HARDWARE_KXDISPLAY_V1_1_IDISPLAY_H

#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/StrongPointer.h>
#include <vendor/tavrin/hardware/kxdisplay/1.0/IDisplay.h>

#include <cstdint>
#include <functional>
#include <string>

namespace vendor {
namespace tavrin {
namespace hardware {
namespace kxdisplay {
namespace V1_1 {

struct IDisplay : public ::vendor::tavrin::hardware::kxdisplay::V1_0::IDisplay {
    static const char* descriptor;

    // Position 23.
    virtual ::android::hardware::Return<int32_t> setDisplayFps(int32_t freqIndex) = 0;
    using getDisplayFpsConfig_cb =
        std::function<void(::vendor::tavrin::hardware::kxdisplay::V1_0::DISPLAY_RET result,
                           const ::android::hardware::hidl_string& config)>;
    // Position 24.
    virtual ::android::hardware::Return<void> getDisplayFpsConfig(
        getDisplayFpsConfig_cb _hidl_cb) = 0;

    ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
    static ::android::hardware::Return<::android::sp<IDisplay>> castFrom(
        const ::android::sp<::vendor::tavrin::hardware::kxdisplay::V1_0::IDisplay>& parent,
        bool emitError = false);
    static ::android::sp<IDisplay> getService(const std::string& serviceName = "default",
                                              bool getStub = false);
    static ::android::sp<IDisplay> getService(const char serviceName[], bool getStub = false) {
        return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
    }
    static ::android::sp<IDisplay> getService(const ::android::hardware::hidl_string& serviceName,
                                              bool getStub = false) {
        return getService(std::string(serviceName.c_str()), getStub);
    }
    ::android::status_t registerAsService(const std::string& serviceName = "default");
    static bool registerForNotifications(
        const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);
};

}  // namespace V1_1
}  // namespace kxdisplay
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
