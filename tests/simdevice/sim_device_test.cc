// What the JVM suites do not reach: answer texts and shapes, failed calls without callbacks, dead
// services recording nothing and refusing repeated kills and revivals, resets renewing 1.0-only.
#include <android/log.h>
#include <gtest/gtest.h>
#include <hidl/HostTransport.h>
#include <simdevice/log_capture.h>
#include <simdevice/sim_device.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/IKxFactoryInterface.h>
#include <vendor/tavrin/hardware/light/2.0/ILight.h>
#include <vendor/tavrin/hardware/power/1.0/IKXPower.h>
#include <vendor/tavrin/hardware/sensors/1.1/ISensors.h>

#include <chrono>
#include <future>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace simdevice {
namespace {

using ::android::sp;
using Sensors10 = ::vendor::tavrin::hardware::sensors::V1_0::ISensors;
using Sensors11 = ::vendor::tavrin::hardware::sensors::V1_1::ISensors;
using Power = ::vendor::tavrin::hardware::power::V1_0::IKXPower;
using Light = ::vendor::tavrin::hardware::light::V2_0::ILight;
using Factory = ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::IKxFactoryInterface;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdOperation;

sp<Sensors11> V11(const sp<Sensors10>& sensors) { return Sensors11::castFrom(sensors); }

// A device started on a service manager of its own.
std::unique_ptr<SimDevice> Started() {
    ::android::hardware::details::resetServiceManager();
    auto device = std::make_unique<SimDevice>();
    device->Start();
    return device;
}

// Every wait here ends within this, and fails saying what it waited for.
constexpr std::chrono::milliseconds kBound{10000};
#define ASSERT_IDLE() \
    ASSERT_TRUE(SimDevice::WaitIdle(kBound)) << "transport reports undelivered after 10 s"
#define ASSERT_RESTARTED(device) \
    ASSERT_TRUE((device).WaitRestarts(kBound)) << "still to come: " << (device).WaitingFor()

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
        {"bytes:4", false, "column 7: bytes:HEX takes pairs of hex digits"},
        {"bytes:41x", false, "column 9: bytes:HEX takes pairs of hex digits"},
        {"   ", false, "empty answer"},
        {"1,", false, "column 3: expected a value after ','"},
        {R"("a" b)", false, "column 5: expected ',' between values"},
        // A bare word is the text itself, up to the next comma outside quotes and brackets, as
        // a shell leaves a quoted value; a keyword among values is text too.
        {"True", true, R"("True")"},
        {" 0, capacity=85 status=charging ,x", true, R"(0,"capacity=85 status=charging","x")"},
        {R"(a"b,c"d , x)", true, R"("a\"b,c\"d","x")"},
        {"0x10,-x", true, R"("0x10","-x")"},
        {"1,nocallback", true, R"(1,"nocallback")"},
        {"1.5", false, "not an integer: '1.5'"},
        {"-2e3", false, "not an integer: '-2e3'"},
        {"null", false, "null is not a value"},
        {"1,,2", false, "column 3: expected a value"},
        {"[1,x]", false, "vectors hold integers only"},
        {"[12ab]", false, "not a decimal integer: '12ab'"},
        {"9223372036854775808", false, "out of the 64-bit range"},
        {R"([1,"a"])", false, "vectors hold integers only"},
        {"[2147483648]", false, "out of the int32 range"},
        {R"("abc)", false, "column 1: unterminated string"},
        {R"("a\qb")", false, "unknown escape \\q"},
        {R"("\u12")", false, "four hex digits"},
        {R"("\ud800")", false, "low surrogate"},
        {"\"a\tb\"", false, "control character"},
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
        {Service::kPower, "getPowerState", "5,on battery", R"(5,"on battery")", true},
        {Service::kPower, "setPowerState", "crsh",
         "unknown answer keyword crsh (did you mean crash?)", false},
        {Service::kPower, "getPowerState", "NoCalback", "(did you mean nocallback?)", false},
        {Service::kPower, "setPowerState", "charging", "value 1: expected int32 result", false},
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

// The grammar's own description must hold: each example is one value of its form, each keyword the
// whole answer it names.
TEST(AnswerGrammar, ExamplesAndKeywordsReadAsDescribed) {
    const Answer::Kind kinds[] = {Answer::Kind::kNoCallback, Answer::Kind::kTransportError,
                                  Answer::Kind::kCrash};
    ASSERT_EQ(AnswerKeywords().size(), std::size(kinds));
    for (size_t i = 0; i < std::size(kinds); ++i) {
        std::optional<Answer> a = Answer::Parse(AnswerKeywords()[i].word, nullptr);
        ASSERT_TRUE(a) << AnswerKeywords()[i].word;
        EXPECT_EQ(a->kind(), kinds[i]) << AnswerKeywords()[i].word;
    }
    const std::map<std::string, size_t> alternative = {{"integer", 0}, {"bool", 1},   {"string", 2},
                                                       {"bytes", 2},   {"vector", 3}, {"word", 2}};
    for (const AnswerForm& f : AnswerForms()) {
        std::string error;
        std::optional<Answer> a = Answer::Parse(f.example, &error);
        ASSERT_TRUE(a && a->values().size() == 1) << f.form << " " << f.example << ": " << error;
        EXPECT_EQ(a->values()[0].index(), alternative.at(f.form)) << f.form;
    }
}

// Calls keep their arguments as values: records field by field, vectors whole; the text shows
// long vectors shortened.
TEST(SimDevice, CallsKeepTypedArguments) {
    const auto device = Started();
    sp<Factory> factory = Factory::getService("kxfactoryinterface_hal");
    sp<Sensors10> sensors = Sensors10::getService("default");
    ASSERT_TRUE(factory && sensors);
    FmdOperation op{1, 2, 3, 4, "ST", "B\"N"};
    EXPECT_TRUE(factory->sendBigDataOperation(op).isOk());
    std::vector<int32_t> raw(40);
    for (size_t i = 0; i < raw.size(); ++i) raw[i] = static_cast<int32_t>(i);
    EXPECT_TRUE(sensors->setApPressureCalibrationExtern(7, -1, raw).isOk());
    std::vector<Call> calls = device->TakeCalls();
    ASSERT_EQ(calls.size(), 2u);
    const ArgRecord& record = std::get<ArgRecord>(calls[0].args.at(0).value);
    ASSERT_EQ(record.size(), 6u);
    EXPECT_EQ(record[5].first, "bsn");
    EXPECT_EQ(std::get<std::string>(record[5].second.value), "B\"N");
    EXPECT_EQ(calls[0].Text(),
              R"(factory.sendBigDataOperation({version: 1, commandId: 2, operation: 3, cycle: 4, )"
              R"(station: "ST", bsn: "B\"N"}))");
    EXPECT_EQ(calls[1].position, 21u);
    EXPECT_EQ(std::get<std::vector<int32_t>>(calls[1].args.at(2).value), raw);
    EXPECT_NE(calls[1].Text().find(", 31, ... (40 values)])"), std::string::npos)
        << calls[1].Text();
}

