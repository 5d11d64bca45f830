// The seven service objects. Each operation hands its arguments to the device core, which records
// the call and says what to answer; the object then returns the value, invokes the callback, or
// fails the transaction. They derive from the interface compiler's default implementations
// (hidl-gen -Lc++-impl, made at build time), which also serve the reserved operations that the
// library never calls.
#include <hidl/HostTransport.h>
#include <vendor/tavrin/hardware/kxdisplay/1.0/types.h>

#include <functional>
#include <type_traits>
#include <utility>

#include "internal.h"
#include "kxdisplay/Display.h"
#include "kxfactoryinterface/KxFactoryInterface.h"
#include "light/Light.h"
#include "otherdevices/Otherdevices.h"
#include "power/KXPower.h"
#include "sensors/Sensors.h"
#include "tp/Touchscreen.h"

namespace simdevice {
namespace internal {

namespace {

using ::android::sp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;

namespace factory = ::vendor::tavrin::hardware::kxfactoryinterface;
namespace display = ::vendor::tavrin::hardware::kxdisplay;
namespace tp = ::vendor::tavrin::hardware::tp;
namespace sensors = ::vendor::tavrin::hardware::sensors;
namespace power = ::vendor::tavrin::hardware::power;
namespace light = ::vendor::tavrin::hardware::light;
namespace otherdevices = ::vendor::tavrin::hardware::otherdevices;

// Values are already fitted to the operation's shape, so the alternatives are the right ones.
template <typename T>
T From(const Answer::Value& v) {
    if constexpr (std::is_same_v<T, bool>) {
        return std::get<bool>(v);
    } else if constexpr (std::is_same_v<T, hidl_string>) {
        return hidl_string(std::get<std::string>(v));
    } else if constexpr (std::is_same_v<T, hidl_vec<int32_t>>) {
        return hidl_vec<int32_t>(std::get<std::vector<int32_t>>(v));
    } else if constexpr (std::is_enum_v<T>) {
        return static_cast<T>(static_cast<std::underlying_type_t<T>>(std::get<int64_t>(v)));
    } else {
        return static_cast<T>(std::get<int64_t>(v));
    }
}

class Dispatcher {
  public:
    Dispatcher(std::shared_ptr<Core> core, Service service)
        : core_(std::move(core)), service_(service) {}

    template <typename T>
    Return<T> Value(const char* operation, std::vector<Arg> args) const {
        Answer answer = core_->Serve(service_, operation, std::move(args));
        // Value operations are never programmed with nocallback; what is not a value fails.
        if (answer.kind() != Answer::Kind::kValues) {
            ::android::hardware::details::failCurrentTransaction();
            if (answer.kind() == Answer::Kind::kCrash) core_->Crash(service_);
            return T{};
        }
        return From<T>(answer.values()[0]);
    }

    template <typename... Ts>
    Return<void> Callback(const char* operation, std::vector<Arg> args,
                          const std::function<void(Ts...)>& cb) const {
        Answer answer = core_->Serve(service_, operation, std::move(args));
        switch (answer.kind()) {
            case Answer::Kind::kTransportError:
                ::android::hardware::details::failCurrentTransaction();
                return Unanswered(cb);
            case Answer::Kind::kCrash:
                ::android::hardware::details::failCurrentTransaction();
                core_->Crash(service_);
                return Unanswered(cb);
            case Answer::Kind::kNoCallback:
                ::android::hardware::details::withholdCurrentCallback();
                return Unanswered(cb);
            case Answer::Kind::kValues:
                break;
        }
        if (cb) Invoke(cb, answer.values(), std::index_sequence_for<Ts...>{});
        return Void();
    }

  private:
    // The generated stub insists on exactly one callback per call; the transport keeps this one
    // from the client.
    template <typename... Ts>
    static Return<void> Unanswered(const std::function<void(Ts...)>& cb) {
        if (cb && ::android::hardware::details::currentTransaction() != nullptr) {
            cb(std::decay_t<Ts>{}...);
        }
        return Void();
    }

    template <typename... Ts, size_t... I>
    static void Invoke(const std::function<void(Ts...)>& cb,
                       const std::vector<Answer::Value>& values, std::index_sequence<I...>) {
        cb(From<std::decay_t<Ts>>(values[I])...);
    }

