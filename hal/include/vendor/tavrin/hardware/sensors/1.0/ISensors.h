// ISensors 1.0 of vendor.tavrin.hardware.sensors: the operations this library calls, at
// their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_SENSORS_V1_0_ISENSORS_H
#define VENDOR_TAVRIN_HARDWARE_SENSORS_V1_0_ISENSORS_H

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
namespace sensors {
namespace V1_0 {

struct ISensors : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    // Position 11.
    virtual ::android::hardware::Return<int32_t> getSensorCalibrateDelayTime(int32_t sensorId) = 0;
    // Position 12.
    virtual ::android::hardware::Return<int32_t> getSensorSelfTestDelayTime(int32_t sensorId) = 0;
    // Position 13.
    virtual ::android::hardware::Return<int32_t> startSensorCalibrate(int32_t sensorId,
                                                                      int32_t command) = 0;
    // Position 14.
    virtual ::android::hardware::Return<int32_t> getSensorCalibrateResult(int32_t sensorId) = 0;
    // Position 15.
    virtual ::android::hardware::Return<int32_t> startSensorSelfTest(int32_t sensorId,
                                                                     int32_t command) = 0;
    // Position 16.
    virtual ::android::hardware::Return<int32_t> getSensorSelfTestResult(int32_t sensorId) = 0;
    using getSensorCalibrateType_cb =
        std::function<void(int32_t resultCode, const ::android::hardware::hidl_string& calibType)>;
    // Position 17.
    virtual ::android::hardware::Return<void> getSensorCalibrateType(
        int32_t sensorId, int32_t flag, getSensorCalibrateType_cb _hidl_cb) = 0;
    // Position 20.
    virtual ::android::hardware::Return<int32_t> getCompassRawValueLimit() = 0;
    // Position 21.
    virtual ::android::hardware::Return<int32_t> setApPressureCalibrationExtern(
        int32_t sensorId, int32_t testCtrl,
        const ::android::hardware::hidl_vec<int32_t>& rawData) = 0;
    using getFlickerRawData_cb = std::function<void(
        int32_t resultCode, const ::android::hardware::hidl_vec<int32_t>& samples)>;
    // Position 24.
    virtual ::android::hardware::Return<void> getFlickerRawData(int32_t value,
                                                                getFlickerRawData_cb _hidl_cb) = 0;
    // Position 25.
    virtual ::android::hardware::Return<int32_t> setPsExternalIrMode(int32_t mode) = 0;
    // Position 28.
    virtual ::android::hardware::Return<int32_t> sensorActivate(int32_t sensorType, bool enable,
                                                                int64_t samplingRate) = 0;

    ::android::hardware::Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
    static ::android::hardware::Return<::android::sp<ISensors>> castFrom(
        const ::android::sp<::vendor::tavrin::hardware::sensors::V1_0::ISensors>& parent,
        bool emitError = false);
    static ::android::sp<ISensors> getService(const std::string& serviceName = "default",
                                              bool getStub = false);
    static ::android::sp<ISensors> getService(const char serviceName[], bool getStub = false) {
        return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
    }
    static ::android::sp<ISensors> getService(const ::android::hardware::hidl_string& serviceName,
                                              bool getStub = false) {
        return getService(std::string(serviceName.c_str()), getStub);
    }
    ::android::status_t registerAsService(const std::string& serviceName = "default");
    static bool registerForNotifications(
        const std::string& serviceName,
        const ::android::sp<::android::hidl::manager::V1_0::IServiceNotification>& notification);
};

}  // namespace V1_0
}  // namespace sensors
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