struct Recipient : ::android::hardware::hidl_death_recipient {
    void serviceDied(uint64_t, const ::android::wp<::android::hidl::base::V1_0::IBase>&) override {}
};

// Linked follows the client's death link, not the registration alone.
TEST(SimDevice, LinkedFollowsTheClientsDeathLink) {
    const auto device = Started();
    sp<Power> power = Power::getService("default");
    ASSERT_NE(power, nullptr);
    EXPECT_FALSE(device->Linked(Service::kPower)) << "registered, but nobody linked";
    sp<Recipient> recipient = new Recipient();
    ASSERT_TRUE(power->linkToDeath(recipient, 7).isOk());
    EXPECT_TRUE(device->Linked(Service::kPower));
    EXPECT_FALSE(device->Linked(Service::kLight));
    ASSERT_TRUE(power->unlinkToDeath(recipient).isOk());
    EXPECT_FALSE(device->Linked(Service::kPower));
    ASSERT_TRUE(power->linkToDeath(recipient, 7).isOk());
    ASSERT_TRUE(device->Kill(Service::kPower));
    EXPECT_FALSE(device->Linked(Service::kPower)) << "a dead registration holds no link";
    ASSERT_TRUE(device->Revive(Service::kPower));
    ASSERT_IDLE();
}

// Log lines come as the platform's viewer shows them, without the trailing newline; the old text
// form keeps the message as written.
TEST(LogCapture, LinesKeepPriorityTagAndTextWithoutTheNewline) {
    CaptureLogs();
    TakeLogLines();
    __android_log_print(ANDROID_LOG_ERROR, nullptr, "%s: fail\n", "KxMMITest_jni");
    __android_log_print(ANDROID_LOG_WARN, "HidlServiceManagement", "Waited");
    std::vector<LogLine> lines = TakeLogLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].priority, 'E');
    EXPECT_EQ(lines[0].tag, "");
    EXPECT_EQ(lines[0].text, "KxMMITest_jni: fail");
    EXPECT_EQ(lines[1].tag, "HidlServiceManagement");
    __android_log_print(ANDROID_LOG_DEBUG, nullptr, "x\n");
    __android_log_print(ANDROID_LOG_WARN, "T", "y");
    EXPECT_EQ(TakeLogs(), (std::vector<std::string>{"D x\n", "W T: y"}));
}

