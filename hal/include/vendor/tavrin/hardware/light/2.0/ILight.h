// ILight 2.0 of vendor.tavrin.hardware.light: the operations this library calls, at
// their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_LIGHT_V2_0_ILIGHT_H
#define VENDOR_TAVRIN_HARDWARE_LIGHT_V2_0_ILIGHT_H

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
namespace light {
namespace V2_0 {

struct ILight : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    // Position 5.
    virtual ::android::hardware::Return<int32_t> setLightBrightness(int32_t lightId,
                                                                    int32_t brightness) = 0;

    ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
    static ::android::hardware::Return<::android::sp<ILight>> castFrom(
        const ::android::sp<::vendor::tavrin::hardware::light::V2_0::ILight>& parent,
        bool emitError = false);
    static ::android::sp<ILight> getService(const std::string& serviceName = "default",
                                            bool getStub = false);
    static ::android::sp<ILight> getService(const char serviceName[], bool getStub = false) {
        return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
    }
    static ::android::sp<ILight> getService(const ::android::hardware::hidl_string& serviceName,
                                            bool getStub = false) {
        return getService(std::string(serviceName.c_str()), getStub);
    }
    ::android::status_t registerAsService(const std::string& serviceName = "default");
    static bool registerForNotifications(
        const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);
};

}  // namespace V2_0
}  // namespace light
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
