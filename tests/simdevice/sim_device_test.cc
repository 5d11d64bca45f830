// The simulated device seen through the host transport's client proxies, as the native library
// sees it.
#include <android/log.h>
#include <gtest/gtest.h>
#include <hidl/HostTransport.h>
#include <simdevice/log_capture.h>
#include <simdevice/sim_device.h>
#include <vendor/tavrin/hardware/kxdisplay/1.1/IDisplay.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.1/IKxFactoryInterface.h>
#include <vendor/tavrin/hardware/light/2.0/ILight.h>
#include <vendor/tavrin/hardware/otherdevices/1.0/IOtherdevices.h>
#include <vendor/tavrin/hardware/power/1.0/IKXPower.h>
#include <vendor/tavrin/hardware/sensors/1.1/ISensors.h>
#include <vendor/tavrin/hardware/tp/1.0/ITouchscreen.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace simdevice {
namespace {

using ::android::sp;
using ::android::wp;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
namespace hw = ::vendor::tavrin::hardware;
namespace transport = ::android::hardware::details;

using Factory10 = hw::kxfactoryinterface::V1_0::IKxFactoryInterface;
using Factory11 = hw::kxfactoryinterface::V1_1::IKxFactoryInterface;
using Display10 = hw::kxdisplay::V1_0::IDisplay;
using Display11 = hw::kxdisplay::V1_1::IDisplay;
using Sensors10 = hw::sensors::V1_0::ISensors;
using Sensors11 = hw::sensors::V1_1::ISensors;
using Touchscreen = hw::tp::V1_0::ITouchscreen;
using Power = hw::power::V1_0::IKXPower;
using Light = hw::light::V2_0::ILight;
using Otherdevices = hw::otherdevices::V1_0::IOtherdevices;

// The cast's transport result, read through the checked accessor as the library reads it.
template <typename Child, typename Parent>
sp<Child> Cast(const sp<Parent>& parent) {
    return Child::castFrom(parent);
}

class DeathRecorder : public ::android::hardware::hidl_death_recipient {
  public:
    void serviceDied(uint64_t cookie, const wp<::android::hidl::base::V1_0::IBase>&) override {
        std::lock_guard<std::mutex> lock(lock_);
        cookies_.push_back(cookie);
    }
    std::vector<uint64_t> cookies() {
        std::lock_guard<std::mutex> lock(lock_);
        return cookies_;
    }

  private:
    std::mutex lock_;
    std::vector<uint64_t> cookies_;
};

class RegistrationRecorder : public ::android::hidl::manager::V1_0::IServiceNotification {
  public:
    Return<void> onRegistration(const hidl_string& fqName, const hidl_string& name,
                                bool preexisting) override {
        std::lock_guard<std::mutex> lock(lock_);
        reports_.push_back(std::string(fqName) + "/" + std::string(name) +
                           (preexisting ? " preexisting" : " new"));
        return ::android::hardware::Void();
    }
    std::vector<std::string> reports() {
        std::lock_guard<std::mutex> lock(lock_);
        return reports_;
    }

  private:
    std::mutex lock_;
    std::vector<std::string> reports_;
};

class SimDeviceTest : public ::testing::Test {
  protected:
    void SetUp() override {
        transport::resetServiceManager();
        device_ = std::make_unique<SimDevice>();
    }
    void TearDown() override {
        device_.reset();
        SimDevice::WaitIdle();
    }

    void Program(Service service, const char* operation, const char* answer) {
        std::string error;
        ASSERT_TRUE(device_->Program(service, operation, answer, &error)) << error;
    }

    std::vector<std::string> TakeCallTexts() {
        std::vector<std::string> texts;
        for (const Call& call : device_->TakeCalls()) texts.push_back(call.Text());
        return texts;
    }

