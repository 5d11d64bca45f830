// Host client proxies and service-manager glue of vendor.tavrin.hardware.sensors.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/sensors/1.0/ISensors.h>
#include <vendor/tavrin/hardware/sensors/1.1/ISensors.h>

#include "interface_glue.h"

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::details::HostProxy;

template <typename I>
class SensorsProxyV1_0 : public HostProxy<I> {
  public:
    using HostProxy<I>::HostProxy;
    Return<int32_t> getSensorCalibrateDelayTime(int32_t sensorId) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                11, "getSensorCalibrateDelayTime",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.getSensorCalibrateDelayTime(sensorId);
                });
    }
    Return<int32_t> getSensorSelfTestDelayTime(int32_t sensorId) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                12, "getSensorSelfTestDelayTime",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.getSensorSelfTestDelayTime(sensorId);
                });
    }
    Return<int32_t> startSensorCalibrate(int32_t sensorId, int32_t command) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                13, "startSensorCalibrate",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.startSensorCalibrate(sensorId, command);
                });
    }
    Return<int32_t> getSensorCalibrateResult(int32_t sensorId) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                14, "getSensorCalibrateResult",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.getSensorCalibrateResult(sensorId);
                });
    }
    Return<int32_t> startSensorSelfTest(int32_t sensorId, int32_t command) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                15, "startSensorSelfTest",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.startSensorSelfTest(sensorId, command);
                });
    }
    Return<int32_t> getSensorSelfTestResult(int32_t sensorId) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                16, "getSensorSelfTestResult",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.getSensorSelfTestResult(sensorId);
                });
    }
    Return<void> getSensorCalibrateType(
        int32_t sensorId, int32_t flag,
        typename ::vendor::tavrin::hardware::sensors::V1_0::ISensors::getSensorCalibrateType_cb
            _hidl_cb) override {
        return this->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, void>(
            17, "getSensorCalibrateType",
            [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                return s.getSensorCalibrateType(sensorId, flag, _hidl_cb);
            });
    }
    Return<int32_t> getCompassRawValueLimit() override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                20, "getCompassRawValueLimit",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.getCompassRawValueLimit();
                });
    }
    Return<int32_t> setApPressureCalibrationExtern(
        int32_t sensorId, int32_t testCtrl,
        const ::android::hardware::hidl_vec<int32_t>& rawData) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                21, "setApPressureCalibrationExtern",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.setApPressureCalibrationExtern(sensorId, testCtrl, rawData);
                });
    }
    Return<void> getFlickerRawData(
        int32_t value,
        typename ::vendor::tavrin::hardware::sensors::V1_0::ISensors::getFlickerRawData_cb _hidl_cb)
        override {
        return this->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, void>(
            24, "getFlickerRawData", [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                return s.getFlickerRawData(value, _hidl_cb);
            });
    }
    Return<int32_t> setPsExternalIrMode(int32_t mode) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                25, "setPsExternalIrMode",
                [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.setPsExternalIrMode(mode);
                });
    }
    Return<int32_t> sensorActivate(int32_t sensorType, bool enable, int64_t samplingRate) override {
        return this
            ->template transact<::vendor::tavrin::hardware::sensors::V1_0::ISensors, int32_t>(
                28, "sensorActivate", [&](::vendor::tavrin::hardware::sensors::V1_0::ISensors& s) {
                    return s.sensorActivate(sensorType, enable, samplingRate);
                });
    }
};

template <typename I>
class SensorsProxyV1_1 : public SensorsProxyV1_0<I> {
  public:
    using SensorsProxyV1_0<I>::SensorsProxyV1_0;
    Return<void> handleSensorParameter(
        int32_t sensorId, int32_t mainCmd, int32_t subCmd, int32_t length,
        typename ::vendor::tavrin::hardware::sensors::V1_1::ISensors::handleSensorParameter_cb
            _hidl_cb) override {
        return this->template transact<::vendor::tavrin::hardware::sensors::V1_1::ISensors, void>(
            29, "handleSensorParameter",
            [&](::vendor::tavrin::hardware::sensors::V1_1::ISensors& s) {
                return s.handleSensorParameter(sensorId, mainCmd, subCmd, length, _hidl_cb);
            });
    }
};

}  // namespace

namespace vendor {
namespace tavrin {
namespace hardware {
namespace sensors {
namespace V1_0 {

const char* ISensors::descriptor = "vendor.tavrin.hardware.sensors@1.0::ISensors";

HOST_INTERFACE_GLUE(ISensors, SensorsProxyV1_0<ISensors>,
                    ::vendor::tavrin::hardware::sensors::V1_0::ISensors,
                    ::vendor::tavrin::hardware::sensors::V1_0::ISensors::descriptor)

}  // namespace V1_0
}  // namespace sensors
namespace sensors {
namespace V1_1 {

const char* ISensors::descriptor = "vendor.tavrin.hardware.sensors@1.1::ISensors";

HOST_INTERFACE_GLUE(ISensors, SensorsProxyV1_1<ISensors>,
                    ::vendor::tavrin::hardware::sensors::V1_0::ISensors,
                    ::vendor::tavrin::hardware::sensors::V1_1::ISensors::descriptor,
                    ::vendor::tavrin::hardware::sensors::V1_0::ISensors::descriptor)

}  // namespace V1_1
}  // namespace sensors
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
