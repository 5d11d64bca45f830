// ITouchscreen 1.0 of vendor.tavrin.hardware.tp: the operations this library calls, at
// their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_TP_V1_0_ITOUCHSCREEN_H
#define VENDOR_TAVRIN_HARDWARE_TP_V1_0_ITOUCHSCREEN_H

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
namespace tp {
namespace V1_0 {

struct ITouchscreen : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    using getRotateCrownTestResult_cb =
        std::function<void(bool passed, const ::android::hardware::hidl_string& info)>;
    // Position 6.
    virtual ::android::hardware::Return<void> getRotateCrownTestResult(
        getRotateCrownTestResult_cb _hidl_cb) = 0;
    using getCapacitanceTestResult_cb =
        std::function<void(int32_t ret, const ::android::hardware::hidl_string& failInfo)>;
    // Position 11.
    virtual ::android::hardware::Return<void> getCapacitanceTestResult(
        getCapacitanceTestResult_cb _hidl_cb) = 0;
    using getCapacitanceCalibrateResult_cb =
        std::function<void(int32_t ret, const ::android::hardware::hidl_string& info)>;
    // Position 13.
    virtual ::android::hardware::Return<void> getCapacitanceCalibrateResult(
        int32_t value, getCapacitanceCalibrateResult_cb _hidl_cb) = 0;
    // Position 16.
    virtual ::android::hardware::Return<int64_t> getTpPressureWaitingTime() = 0;
    // Position 17.
    virtual ::android::hardware::Return<bool> isTpPressureSupported() = 0;
    // Position 20.
    virtual ::android::hardware::Return<int32_t> getTpPressureStatus() = 0;
    // Position 25.
    virtual ::android::hardware::Return<int32_t> getTpPressureVerifyResult(int32_t value) = 0;
    // Position 26.
    virtual ::android::hardware::Return<bool> controlTpPressureCalibMode0() = 0;
    // Position 27.
    virtual ::android::hardware::Return<bool> controlTpPressureCalibMode1() = 0;
    // Position 28.
    virtual ::android::hardware::Return<bool> setTpPressureCalibration0(int32_t index) = 0;
    // Position 29.
    virtual ::android::hardware::Return<bool> setTpPressureCalibration1(int32_t index) = 0;
    // Position 30.
    virtual ::android::hardware::Return<bool> setTpPressureVerification0(int32_t index) = 0;
    // Position 31.
    virtual ::android::hardware::Return<bool> setTpPressureVerification1(int32_t index) = 0;
    // Position 33.
    virtual ::android::hardware::Return<int32_t> checkTpPressureCalibPosition(int32_t x, int32_t y,
                                                                              int32_t z) = 0;
    // Position 39.
    virtual ::android::hardware::Return<int32_t> setTouchScreenFeatureConfig(
        int32_t feature, const ::android::hardware::hidl_string& config) = 0;

    ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
    static ::android::hardware::Return<::android::sp<ITouchscreen>> castFrom(
        const ::android::sp<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen>& parent,
        bool emitError = false);
    static ::android::sp<ITouchscreen> getService(const std::string& serviceName = "default",
                                                  bool getStub = false);
    static ::android::sp<ITouchscreen> getService(const char serviceName[], bool getStub = false) {
        return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
    }
    static ::android::sp<ITouchscreen> getService(
        const ::android::hardware::hidl_string& serviceName, bool getStub = false) {
        return getService(std::string(serviceName.c_str()), getStub);
    }
    ::android::status_t registerAsService(const std::string& serviceName = "default");
    static bool registerForNotifications(
        const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);
};

}  // namespace V1_0
}  // namespace tp
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