    std::unique_ptr<SimDevice> device_;
};

TEST_F(SimDeviceTest, ProgrammedAnswerReachesTheCallerAndTheCallIsRecordedWithItsPosition) {
    device_->Start();
    Program(Service::kSensors, "handleSensorParameter", R"(0,"x",[1,2,3])");
    sp<Sensors10> sensors = Sensors10::getService("default");
    ASSERT_NE(sensors, nullptr);
    sp<Sensors11> sensors11 = Cast<Sensors11>(sensors);
    ASSERT_NE(sensors11, nullptr);

    int calls = 0;
    EXPECT_TRUE(sensors11
                    ->handleSensorParameter(
                        1, 2, -3, 4,
                        [&](int32_t ret, const hidl_string& info, const hidl_vec<int32_t>& v) {
                            ++calls;
                            EXPECT_EQ(ret, 0);
                            EXPECT_EQ(std::string(info), "x");
                            EXPECT_EQ(std::vector<int32_t>(v), (std::vector<int32_t>{1, 2, 3}));
                        })
                    .isOk());
    EXPECT_EQ(calls, 1);

    std::vector<int32_t> samples;
    sensors->getFlickerRawData(7, [&](int32_t code, const hidl_vec<int32_t>& v) {
        EXPECT_EQ(code, 0);
        samples = v;
    });
    ASSERT_EQ(samples.size(), 256u);
    for (size_t n = 0; n < samples.size(); ++n) {
        ASSERT_EQ(samples[n], n % 10 < 5 ? 1000 : 0) << "sample " << n;
    }

    std::vector<Call> recorded = device_->TakeCalls();
    ASSERT_EQ(recorded.size(), 2u);
    EXPECT_EQ(recorded[0].Text(), "sensors.handleSensorParameter(1, 2, -3, 4)");
    EXPECT_EQ(recorded[0].position, 29u);
    EXPECT_EQ(recorded[1].Text(), "sensors.getFlickerRawData(7)");
    EXPECT_EQ(recorded[1].position, 24u);
    EXPECT_TRUE(device_->TakeCalls().empty());
}

// Every operation answers as a healthy device through the proxies and arrives at the position
// the operation list gives it.
TEST_F(SimDeviceTest, HealthyDeviceServesEveryOperationAtItsListedPosition) {
    device_->Start();
    sp<Factory11> factory = Cast<Factory11>(Factory10::getService("kxfactoryinterface_hal"));
    sp<Display11> display = Cast<Display11>(Display10::getService("default"));
    sp<Touchscreen> tp = Touchscreen::getService("default");
    sp<Sensors11> sensors = Cast<Sensors11>(Sensors10::getService("default"));
    sp<Power> power = Power::getService("default");
    sp<Light> light = Light::getService("default");
    sp<Otherdevices> other = Otherdevices::getService("default");
    ASSERT_TRUE(factory && display && tp && sensors && power && light && other);

    std::string text;
    auto keep = [&](int32_t code, const hidl_string& s) {
        EXPECT_EQ(code, 0);
        text = s;
    };
    auto ignore = [](auto&&...) {};
    hw::kxfactoryinterface::V1_0::FmdMsg msg{};
    hw::kxfactoryinterface::V1_0::FmdOperation op{};
    struct Step {
        Service service;
        const char* operation;
        std::function<void()> call;
        const char* text = nullptr;  // the answer's text where it is worth checking
    };
    const Step steps[] = {
        {Service::kFactory, "isFactoryVersion", [&] { EXPECT_TRUE(factory->isFactoryVersion()); }},
        {Service::kFactory, "getManufactureFileName",
         [&] { factory->getManufactureFileName(keep); }, "mmi_manufacture_2611.xml"},
        {Service::kFactory, "setMmiTestResult",
         [&] { EXPECT_EQ(factory->setMmiTestResult(1, 2), 0); }},
        {Service::kFactory, "getFactoryInfo", [&] { factory->getFactoryInfo(0, keep); },
         "KX2611220001A7"},
        {Service::kFactory, "setFactoryInfo",
         [&] { EXPECT_EQ(factory->setFactoryInfo(5, "0"), 0); }},
        {Service::kFactory, "getManufactureStationFlag",
         [&] { factory->getManufactureStationFlag(3, keep); }, "PASS"},
        {Service::kFactory, "getMmiDeviceFeaturesCheckResult",
         [&] { EXPECT_EQ(factory->getMmiDeviceFeaturesCheckResult(1), 0); }},
        {Service::kFactory, "executeHighTemperInterceptCmd",
         [&] { factory->executeHighTemperInterceptCmd("s", "p", keep); }, "intercept ok"},
        {Service::kFactory, "sendBigDataOperation",
         [&] { EXPECT_EQ(factory->sendBigDataOperation(op), 0); }},
        {Service::kFactory, "sendBigDataValue",
         [&] { EXPECT_EQ(factory->sendBigDataValue(msg), 0); }},
        {Service::kFactory, "releaseFactoryHidlResource",
         [&] { EXPECT_EQ(factory->releaseFactoryHidlResource(), 0); }},
        {Service::kFactory, "readOeminfo", [&] { factory->readOeminfo(1, 2, 3, keep); }, "0703"},
        {Service::kFactory, "writeOeminfo",
         [&] { EXPECT_EQ(factory->writeOeminfo(143, 64, "0703"), 0); }},
        {Service::kFactory, "getManufactureMode",
         [&] { EXPECT_EQ(factory->getManufactureMode(), 1); }},
        {Service::kDisplay, "setDisplayFps", [&] { EXPECT_EQ(display->setDisplayFps(1), 0); }},
        {Service::kDisplay, "getDisplayFpsConfig",
         [&] {
             display->getDisplayFpsConfig(
                 [&](hw::kxdisplay::V1_0::DISPLAY_RET r, const hidl_string& s) {
                     EXPECT_EQ(r, hw::kxdisplay::V1_0::DISPLAY_RET::SUCCESS);
                     text = s;
                 });
         },
         "60,90,120"},
        {Service::kTouchscreen, "getRotateCrownTestResult",
         [&] {
             tp->getRotateCrownTestResult([&](bool passed, const hidl_string& s) {
                 EXPECT_TRUE(passed);
                 text = s;
             });
         }},
        {Service::kTouchscreen, "getCapacitanceTestResult",
         [&] { tp->getCapacitanceTestResult(keep); }, ""},
        {Service::kTouchscreen, "getCapacitanceCalibrateResult",
         [&] { tp->getCapacitanceCalibrateResult(0, keep); }},
        {Service::kTouchscreen, "getTpPressureWaitingTime",
         [&] { EXPECT_EQ(tp->getTpPressureWaitingTime(), 5000); }},
        {Service::kTouchscreen, "isTpPressureSupported",
         [&] { EXPECT_TRUE(tp->isTpPressureSupported()); }},
        {Service::kTouchscreen, "getTpPressureStatus",
         [&] { EXPECT_EQ(tp->getTpPressureStatus(), 0); }},
        {Service::kTouchscreen, "getTpPressureVerifyResult",
         [&] { EXPECT_EQ(tp->getTpPressureVerifyResult(1), 0); }},
        {Service::kTouchscreen, "controlTpPressureCalibMode0",
         [&] { EXPECT_TRUE(tp->controlTpPressureCalibMode0()); }},
        {Service::kTouchscreen, "controlTpPressureCalibMode1",
         [&] { EXPECT_TRUE(tp->controlTpPressureCalibMode1()); }},
        {Service::kTouchscreen, "setTpPressureCalibration0",
         [&] { EXPECT_TRUE(tp->setTpPressureCalibration0(1)); }},
        {Service::kTouchscreen, "setTpPressureCalibration1",
         [&] { EXPECT_TRUE(tp->setTpPressureCalibration1(1)); }},
        {Service::kTouchscreen, "setTpPressureVerification0",
         [&] { EXPECT_TRUE(tp->setTpPressureVerification0(1)); }},
        {Service::kTouchscreen, "setTpPressureVerification1",
         [&] { EXPECT_TRUE(tp->setTpPressureVerification1(1)); }},
        {Service::kTouchscreen, "checkTpPressureCalibPosition",
         [&] { EXPECT_EQ(tp->checkTpPressureCalibPosition(1, 2, 3), 0); }},
        {Service::kTouchscreen, "setTouchScreenFeatureConfig",
         [&] { EXPECT_EQ(tp->setTouchScreenFeatureConfig(1, "c"), 0); }},
        {Service::kSensors, "getSensorCalibrateDelayTime",
         [&] { EXPECT_EQ(sensors->getSensorCalibrateDelayTime(1), 3000); }},
        {Service::kSensors, "getSensorSelfTestDelayTime",
         [&] { EXPECT_EQ(sensors->getSensorSelfTestDelayTime(1), 3000); }},
        {Service::kSensors, "startSensorCalibrate",
         [&] { EXPECT_EQ(sensors->startSensorCalibrate(1, 2), 0); }},
        {Service::kSensors, "getSensorCalibrateResult",
         [&] { EXPECT_EQ(sensors->getSensorCalibrateResult(1), 0); }},
        {Service::kSensors, "startSensorSelfTest",
         [&] { EXPECT_EQ(sensors->startSensorSelfTest(1, 2), 0); }},
        {Service::kSensors, "getSensorSelfTestResult",
         [&] { EXPECT_EQ(sensors->getSensorSelfTestResult(1), 0); }},
        {Service::kSensors, "getSensorCalibrateType",
         [&] { sensors->getSensorCalibrateType(1, 1024, keep); }, "offset"},
        {Service::kSensors, "getCompassRawValueLimit",
         [&] { EXPECT_EQ(sensors->getCompassRawValueLimit(), 2000); }},
        {Service::kSensors, "setApPressureCalibrationExtern",
         [&] { EXPECT_EQ(sensors->setApPressureCalibrationExtern(1, 2, hidl_vec<int32_t>{}), 0); }},
        {Service::kSensors, "getFlickerRawData", [&] { sensors->getFlickerRawData(0, ignore); }},
        {Service::kSensors, "setPsExternalIrMode",
         [&] { EXPECT_EQ(sensors->setPsExternalIrMode(1), 0); }},
        {Service::kSensors, "sensorActivate",
         [&] { EXPECT_EQ(sensors->sensorActivate(1, true, 20), 0); }},
        {Service::kSensors, "handleSensorParameter",
         [&] {
             sensors->handleSensorParameter(
                 1, 2, 3, 4, [&](int32_t ret, const hidl_string& s, const hidl_vec<int32_t>& v) {
                     EXPECT_EQ(ret, 0);
                     EXPECT_EQ(v.size(), 8u);
                     text = s;
                 });
         }},
        {Service::kPower, "getPowerState", [&] { power->getPowerState("q", keep); }},
        {Service::kPower, "setPowerState", [&] { EXPECT_EQ(power->setPowerState("s", "p"), 0); }},
        {Service::kPower, "checkUsbSpeed", [&] { power->checkUsbSpeed("s", "", "", "", keep); },
         "USB3.0 5Gbps"},
        {Service::kLight, "setLightBrightness",
         [&] { EXPECT_EQ(light->setLightBrightness(1, 255), 0); }},
        {Service::kOtherdevices, "getTouchkeyCapacitanceTestResult",
         [&] { other->getTouchkeyCapacitanceTestResult(0, keep); }, ""},
        {Service::kOtherdevices, "getTouchKeySupportState",
         [&] { EXPECT_EQ(other->getTouchKeySupportState(0), 1); }},
    };
    size_t listed = 0;
    for (Service s : kAllServices) listed += SimDevice::Operations(s).size();
    EXPECT_EQ(listed, std::size(steps));

    for (const Step& step : steps) {
        SCOPED_TRACE(std::string(ServiceName(step.service)) + "." + step.operation);
        text = "(no callback)";
        step.call();
        if (step.text != nullptr) {
            EXPECT_EQ(text, step.text);
        }
        std::vector<Call> calls = device_->TakeCalls();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].service, step.service);
        EXPECT_EQ(calls[0].operation, step.operation);
        const OperationInfo* info = SimDevice::FindOperation(step.service, step.operation);
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(calls[0].position, info->position);
    }
}

