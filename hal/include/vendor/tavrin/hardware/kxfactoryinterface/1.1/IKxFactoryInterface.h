// IKxFactoryInterface 1.1 of vendor.tavrin.hardware.kxfactoryinterface: the operations this library
// calls, at their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_KXFACTORYINTERFACE_V1_1_IKXFACTORYINTERFACE_H
#define VENDOR_TAVRIN_HARDWARE_KXFACTORYINTERFACE_V1_1_IKXFACTORYINTERFACE_H

#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/StrongPointer.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/IKxFactoryInterface.h>

#include <cstdint>
#include <functional>
#include <string>

namespace vendor {
namespace tavrin {
namespace hardware {
namespace kxfactoryinterface {
namespace V1_1 {

struct IKxFactoryInterface
    : public ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface {
    static const char* descriptor;

    using readOeminfo_cb =
        std::function<void(int32_t code, const ::android::hardware::hidl_string& data)>;
    // Position 53.
    virtual ::android::hardware::Return<void> readOeminfo(int32_t a, int32_t b, int32_t c,
                                                          readOeminfo_cb _hidl_cb) = 0;
    // Position 57.
    virtual ::android::hardware::Return<int32_t> writeOeminfo(
        int32_t itemId, int32_t size, const ::android::hardware::hidl_string& data) = 0;
    // Position 64.
    virtual ::android::hardware::Return<int32_t> getManufactureMode() = 0;

    ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
    static ::android::hardware::Return<::android::sp<IKxFactoryInterface>> castFrom(
        const ::android::sp<
            ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface>& parent,
        bool emitError = false);
    static ::android::sp<IKxFactoryInterface> getService(const std::string& serviceName = "default",
                                                         bool getStub = false);
    static ::android::sp<IKxFactoryInterface> getService(const char serviceName[],
                                                         bool getStub = false) {
        return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
    }
    static ::android::sp<IKxFactoryInterface> getService(
        const ::android::hardware::hidl_string& serviceName, bool getStub = false) {
        return getService(std::string(serviceName.c_str()), getStub);
    }
    ::android::status_t registerAsService(const std::string& serviceName = "default");
    static bool registerForNotifications(
        const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);
};

}  // namespace V1_1
}  // namespace kxfactoryinterface
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
