// IKxFactoryInterface 1.0 of vendor.tavrin.hardware.kxfactoryinterface: the operations this library
// calls, at their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_KXFACTORYINTERFACE_V1_0_IKXFACTORYINTERFACE_H
#define VENDOR_TAVRIN_HARDWARE_KXFACTORYINTERFACE_V1_0_IKXFACTORYINTERFACE_H

#include <android/hidl/base/1.0/IBase.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/StrongPointer.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/types.h>

#include <cstdint>
#include <functional>
#include <string>

namespace vendor {
namespace tavrin {
namespace hardware {
namespace kxfactoryinterface {
namespace V1_0 {

struct IKxFactoryInterface : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    // Position 1.
    virtual ::android::hardware::Return<bool> isFactoryVersion() = 0;
    using getManufactureFileName_cb =
        std::function<void(int32_t code, const ::android::hardware::hidl_string& fileName)>;
    // Position 2.
    virtual ::android::hardware::Return<void> getManufactureFileName(
        getManufactureFileName_cb _hidl_cb) = 0;
    // Position 3.
    virtual ::android::hardware::Return<int32_t> setMmiTestResult(int32_t first,
                                                                  int32_t second) = 0;
    using getFactoryInfo_cb =
        std::function<void(int32_t code, const ::android::hardware::hidl_string& value)>;
    // Position 4.
    virtual ::android::hardware::Return<void> getFactoryInfo(int32_t infoKind,
                                                             getFactoryInfo_cb _hidl_cb) = 0;
    // Position 5.
    virtual ::android::hardware::Return<int32_t> setFactoryInfo(
        int32_t infoKind, const ::android::hardware::hidl_string& value) = 0;
    using getManufactureStationFlag_cb =
        std::function<void(int32_t code, const ::android::hardware::hidl_string& stationFlag)>;
    // Position 6.
    virtual ::android::hardware::Return<void> getManufactureStationFlag(
        int32_t stationId, getManufactureStationFlag_cb _hidl_cb) = 0;
    // Position 20.
    virtual ::android::hardware::Return<int32_t> getMmiDeviceFeaturesCheckResult(
        int32_t feature) = 0;
    using executeHighTemperInterceptCmd_cb =
        std::function<void(int32_t resultCode, const ::android::hardware::hidl_string& resultInfo)>;
    // Position 27.
    virtual ::android::hardware::Return<void> executeHighTemperInterceptCmd(
        const ::android::hardware::hidl_string& testScene,
        const ::android::hardware::hidl_string& parameters,
        executeHighTemperInterceptCmd_cb _hidl_cb) = 0;
    // Position 47.
    virtual ::android::hardware::Return<int32_t> sendBigDataOperation(
        const FmdOperation& operation) = 0;
    // Position 48.
    virtual ::android::hardware::Return<int32_t> sendBigDataValue(const FmdMsg& msg) = 0;
    // Position 50.
    virtual ::android::hardware::Return<int32_t> releaseFactoryHidlResource() = 0;

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

}  // namespace V1_0
}  // namespace kxfactoryinterface
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