TEST_F(SimDeviceTest, RecordsArgumentsAsTextAndKeepsTypedCopies) {
    device_->Start();
    sp<Factory10> factory = Factory10::getService("kxfactoryinterface_hal");
    sp<Sensors10> sensors = Sensors10::getService("default");
    sp<Power> power = Power::getService("default");
    ASSERT_TRUE(factory && sensors && power);

    hw::kxfactoryinterface::V1_0::FmdEvent event{};
    event.errorCode = 3;
    event.itemId = 4;
    event.cycle = 5;
    event.result = "pass";
    event.station = "MMI1";
    event.bsn = "KX1";
    event.time = "2024-01-02 03:04:05";
    event.deviceName = "als";
    event.testName = "lux \"max\"";
    event.value = "12.5";
    event.thresholdMin = "1";
    event.thresholdMax = "99";
    event.firmware = "fw\\1";
    event.description = "line1\nline2";
    hw::kxfactoryinterface::V1_0::FmdMsg msg{};
    msg.version = 1;
    msg.dataSource = 2;
    msg.eventCount = 1;
    msg.events = hidl_vec<hw::kxfactoryinterface::V1_0::FmdEvent>{event};
    EXPECT_EQ(factory->sendBigDataValue(msg), 0);

    hw::kxfactoryinterface::V1_0::FmdOperation op{};
    op.version = 1;
    op.commandId = 2;
    op.operation = 3;
    op.cycle = 4;
    op.station = "S";
    op.bsn = "B";
    EXPECT_EQ(factory->sendBigDataOperation(op), 0);

    std::vector<int32_t> raw(40);
    for (size_t i = 0; i < raw.size(); ++i) raw[i] = static_cast<int32_t>(i) - 1;
    EXPECT_EQ(sensors->setApPressureCalibrationExtern(9, 11, raw), 0);
    EXPECT_EQ(sensors->sensorActivate(5, false, int64_t{1} << 40), 0);
    EXPECT_EQ(power->setPowerState(std::string("a\x01\x7f\xc3\xa9", 5), std::string("\0z", 2)), 0);

    std::vector<std::string> expected = {
        R"(factory.sendBigDataValue({version: 1, dataSource: 2, eventCount: 1, events: [{errorCode: 3, )"
        R"(itemId: 4, cycle: 5, result: "pass", station: "MMI1", bsn: "KX1", )"
        R"(time: "2024-01-02 03:04:05", deviceName: "als", testName: "lux \"max\"", value: "12.5", )"
        R"(thresholdMin: "1", thresholdMax: "99", firmware: "fw\\1", description: "line1\u000aline2"}]}))",
        R"(factory.sendBigDataOperation({version: 1, commandId: 2, operation: 3, cycle: 4, )"
        R"(station: "S", bsn: "B"}))",
        "sensors.setApPressureCalibrationExtern(9, 11, [-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, "
        "12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, ... (40 "
        "values)])",
        "sensors.sensorActivate(5, false, 1099511627776)",
        "power.setPowerState(\"a\\u0001\\u007f\xc3\xa9\", \"\\u0000z\")",
    };
    EXPECT_EQ(TakeCallTexts(), expected);

    std::optional<hw::kxfactoryinterface::V1_0::FmdMsg> kept = device_->LastFmdMsg();
    ASSERT_TRUE(kept);
    ASSERT_EQ(kept->events.size(), 1u);
    EXPECT_EQ(kept->eventCount, 1);
    EXPECT_EQ(std::string(kept->events[0].description), "line1\nline2");
    EXPECT_EQ(std::string(kept->events[0].testName), "lux \"max\"");
    ASSERT_TRUE(device_->LastFmdOperation());
    EXPECT_EQ(std::string(device_->LastFmdOperation()->bsn), "B");
    EXPECT_EQ(device_->LastVector(Service::kSensors, "setApPressureCalibrationExtern"), raw);
    EXPECT_FALSE(device_->LastVector(Service::kSensors, "getFlickerRawData"));
}

