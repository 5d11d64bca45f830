// What the JVM suites do not reach: answer texts and shapes, failed calls without callbacks, dead
// services recording nothing and refusing repeated kills and revivals, resets renewing 1.0-only.
#include <gtest/gtest.h>
#include <hidl/HostTransport.h>
#include <simdevice/sim_device.h>
#include <vendor/tavrin/hardware/light/2.0/ILight.h>
#include <vendor/tavrin/hardware/power/1.0/IKXPower.h>
#include <vendor/tavrin/hardware/sensors/1.1/ISensors.h>

#include <chrono>
#include <future>
#include <string>

namespace simdevice {
namespace {

using ::android::sp;
using Sensors10 = ::vendor::tavrin::hardware::sensors::V1_0::ISensors;
using Sensors11 = ::vendor::tavrin::hardware::sensors::V1_1::ISensors;
using Power = ::vendor::tavrin::hardware::power::V1_0::IKXPower;

sp<Sensors11> V11(const sp<Sensors10>& sensors) { return Sensors11::castFrom(sensors); }

// Each text with its canonical form once read (which must read back the same), or a part of the
// reason it is refused.
TEST(AnswerParse, CanonicalFormOrReasonForRefusal) {
    const struct {
        const char* text;
        bool ok;
        const char* expect;
    } cases[] = {
        {"  -3 ", true, "-3"},
        {"0 , [ 1, 2 ,3 ],true", true, "0,[1,2,3],true"},
        {"[-2147483648,2147483647]", true, "[-2147483648,2147483647]"},
        {"9223372036854775807,-9223372036854775808", true,
         "9223372036854775807,-9223372036854775808"},
        {R"("a\"b\\c\/d\n\t")", true, R"("a\"b\\c/d\u000a\u0009")"},
        {R"("\u00e9\ud83d\ude00")", true, "\"\xc3\xa9\xf0\x9f\x98\x80\""},
        {" transport-error\n", true, "transport-error"},
        {"0,bytes:41ff00C0,bytes:", true, "0,\"A\xff\\u0000\xc0\",\"\""},
        {"bytes:4", false, "column 7: bytes: needs pairs of hex digits"},
        {"bytes:41x", false, "expected ',' between values, found 'x'"},
        {"   ", false, "empty answer"},
        {"1,", false, "column 3: expected a value after ','"},
        {"1 2", false, "column 3: expected ',' between values"},
        {"True", false, "found 'True'"},
        {"0x10", false, "not a decimal integer: '0x10'"},
        {"9223372036854775808", false, "out of the 64-bit range"},
        {R"([1,"a"])", false, "vectors hold integers only"},
        {"[2147483648]", false, "out of the int32 range"},
        {R"("abc)", false, "column 1: unterminated string"},
        {R"("a\qb")", false, "unknown escape \\q"},
        {R"("\u12")", false, "four hex digits"},
        {R"("\ud800")", false, "low surrogate"},
        {"\"a\tb\"", false, "control character"},
        {"1,nocallback", false, "'nocallback' must be the whole answer"},
    };
    for (const auto& c : cases) {
        std::string error;
        std::optional<Answer> answer = Answer::Parse(c.text, &error);
        ASSERT_EQ(answer.has_value(), c.ok) << c.text << ": " << error;
        if (answer) {
            EXPECT_EQ(answer->ToString(), c.expect) << c.text;
            EXPECT_EQ(Answer::Parse(answer->ToString(), nullptr), answer) << c.text;
        } else {
            EXPECT_NE(error.find(c.expect), std::string::npos) << c.text << "\nerror: " << error;
        }
    }
}

TEST(AnswerProgram, AcceptsFittingAnswersAndNamesTheShapeOtherwise) {
    const struct {
        Service service;
        const char* operation;
        const char* answer;
        const char* expect;  // canonical answer once accepted, or a part of the error
        bool accepted;
    } cases[] = {
        {Service::kTouchscreen, "getTpPressureWaitingTime", "8589934592", "8589934592", true},
        {Service::kSensors, "handleSensorParameter", "5", R"(5,"",[])", true},
        {Service::kDisplay, "getDisplayFpsConfig", "nocallback", "nocallback", true},
        {Service::kLight, "setLightBrightness", "nocallback",
         "light.setLightBrightness answers value: int32 result; nocallback", false},
        {Service::kSensors, "getCompassRawValueLimit", "8589934592", "out of the int32 range",
         false},
        {Service::kTouchscreen, "isTpPressureSupported", "1",
         "value 1: expected bool supported, got an integer (1)", false},
        {Service::kSensors, "getFlickerRawData", "0,[1],3",
         "callback: int32 resultCode, int32[] samples; expected at most 2 values, got 3", false},
        {Service::kSensors, "getFlickerRawData", "0,5", "value 2: expected int32[] samples", false},
        {Service::kFactory, "getBsn", "0", "factory has no operation \"getBsn\"", false},
    };
    SimDevice device;
    for (const auto& c : cases) {
        std::string error;
        ASSERT_EQ(device.Program(c.service, c.operation, c.answer, &error), c.accepted)
            << c.operation << " " << c.answer << ": " << error;
        if (c.accepted) {
            EXPECT_EQ(device.CurrentAnswer(c.service, c.operation)->ToString(), c.expect);
        } else {
            EXPECT_NE(error.find(c.expect), std::string::npos) << c.operation << ": " << error;
        }
    }
    // A refused answer leaves the previous one in place; a reset brings back the defaults.
    EXPECT_EQ(device.CurrentAnswer(Service::kSensors, "getCompassRawValueLimit")->ToString(),
              "2000");
    device.ResetAnswers();
    EXPECT_EQ(device.CurrentAnswer(Service::kTouchscreen, "getTpPressureWaitingTime")->ToString(),
              "5000");
}

TEST(SimDevice, TransportErrorFailsTheCallWithoutItsCallback) {
    ::android::hardware::details::resetServiceManager();
    SimDevice device;
    device.Start();
    sp<Power> power = Power::getService("default");
    sp<Sensors10> sensors = Sensors10::getService("default");
    ASSERT_TRUE(power && sensors);
    std::string error;
    ASSERT_TRUE(device.Program(Service::kPower, "getPowerState", "transport-error", &error));
    ASSERT_TRUE(device.Program(Service::kPower, "checkUsbSpeed", "nocallback", &error));
    ASSERT_TRUE(
        device.Program(Service::kSensors, "getCompassRawValueLimit", "transport-error", &error));
    int callbacks = 0;
    EXPECT_FALSE(power->getPowerState("q", [&](auto&&...) { ++callbacks; }).isOk());
    EXPECT_TRUE(power->checkUsbSpeed("s", "", "", "", [&](auto&&...) { ++callbacks; }).isOk());
    EXPECT_FALSE(sensors->getCompassRawValueLimit().isOk());
    EXPECT_EQ(callbacks, 0);
    EXPECT_EQ(device.TakeCalls().size(), 3u);  // they reached the services, which stay alive
    EXPECT_TRUE(device.IsRegistered(Service::kPower));
}

TEST(SimDevice, DeadServiceRecordsNothingAndResetRenewsOnlyV10) {
    ::android::hardware::details::resetServiceManager();
    SimDevice device;
    ASSERT_TRUE(device.SetOnlyV10(Service::kSensors, true));
    device.Start();
    sp<Sensors10> sensors = Sensors10::getService("default");
    ASSERT_TRUE(sensors && V11(sensors) == nullptr);
    EXPECT_TRUE(device.Kill(Service::kSensors));
    EXPECT_FALSE(device.Kill(Service::kSensors));
    ::android::hardware::Return<int32_t> dead = sensors->getSensorCalibrateResult(1);
    EXPECT_FALSE(dead.isOk());
    EXPECT_TRUE(dead.isDeadObject());
    EXPECT_TRUE(device.TakeCalls().empty());
    EXPECT_TRUE(device.Revive(Service::kSensors));
    EXPECT_FALSE(device.Revive(Service::kSensors));
    sensors = Sensors10::getService("default");
    ASSERT_TRUE(sensors && V11(sensors) == nullptr);  // still 1.0-only until the reset
    device.Reset();
    EXPECT_FALSE(sensors->getSensorCalibrateDelayTime(2).isOk());  // killed and registered again
    EXPECT_NE(V11(Sensors10::getService("default")), nullptr);
    SimDevice::WaitIdle();
}

using Clock = std::chrono::steady_clock;

// Whether a call failed with a dead transport; checks the result, as a caller must.
template <typename R>
bool Dead(const R& result) {
    return !result.isOk() && result.isDeadObject();
}

long MsSince(Clock::time_point start) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

// A lookup of an undeclared service answers at once; one of a declared service that is late or
// down waits, and ends the moment the service registers, however long the wait has run.
TEST(SimDevice, LookupsWaitForDeclaredServicesUntilTheyRegister) {
    ::android::hardware::details::resetServiceManager();
    SimDevice device;
    ASSERT_TRUE(device.SetAbsent(Service::kLight, true));
    ASSERT_TRUE(device.SetStartDelay(Service::kPower, 300));
    Clock::time_point start = Clock::now();
    device.Start();
    EXPECT_FALSE(device.SetStartDelay(Service::kSensors, 1));
    EXPECT_EQ(::vendor::tavrin::hardware::light::V2_0::ILight::getService("default"), nullptr);
    EXPECT_LT(MsSince(start), 250) << "an undeclared service was waited for";
    EXPECT_NE(Power::getService("default"), nullptr);
    EXPECT_GE(MsSince(start), 300);

    ASSERT_TRUE(device.Kill(Service::kSensors));
    auto lookup = std::async(std::launch::async, [] { return Sensors10::getService("default"); });
    EXPECT_EQ(lookup.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    start = Clock::now();
    ASSERT_TRUE(device.Revive(Service::kSensors));
    EXPECT_NE(lookup.get(), nullptr);
    EXPECT_LT(MsSince(start), 200) << "the wait outlasted the registration";
    SimDevice::WaitIdle();
}

// A crash fails the call with a dead transport and kills the service, which registers again after
// the restart delay; with a negative delay it stays down.
TEST(SimDevice, CrashKillsTheServiceAndItRestartsAfterTheDelay) {
    ::android::hardware::details::resetServiceManager();
    SimDevice device;
    device.Start();
    device.SetRestartDelay(200);
    sp<Power> power = Power::getService("default");
    ASSERT_TRUE(device.Program(Service::kPower, "getPowerState", "crash", nullptr));
    ASSERT_TRUE(device.Program(Service::kPower, "setPowerState", " crash ", nullptr));
    EXPECT_EQ(device.CurrentAnswer(Service::kPower, "setPowerState")->ToString(), "crash");
    int callbacks = 0;
    Clock::time_point start = Clock::now();
    ::android::hardware::Return<void> crashed =
        power->getPowerState("q", [&](auto&&...) { ++callbacks; });
    EXPECT_TRUE(Dead(crashed));
    EXPECT_EQ(crashed.description(), "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
    EXPECT_EQ(callbacks, 0);
    EXPECT_FALSE(device.IsRegistered(Service::kPower));
    EXPECT_TRUE(Dead(power->setPowerState("s", "p"))) << "the old proxy stays dead";
    device.WaitRestarts();
    EXPECT_GE(MsSince(start), 200);
    EXPECT_TRUE(device.IsRegistered(Service::kPower));
    device.SetRestartDelay(-1);
    power = Power::getService("default");
    EXPECT_TRUE(Dead(power->setPowerState("s", "p"))) << "the crash answer stays";
    EXPECT_EQ(device.TakeCalls().size(), 2u);  // the dead proxy's call never arrived
    device.WaitRestarts();                     // nothing to wait for: it stays down
    EXPECT_FALSE(device.IsRegistered(Service::kPower));
    device.SetRestartDelay(0);
    ASSERT_TRUE(device.Revive(Service::kPower));
    SimDevice::WaitIdle();
}

}  // namespace
}  // namespace simdevice