    std::shared_ptr<Core> core_;
    Service service_;
};

using OnlyV10 = std::shared_ptr<std::atomic<bool>>;

class FactoryService : public factory::V1_1::implementation::KxFactoryInterface {
  public:
    FactoryService(std::shared_ptr<Core> core, OnlyV10 only)
        : d_(std::move(core), Service::kFactory), only_v10_(std::move(only)) {}

    Return<void> interfaceChain(interfaceChain_cb cb) override {
        if (only_v10_->load()) return factory::V1_0::IKxFactoryInterface::interfaceChain(cb);
        return factory::V1_1::IKxFactoryInterface::interfaceChain(cb);
    }

    Return<bool> isFactoryVersion() override { return d_.Value<bool>("isFactoryVersion", {}); }
    Return<void> getManufactureFileName(getManufactureFileName_cb cb) override {
        return d_.Callback("getManufactureFileName", {}, cb);
    }
    Return<int32_t> setMmiTestResult(int32_t first, int32_t second) override {
        return d_.Value<int32_t>("setMmiTestResult", {first, second});
    }
    Return<void> getFactoryInfo(int32_t infoKind, getFactoryInfo_cb cb) override {
        return d_.Callback("getFactoryInfo", {infoKind}, cb);
    }
    Return<int32_t> setFactoryInfo(int32_t infoKind, const hidl_string& value) override {
        return d_.Value<int32_t>("setFactoryInfo", {infoKind, value});
    }
    Return<void> getManufactureStationFlag(int32_t stationId,
                                           getManufactureStationFlag_cb cb) override {
        return d_.Callback("getManufactureStationFlag", {stationId}, cb);
    }
    Return<int32_t> getMmiDeviceFeaturesCheckResult(int32_t feature) override {
        return d_.Value<int32_t>("getMmiDeviceFeaturesCheckResult", {feature});
    }
    Return<void> executeHighTemperInterceptCmd(const hidl_string& testScene,
                                               const hidl_string& parameters,
                                               executeHighTemperInterceptCmd_cb cb) override {
        return d_.Callback("executeHighTemperInterceptCmd", {testScene, parameters}, cb);
    }
    Return<int32_t> sendBigDataOperation(const factory::V1_0::FmdOperation& operation) override {
        return d_.Value<int32_t>("sendBigDataOperation", {operation});
    }
    Return<int32_t> sendBigDataValue(const factory::V1_0::FmdMsg& msg) override {
        return d_.Value<int32_t>("sendBigDataValue", {msg});
    }
    Return<int32_t> releaseFactoryHidlResource() override {
        return d_.Value<int32_t>("releaseFactoryHidlResource", {});
    }
    Return<void> readOeminfo(int32_t a, int32_t b, int32_t c, readOeminfo_cb cb) override {
        return d_.Callback("readOeminfo", {a, b, c}, cb);
    }
    Return<int32_t> writeOeminfo(int32_t itemId, int32_t size, const hidl_string& data) override {
        return d_.Value<int32_t>("writeOeminfo", {itemId, size, data});
    }
    Return<int32_t> getManufactureMode() override {
        return d_.Value<int32_t>("getManufactureMode", {});
    }

  private:
    const Dispatcher d_;
    const OnlyV10 only_v10_;
};

class DisplayService : public display::V1_1::implementation::Display {
  public:
    DisplayService(std::shared_ptr<Core> core, OnlyV10 only)
        : d_(std::move(core), Service::kDisplay), only_v10_(std::move(only)) {}

    Return<void> interfaceChain(interfaceChain_cb cb) override {
        if (only_v10_->load()) return display::V1_0::IDisplay::interfaceChain(cb);
        return display::V1_1::IDisplay::interfaceChain(cb);
    }

    Return<int32_t> setDisplayFps(int32_t freqIndex) override {
        return d_.Value<int32_t>("setDisplayFps", {freqIndex});
    }
    Return<void> getDisplayFpsConfig(getDisplayFpsConfig_cb cb) override {
        return d_.Callback("getDisplayFpsConfig", {}, cb);
    }

  private:
    const Dispatcher d_;
    const OnlyV10 only_v10_;
};

class TouchscreenService : public tp::V1_0::implementation::Touchscreen {
  public:
    explicit TouchscreenService(std::shared_ptr<Core> core)
        : d_(std::move(core), Service::kTouchscreen) {}