TEST_F(SimDeviceTest, OnlyV10ServicesRefuseTheCastButServeVersion10) {
    EXPECT_FALSE(device_->SetOnlyV10(Service::kPower, true));
    for (Service s : {Service::kFactory, Service::kDisplay, Service::kSensors}) {
        EXPECT_TRUE(device_->SetOnlyV10(s, true));
    }
    device_->Start();

    sp<Factory10> factory = Factory10::getService("kxfactoryinterface_hal");
    sp<Display10> display = Display10::getService("default");
    sp<Sensors10> sensors = Sensors10::getService("default");
    ASSERT_TRUE(factory && display && sensors);
    EXPECT_EQ(Cast<Factory11>(factory), nullptr);
    EXPECT_EQ(Cast<Display11>(display), nullptr);
    EXPECT_EQ(Cast<Sensors11>(sensors), nullptr);
    EXPECT_EQ(Sensors11::getService("default"), nullptr);
    EXPECT_TRUE(factory->isFactoryVersion());
    EXPECT_EQ(sensors->getSensorCalibrateDelayTime(2), 3000);
    EXPECT_EQ(TakeCallTexts(),
              (std::vector<std::string>{"factory.isFactoryVersion()",
                                        "sensors.getSensorCalibrateDelayTime(2)"}));

    // Reset brings the 1.1 versions back under new registrations.
    device_->Reset();
    EXPECT_NE(Cast<Sensors11>(Sensors10::getService("default")), nullptr);
    EXPECT_NE(Cast<Display11>(Display10::getService("default")), nullptr);
    EXPECT_FALSE(sensors->getSensorCalibrateDelayTime(2).isOk());  // the old handle died
}