TEST(SimDevice, TransportErrorFailsTheCallWithoutItsCallback) {
    const auto device = Started();
    sp<Power> power = Power::getService("default");
    sp<Sensors10> sensors = Sensors10::getService("default");
    ASSERT_TRUE(power && sensors);
    std::string error;
    ASSERT_TRUE(device->Program(Service::kPower, "getPowerState", "transport-error", &error));
    ASSERT_TRUE(device->Program(Service::kPower, "checkUsbSpeed", "nocallback", &error));
    ASSERT_TRUE(
        device->Program(Service::kSensors, "getCompassRawValueLimit", "transport-error", &error));
    int callbacks = 0;
    EXPECT_FALSE(power->getPowerState("q", [&](auto&&...) { ++callbacks; }).isOk());
    EXPECT_TRUE(power->checkUsbSpeed("s", "", "", "", [&](auto&&...) { ++callbacks; }).isOk());
    EXPECT_FALSE(sensors->getCompassRawValueLimit().isOk());
    EXPECT_EQ(callbacks, 0);
    EXPECT_EQ(device->TakeCalls().size(), 3u);  // they reached the services, which stay alive
    EXPECT_TRUE(device->IsRegistered(Service::kPower));
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
    ASSERT_IDLE();
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
// down waits, and ends the moment the service registers, however long the wait has run, or when
// a revival set for later comes.
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
    ASSERT_EQ(lookup.wait_for(kBound), std::future_status::ready) << device.WaitingFor();
    EXPECT_NE(lookup.get(), nullptr);
    EXPECT_LT(MsSince(start), 200) << "the wait outlasted the registration";

    // ReviveAfter returns at once and the service registers later; the waits know it is coming.
    EXPECT_FALSE(device.ReviveAfter(Service::kPower, 100)) << "it is registered";
    ASSERT_TRUE(device.Kill(Service::kPower));
    start = Clock::now();
    ASSERT_TRUE(device.ReviveAfter(Service::kPower, 300));
    EXPECT_EQ(device.PendingRegistrations(), std::vector<Service>{Service::kPower});
    EXPECT_NE(device.WaitingFor().find("power to register in"), std::string::npos)
        << device.WaitingFor();
    auto late = std::async(std::launch::async, [] { return Power::getService("default"); });
    ASSERT_EQ(late.wait_for(kBound), std::future_status::ready) << device.WaitingFor();
    EXPECT_NE(late.get(), nullptr);
    EXPECT_GE(MsSince(start), 300);
    ASSERT_RESTARTED(device);
    EXPECT_TRUE(device.PendingRegistrations().empty());
    ASSERT_IDLE();
}