    Return<void> getRotateCrownTestResult(getRotateCrownTestResult_cb cb) override {
        return d_.Callback("getRotateCrownTestResult", {}, cb);
    }
    Return<void> getCapacitanceTestResult(getCapacitanceTestResult_cb cb) override {
        return d_.Callback("getCapacitanceTestResult", {}, cb);
    }
    Return<void> getCapacitanceCalibrateResult(int32_t value,
                                               getCapacitanceCalibrateResult_cb cb) override {
        return d_.Callback("getCapacitanceCalibrateResult", {value}, cb);
    }
    Return<int64_t> getTpPressureWaitingTime() override {
        return d_.Value<int64_t>("getTpPressureWaitingTime", {});
    }
    Return<bool> isTpPressureSupported() override {
        return d_.Value<bool>("isTpPressureSupported", {});
    }
    Return<int32_t> getTpPressureStatus() override {
        return d_.Value<int32_t>("getTpPressureStatus", {});
    }
    Return<int32_t> getTpPressureVerifyResult(int32_t value) override {
        return d_.Value<int32_t>("getTpPressureVerifyResult", {value});
    }
    Return<bool> controlTpPressureCalibMode0() override {
        return d_.Value<bool>("controlTpPressureCalibMode0", {});
    }
    Return<bool> controlTpPressureCalibMode1() override {
        return d_.Value<bool>("controlTpPressureCalibMode1", {});
    }
    Return<bool> setTpPressureCalibration0(int32_t index) override {
        return d_.Value<bool>("setTpPressureCalibration0", {index});
    }
    Return<bool> setTpPressureCalibration1(int32_t index) override {
        return d_.Value<bool>("setTpPressureCalibration1", {index});
    }
    Return<bool> setTpPressureVerification0(int32_t index) override {
        return d_.Value<bool>("setTpPressureVerification0", {index});
    }
    Return<bool> setTpPressureVerification1(int32_t index) override {
        return d_.Value<bool>("setTpPressureVerification1", {index});
    }
    Return<int32_t> checkTpPressureCalibPosition(int32_t x, int32_t y, int32_t z) override {
        return d_.Value<int32_t>("checkTpPressureCalibPosition", {x, y, z});
    }
    Return<int32_t> setTouchScreenFeatureConfig(int32_t feature,
                                                const hidl_string& config) override {
        return d_.Value<int32_t>("setTouchScreenFeatureConfig", {feature, config});
    }

  private:
    const Dispatcher d_;
};

class SensorsService : public sensors::V1_1::implementation::Sensors {
  public:
    SensorsService(std::shared_ptr<Core> core, OnlyV10 only)
        : d_(std::move(core), Service::kSensors), only_v10_(std::move(only)) {}

    Return<void> interfaceChain(interfaceChain_cb cb) override {
        if (only_v10_->load()) return sensors::V1_0::ISensors::interfaceChain(cb);
        return sensors::V1_1::ISensors::interfaceChain(cb);
    }