TEST_F(SimDeviceTest, KillFailsCallsAndTellsDeathRecipientsReviveRegistersAgain) {
    device_->Start();
    sp<RegistrationRecorder> registrations = new RegistrationRecorder();
    ASSERT_TRUE(Sensors10::registerForNotifications("", registrations));
    sp<Sensors10> sensors = Sensors10::getService("default");
    ASSERT_NE(sensors, nullptr);
    sp<DeathRecorder> deaths = new DeathRecorder();
    ASSERT_TRUE(sensors->linkToDeath(deaths, 4));

    EXPECT_TRUE(device_->Kill(Service::kSensors));
    EXPECT_FALSE(device_->Kill(Service::kSensors));
    EXPECT_FALSE(device_->IsRegistered(Service::kSensors));
    SimDevice::WaitIdle();
    EXPECT_EQ(deaths->cookies(), std::vector<uint64_t>{4});

    Return<int32_t> value = sensors->getSensorCalibrateResult(1);
    EXPECT_FALSE(value.isOk());
    EXPECT_TRUE(value.isDeadObject());
    bool called = false;
    EXPECT_FALSE(sensors->getFlickerRawData(1, [&](auto&&...) { called = true; }).isOk());
    EXPECT_FALSE(called);
    EXPECT_EQ(Sensors10::getService("default"), nullptr);
    EXPECT_TRUE(device_->TakeCalls().empty());  // nothing reached the dead service

    EXPECT_TRUE(device_->Revive(Service::kSensors));
    EXPECT_FALSE(device_->Revive(Service::kSensors));
    SimDevice::WaitIdle();
    EXPECT_EQ(registrations->reports(),
              (std::vector<std::string>{
                  "vendor.tavrin.hardware.sensors@1.0::ISensors/default preexisting",
                  "vendor.tavrin.hardware.sensors@1.0::ISensors/default new"}));
    sp<Sensors10> again = Sensors10::getService("default");
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->getSensorCalibrateDelayTime(1), 3000);
    EXPECT_NE(Cast<Sensors11>(again), nullptr);
}