// A crash fails the call with a dead transport and kills the service, which registers again after
// the restart delay; with a negative delay it stays down, until a reset restores the default.
TEST(SimDevice, CrashKillsTheServiceAndItRestartsAfterTheDelay) {
    const auto device = Started();
    device->SetRestartDelay(200);
    sp<Power> power = Power::getService("default");
    ASSERT_TRUE(device->Program(Service::kPower, "getPowerState", "crash", nullptr));
    ASSERT_TRUE(device->Program(Service::kPower, "setPowerState", " crash ", nullptr));
    EXPECT_EQ(device->CurrentAnswer(Service::kPower, "setPowerState")->ToString(), "crash");
    int callbacks = 0;
    Clock::time_point start = Clock::now();
    ::android::hardware::Return<void> crashed =
        power->getPowerState("q", [&](auto&&...) { ++callbacks; });
    EXPECT_TRUE(Dead(crashed));
    EXPECT_EQ(crashed.description(), "Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
    EXPECT_EQ(callbacks, 0);
    EXPECT_FALSE(device->IsRegistered(Service::kPower));
    EXPECT_TRUE(Dead(power->setPowerState("s", "p"))) << "the old proxy stays dead";
    ASSERT_RESTARTED(*device);
    EXPECT_GE(MsSince(start), 200);
    EXPECT_TRUE(device->IsRegistered(Service::kPower));
    device->SetRestartDelay(-1);
    power = Power::getService("default");
    EXPECT_TRUE(Dead(power->setPowerState("s", "p"))) << "the crash answer stays";
    EXPECT_EQ(device->TakeCalls().size(), 2u);  // the dead proxy's call never arrived
    ASSERT_RESTARTED(*device);                  // nothing to wait for: it stays down
    EXPECT_FALSE(device->IsRegistered(Service::kPower));
    // A reset brings the default delay back.
    device->Reset();
    ASSERT_TRUE(device->Program(Service::kPower, "setPowerState", "crash", nullptr));
    start = Clock::now();
    EXPECT_TRUE(Dead(Power::getService("default")->setPowerState("s", "p")));
    EXPECT_EQ(device->PendingRegistrations(), std::vector<Service>{Service::kPower});
    ASSERT_RESTARTED(*device);
    EXPECT_GE(MsSince(start), SimDevice::kDefaultRestartDelayMs);
    EXPECT_TRUE(device->IsRegistered(Service::kPower));
}

// Successive calls take successive answers, the last one holds; a refused sequence changes
// nothing.
TEST(SimDevice, AnswerSequencesAdvanceAndTheLastHolds) {
    const auto device = Started();
    sp<Light> light = Light::getService("default");
    ASSERT_NE(light, nullptr);
    std::string error;
    ASSERT_TRUE(device->Program(Service::kLight, "setLightBrightness",
                                {"5", "transport-error", "7"}, &error))
        << error;
    EXPECT_EQ(device->CurrentAnswer(Service::kLight, "setLightBrightness")->ToString(), "5");
    std::vector<std::string> seen;
    for (int i = 0; i < 4; ++i) {
        ::android::hardware::Return<int32_t> r = light->setLightBrightness(1, 2);
        seen.push_back(r.isOk() ? std::to_string(static_cast<int32_t>(r)) : "failed");
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"5", "failed", "7", "7"}));
    EXPECT_FALSE(
        device->Program(Service::kLight, "setLightBrightness", {"1", "nocallback"}, &error));
    EXPECT_NE(error.find("answer 2 of 2: light.setLightBrightness answers value"),
              std::string::npos)
        << error;
    EXPECT_FALSE(device->Program(Service::kLight, "setLightBrightness", {"1", "[x]"}, &error));
    EXPECT_NE(error.find("answer 2 of 2: column 2"), std::string::npos) << error;
    EXPECT_FALSE(
        device->Program(Service::kLight, "setLightBrightness", std::vector<std::string>{}, &error));
    EXPECT_EQ(device->CurrentAnswer(Service::kLight, "setLightBrightness")->ToString(), "7");
    device->ResetAnswers();
    EXPECT_EQ(device->CurrentAnswer(Service::kLight, "setLightBrightness")->ToString(), "0");
}

// A delayed operation answers late, after the call was recorded; other operations and a reset
// device answer at once.
TEST(SimDevice, DelayedOperationsAnswerLate) {
    const auto device = Started();
    sp<Power> power = Power::getService("default");
    ASSERT_NE(power, nullptr);
    std::string error;
    ASSERT_TRUE(device->SetDelay(Service::kPower, "setPowerState", 1000, &error)) << error;
    EXPECT_FALSE(device->SetDelay(Service::kPower, "setPower", 300, &error));
    EXPECT_NE(error.find("power has no operation \"setPower\""), std::string::npos) << error;
    Clock::time_point start = Clock::now();
    auto late = std::async(std::launch::async, [&] { return power->setPowerState("s", "p"); });
    for (int i = 0; i < 100 && device->TakeCalls().empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(late.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout)
        << "the call was recorded, and is still to be answered";
    ASSERT_EQ(late.wait_for(kBound), std::future_status::ready);
    EXPECT_TRUE(late.get().isOk());
    EXPECT_GE(MsSince(start), 1000);
    ASSERT_TRUE(device->SetDelay(Service::kPower, "setPowerState", 5000, &error));
    device->Reset();
    start = Clock::now();
    EXPECT_TRUE(power->setPowerState("s", "p").isOk());
    EXPECT_LT(MsSince(start), 4000) << "the reset left the delay";
}

// A report's handler stuck in a lookup of a killed service (the library's reconnect, as when a
// test kills one service while another restarts) makes the waits run out, naming the service;
// they end once it registers.
TEST(SimDevice, WaitsRunOutNamingWhatTheyWaitFor) {
    const auto device = Started();
    ASSERT_RESTARTED(*device);  // nothing to come: at once
    ASSERT_TRUE(device->Kill(Service::kLight));
    ::android::hardware::details::postToTransport([] { Light::getService("default"); });
    EXPECT_FALSE(SimDevice::WaitIdle(std::chrono::milliseconds(200)));
    EXPECT_FALSE(device->WaitRestarts(std::chrono::milliseconds(200)));
    EXPECT_EQ(device->WaitingFor(), "declared but not registered, so lookups of them wait: light");
    ASSERT_TRUE(device->Revive(Service::kLight));
    ASSERT_IDLE();
}

}  // namespace
}  // namespace simdevice