    Return<int32_t> getSensorCalibrateDelayTime(int32_t sensorId) override {
        return d_.Value<int32_t>("getSensorCalibrateDelayTime", {sensorId});
    }
    Return<int32_t> getSensorSelfTestDelayTime(int32_t sensorId) override {
        return d_.Value<int32_t>("getSensorSelfTestDelayTime", {sensorId});
    }
    Return<int32_t> startSensorCalibrate(int32_t sensorId, int32_t command) override {
        return d_.Value<int32_t>("startSensorCalibrate", {sensorId, command});
    }
    Return<int32_t> getSensorCalibrateResult(int32_t sensorId) override {
        return d_.Value<int32_t>("getSensorCalibrateResult", {sensorId});
    }
    Return<int32_t> startSensorSelfTest(int32_t sensorId, int32_t command) override {
        return d_.Value<int32_t>("startSensorSelfTest", {sensorId, command});
    }
    Return<int32_t> getSensorSelfTestResult(int32_t sensorId) override {
        return d_.Value<int32_t>("getSensorSelfTestResult", {sensorId});
    }
    Return<void> getSensorCalibrateType(int32_t sensorId, int32_t flag,
                                        getSensorCalibrateType_cb cb) override {
        return d_.Callback("getSensorCalibrateType", {sensorId, flag}, cb);
    }
    Return<int32_t> getCompassRawValueLimit() override {
        return d_.Value<int32_t>("getCompassRawValueLimit", {});
    }
    Return<int32_t> setApPressureCalibrationExtern(int32_t sensorId, int32_t testCtrl,
                                                   const hidl_vec<int32_t>& rawData) override {
        return d_.Value<int32_t>("setApPressureCalibrationExtern", {sensorId, testCtrl, rawData});
    }
    Return<void> getFlickerRawData(int32_t value, getFlickerRawData_cb cb) override {
        return d_.Callback("getFlickerRawData", {value}, cb);
    }
    Return<int32_t> setPsExternalIrMode(int32_t mode) override {
        return d_.Value<int32_t>("setPsExternalIrMode", {mode});
    }
    Return<int32_t> sensorActivate(int32_t sensorType, bool enable, int64_t samplingRate) override {
        return d_.Value<int32_t>("sensorActivate", {sensorType, enable, samplingRate});
    }
    Return<void> handleSensorParameter(int32_t sensorId, int32_t mainCmd, int32_t subCmd,
                                       int32_t length, handleSensorParameter_cb cb) override {
        return d_.Callback("handleSensorParameter", {sensorId, mainCmd, subCmd, length}, cb);
    }

  private:
    const Dispatcher d_;
    const OnlyV10 only_v10_;
};

class PowerService : public power::V1_0::implementation::KXPower {
  public:
    explicit PowerService(std::shared_ptr<Core> core) : d_(std::move(core), Service::kPower) {}

    Return<void> getPowerState(const hidl_string& query, getPowerState_cb cb) override {
        return d_.Callback("getPowerState", {query}, cb);
    }
    Return<int32_t> setPowerState(const hidl_string& testScene, const hidl_string& para) override {
        return d_.Value<int32_t>("setPowerState", {testScene, para});
    }
    Return<void> checkUsbSpeed(const hidl_string& scene, const hidl_string& arg1,
                               const hidl_string& arg2, const hidl_string& arg3,
                               checkUsbSpeed_cb cb) override {
        return d_.Callback("checkUsbSpeed", {scene, arg1, arg2, arg3}, cb);
    }

  private:
    const Dispatcher d_;
};

class LightService : public light::V2_0::implementation::Light {
  public:
    explicit LightService(std::shared_ptr<Core> core) : d_(std::move(core), Service::kLight) {}

    Return<int32_t> setLightBrightness(int32_t lightId, int32_t brightness) override {
        return d_.Value<int32_t>("setLightBrightness", {lightId, brightness});
    }

  private:
    const Dispatcher d_;
};

class OtherdevicesService : public otherdevices::V1_0::implementation::Otherdevices {
  public:
    explicit OtherdevicesService(std::shared_ptr<Core> core)
        : d_(std::move(core), Service::kOtherdevices) {}

    Return<void> getTouchkeyCapacitanceTestResult(int32_t value,
                                                  getTouchkeyCapacitanceTestResult_cb cb) override {
        return d_.Callback("getTouchkeyCapacitanceTestResult", {value}, cb);
    }
    Return<int32_t> getTouchKeySupportState(int32_t value) override {
        return d_.Value<int32_t>("getTouchKeySupportState", {value});
    }

  private:
    const Dispatcher d_;
};

}  // namespace

ServiceObject CreateService(Service service, std::shared_ptr<Core> core) {
    OnlyV10 only = std::make_shared<std::atomic<bool>>(false);
    switch (service) {
        case Service::kFactory:
            return {new FactoryService(std::move(core), only), only};
        case Service::kDisplay:
            return {new DisplayService(std::move(core), only), only};
        case Service::kTouchscreen:
            return {new TouchscreenService(std::move(core)), nullptr};
        case Service::kSensors:
            return {new SensorsService(std::move(core), only), only};
        case Service::kPower:
            return {new PowerService(std::move(core)), nullptr};
        case Service::kLight:
            return {new LightService(std::move(core)), nullptr};
        case Service::kOtherdevices:
            break;
    }
    return {new OtherdevicesService(std::move(core)), nullptr};
}

}  // namespace internal
}  // namespace simdevice