TEST_F(SimDeviceTest, AbsentServiceIsMissingUntilRevived) {
    EXPECT_TRUE(device_->SetAbsent(Service::kLight, true));
    device_->Start();
    EXPECT_FALSE(device_->SetAbsent(Service::kPower, true));
    EXPECT_EQ(Light::getService("default"), nullptr);
    EXPECT_NE(Power::getService("default"), nullptr);
    EXPECT_NE(Factory10::getService("kxfactoryinterface_hal"), nullptr);
    EXPECT_EQ(Factory10::getService("default"), nullptr);
    EXPECT_TRUE(device_->Revive(Service::kLight));
    EXPECT_NE(Light::getService("default"), nullptr);
}

TEST_F(SimDeviceTest, TransportErrorFailsTheCallAndNoCallbackSkipsTheCallback) {
    device_->Start();
    sp<Touchscreen> tp = Touchscreen::getService("default");
    sp<Power> power = Power::getService("default");
    ASSERT_TRUE(tp && power);
    Program(Service::kTouchscreen, "getTpPressureWaitingTime", "transport-error");
    Program(Service::kPower, "getPowerState", "transport-error");
    Program(Service::kPower, "checkUsbSpeed", "nocallback");

    Return<int64_t> waiting = tp->getTpPressureWaitingTime();
    EXPECT_FALSE(waiting.isOk());
    int callbacks = 0;
    Return<void> failed = power->getPowerState("q", [&](auto&&...) { ++callbacks; });
    EXPECT_FALSE(failed.isOk());
    Return<void> silent = power->checkUsbSpeed("s", "", "", "", [&](auto&&...) { ++callbacks; });
    EXPECT_TRUE(silent.isOk());
    EXPECT_EQ(callbacks, 0);
    // The calls reached the service before it failed them.
    EXPECT_EQ(TakeCallTexts(),
              (std::vector<std::string>{"touchscreen.getTpPressureWaitingTime()",
                                        R"(power.getPowerState("q"))",
                                        R"(power.checkUsbSpeed("s", "", "", ""))"}));
    // The service itself stays alive.
    EXPECT_TRUE(device_->IsRegistered(Service::kPower));
    device_->ResetAnswers();
    EXPECT_EQ(tp->getTpPressureWaitingTime(), 5000);
}

