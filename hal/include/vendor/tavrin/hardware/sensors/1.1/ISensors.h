// ISensors 1.1 of vendor.tavrin.hardware.sensors: the operations this library calls, at
// their positions in the interface. Unlisted positions hold operations it never calls.
#ifndef VENDOR_TAVRIN_HARDWARE_SENSORS_V1_1_ISENSORS_H
#define VENDOR_TAVRIN_HARDWARE_SENSORS_V1_1_ISENSORS_H

#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/StrongPointer.h>
#include <vendor/tavrin/hardware/sensors/1.0/ISensors.h>

#include <cstdint>
#include <functional>
#include <string>

namespace vendor {
namespace tavrin {
namespace hardware {
namespace sensors {
namespace V1_1 {

struct ISensors : public ::vendor::tavrin::hardware::sensors::V1_0::ISensors {
    static const char* descriptor;

    using handleSensorParameter_cb =
        std::function<void(int32_t ret, const ::android::hardware::hidl_string& info,
                           const ::android::hardware::hidl_vec<int32_t>& values)>;
    // Position 29.
    virtual ::android::hardware::Return<void> handleSensorParameter(
        int32_t sensorId, int32_t mainCmd, int32_t subCmd, int32_t length,
        handleSensorParameter_cb _hidl_cb) = 0;

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

}  // namespace V1_1
}  // namespace sensors
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor

#endif
