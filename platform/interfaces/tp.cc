// Host client proxies and service-manager glue of vendor.tavrin.hardware.tp.

#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/tp/1.0/ITouchscreen.h>

#include "interface_glue.h"

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::details::HostProxy;

template <typename I>
class TouchscreenProxyV1_0 : public HostProxy<I> {
  public:
    using HostProxy<I>::HostProxy;
    Return<void> getRotateCrownTestResult(
        typename ::vendor::tavrin::hardware::tp::V1_0::ITouchscreen::getRotateCrownTestResult_cb
            _hidl_cb) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, void>(
            6, "getRotateCrownTestResult",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.getRotateCrownTestResult(_hidl_cb);
            });
    }
    Return<void> getCapacitanceTestResult(
        typename ::vendor::tavrin::hardware::tp::V1_0::ITouchscreen::getCapacitanceTestResult_cb
            _hidl_cb) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, void>(
            11, "getCapacitanceTestResult",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.getCapacitanceTestResult(_hidl_cb);
            });
    }
    Return<void> getCapacitanceCalibrateResult(
        int32_t value, typename ::vendor::tavrin::hardware::tp::V1_0::ITouchscreen::
                           getCapacitanceCalibrateResult_cb _hidl_cb) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, void>(
            13, "getCapacitanceCalibrateResult",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.getCapacitanceCalibrateResult(value, _hidl_cb);
            });
    }
    Return<int64_t> getTpPressureWaitingTime() override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, int64_t>(
            16, "getTpPressureWaitingTime",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.getTpPressureWaitingTime();
            });
    }
    Return<bool> isTpPressureSupported() override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, bool>(
            17, "isTpPressureSupported",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.isTpPressureSupported();
            });
    }
    Return<int32_t> getTpPressureStatus() override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, int32_t>(
            20, "getTpPressureStatus", [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.getTpPressureStatus();
            });
    }
    Return<int32_t> getTpPressureVerifyResult(int32_t value) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, int32_t>(
            25, "getTpPressureVerifyResult",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.getTpPressureVerifyResult(value);
            });
    }
    Return<bool> controlTpPressureCalibMode0() override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, bool>(
            26, "controlTpPressureCalibMode0",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.controlTpPressureCalibMode0();
            });
    }
    Return<bool> controlTpPressureCalibMode1() override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, bool>(
            27, "controlTpPressureCalibMode1",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.controlTpPressureCalibMode1();
            });
    }
    Return<bool> setTpPressureCalibration0(int32_t index) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, bool>(
            28, "setTpPressureCalibration0",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.setTpPressureCalibration0(index);
            });
    }
    Return<bool> setTpPressureCalibration1(int32_t index) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, bool>(
            29, "setTpPressureCalibration1",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.setTpPressureCalibration1(index);
            });
    }
    Return<bool> setTpPressureVerification0(int32_t index) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, bool>(
            30, "setTpPressureVerification0",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.setTpPressureVerification0(index);
            });
    }
    Return<bool> setTpPressureVerification1(int32_t index) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, bool>(
            31, "setTpPressureVerification1",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.setTpPressureVerification1(index);
            });
    }
    Return<int32_t> checkTpPressureCalibPosition(int32_t x, int32_t y, int32_t z) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, int32_t>(
            33, "checkTpPressureCalibPosition",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.checkTpPressureCalibPosition(x, y, z);
            });
    }
    Return<int32_t> setTouchScreenFeatureConfig(
        int32_t feature, const ::android::hardware::hidl_string& config) override {
        return this->template transact<::vendor::tavrin::hardware::tp::V1_0::ITouchscreen, int32_t>(
            39, "setTouchScreenFeatureConfig",
            [&](::vendor::tavrin::hardware::tp::V1_0::ITouchscreen& s) {
                return s.setTouchScreenFeatureConfig(feature, config);
            });
    }
};

}  // namespace

namespace vendor {
namespace tavrin {
namespace hardware {
namespace tp {
namespace V1_0 {

const char* ITouchscreen::descriptor = "vendor.tavrin.hardware.tp@1.0::ITouchscreen";

HOST_INTERFACE_GLUE(ITouchscreen, TouchscreenProxyV1_0<ITouchscreen>,
                    ::vendor::tavrin::hardware::tp::V1_0::ITouchscreen,
                    ::vendor::tavrin::hardware::tp::V1_0::ITouchscreen::descriptor)

}  // namespace V1_0
}  // namespace tp
}  // namespace hardware
}  // namespace tavrin
}  // namespace vendor