TEST_F(SimDeviceTest, ResetBringsBackTheHealthyDevice) {
    device_->SetAbsent(Service::kDisplay, true);
    device_->Start();
    device_->Kill(Service::kLight);
    Program(Service::kOtherdevices, "getTouchKeySupportState", "0");
    sp<Otherdevices> other = Otherdevices::getService("default");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(other->getTouchKeySupportState(0), 0);

    device_->Reset();
    for (Service s : kAllServices) EXPECT_TRUE(device_->IsRegistered(s)) << ServiceName(s);
    EXPECT_TRUE(device_->TakeCalls().empty());
    EXPECT_EQ(other->getTouchKeySupportState(0), 1);  // untouched service keeps its handle
    EXPECT_NE(Light::getService("default"), nullptr);
    EXPECT_NE(Cast<Display11>(Display10::getService("default")), nullptr);
}

// Callers on several threads while the service dies and comes back and its answer changes: each
// call either reaches the service, gets one of its answers and is recorded once, or fails as a
// dead call and is not recorded.
TEST_F(SimDeviceTest, ConcurrentCallsSurviveKillsRevivesAndReprogramming) {
    device_->Start();
    // The transport frees a dead node with the last proxy that refers to it. libutils' reference
    // counts are invisible to TSan, so a node freed by one caller after another caller's proxy
    // let go of it reads as a race; keep every node until the callers are joined.
    std::vector<sp<transport::ServiceNode>> nodes{
        transport::getServiceNode(Sensors10::descriptor, "default")};
    constexpr int kThreads = 4;
    constexpr int kCallsPerThread = 300;
    std::atomic<int> served{0};
    std::atomic<bool> wrong{false};
    std::atomic<bool> done{false};
    std::vector<std::thread> callers;
    for (int t = 0; t < kThreads; ++t) {
        callers.emplace_back([&] {
            for (int i = 0; i < kCallsPerThread; ++i) {
                sp<Sensors10> sensors = Sensors10::getService("default");
                if (sensors == nullptr) continue;
                Return<int32_t> r = sensors->getSensorCalibrateDelayTime(i);
                if (!r.isOk()) continue;
                int32_t v = r;
                if (v != 3000 && v != 42) wrong = true;
                ++served;
            }
        });
    }
    size_t recorded = 0;
    std::thread chaos([&] {
        for (int i = 0; !done; ++i) {
            device_->Kill(Service::kSensors);
            device_->Revive(Service::kSensors);
            nodes.push_back(transport::getServiceNode(Sensors10::descriptor, "default"));
            std::string error;
            device_->Program(Service::kSensors, "getSensorCalibrateDelayTime",
                             i % 2 == 0 ? "42" : "3000", &error);
            recorded += device_->TakeCalls().size();
        }
    });
    for (std::thread& t : callers) t.join();
    done = true;
    chaos.join();
    recorded += device_->TakeCalls().size();
    EXPECT_FALSE(wrong);
    EXPECT_GT(served, 0);
    EXPECT_EQ(recorded, static_cast<size_t>(served));
}

TEST(LogCapture, KeepsEveryPriorityInOrderAndClearsOnTake) {
    CaptureLogs();
    TakeLogs();
    __android_log_print(ANDROID_LOG_VERBOSE, nullptr, "%s: v %d", "T", 1);
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "d");
    __android_log_print(ANDROID_LOG_INFO, nullptr, "i");
    __android_log_print(ANDROID_LOG_WARN, nullptr, "w");
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "e\n");
    __android_log_print(ANDROID_LOG_FATAL, "tag", "f");
    EXPECT_EQ(TakeLogs(),
              (std::vector<std::string>{"V T: v 1", "D d", "I i", "W w", "E e\n", "F f"}));
    EXPECT_TRUE(TakeLogs().empty());
}

}  // namespace
}  // namespace simdevice
