// Pressure calibration: the support cache, the two reductions, the type dispatch, and the raw-data
// hand-over to the sensor service.
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "touch_test.h"

namespace touchtest {
namespace {

using kxtest::CallBool;

bool Supported() { return CallBool("isTpPressureSupportNative", "()Z"); }
const std::string kAsked = "touchscreen.isTpPressureSupported()@17";
const LogLine kSupportedLine = Line(D, "IsTpPressureSupported true");
const LogLine kNoTouchscreen = Line(E, "IsTpPressureSupported false, g_kxTouchScreen is null");

using Pressure = TouchTest;

TEST_F(Pressure, TrueIsServedFromTheCacheUntilTheNextConnectOrRelease) {
    EXPECT_TRUE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{kSupportedLine});
    EXPECT_EQ(Calls(), Texts{kAsked});

    Answer(Service::kTouchscreen, "isTpPressureSupported", "false");
    EXPECT_TRUE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{});
    EXPECT_EQ(Calls(), Texts{});

    Connect();
    TakeLogs();
    EXPECT_FALSE(Supported());  // asked again; a false answer is neither cached nor logged
    EXPECT_FALSE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{});
    EXPECT_EQ(Calls(), (Texts{kAsked, kAsked}));

    Answer(Service::kTouchscreen, "isTpPressureSupported", "true");
    EXPECT_TRUE(Supported());
    Release();
    TakeLogs();
    EXPECT_FALSE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{kNoTouchscreen});
}

TEST_F(Pressure, AnyServiceDeathForgetsTheCachedAnswer) {
    EXPECT_TRUE(Supported());
    Kill(Service::kSensors);
    Calls();
    EXPECT_FALSE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{kNoTouchscreen});

    ASSERT_TRUE(kxtest::Device().Revive(Service::kSensors));
    kxtest::WaitIdle();
    TakeLogs();
    EXPECT_TRUE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{kSupportedLine});
    EXPECT_EQ(Calls(), Texts{kAsked});
}

TEST_F(Pressure, ACachedAnswerIsReadThroughItsLowestBitWithoutLookingAtTheHandle) {
    auto* cache = static_cast<std::atomic<uint8_t>*>(
        kxtest::LibrarySymbol("_ZN5kxmmi24g_tpPressureSupportCacheE"));
    ASSERT_NE(cache, nullptr);
    Release();
    const std::pair<uint8_t, bool> cases[] = {{1, true}, {3, true}, {2, false}};
    for (const auto& [value, cached] : cases) {
        SCOPED_TRACE(static_cast<int>(value));
        TakeLogs();
        cache->store(value);
        EXPECT_EQ(Supported(), cached);
        EXPECT_EQ(TakeLogs(), cached ? Lines{} : Lines{kNoTouchscreen});
    }
}

TEST_F(Pressure, WaitingTimeIsReducedIn64BitsKeepingItsSign) {
    const std::pair<const char*, int64_t> cases[] = {
        {"144006", 6},
        {"144000", 0},
        {"-144006", -6},
        {"143999", 143999},
        {"-143999", -143999},
        {"2147483648", 11648},
        {"5000000000", 32000},
        {"-5000000000", -32000},
        {"9223372036854775807", 55807},
        {"-9223372036854775808", -55808},
    };
    for (const auto& [answer, reduced] : cases) {
        SCOPED_TRACE(answer);
        Answer(Service::kTouchscreen, "getTpPressureWaitingTime", answer);
        EXPECT_EQ(kxtest::CallLong("getTpPressureWaitingTimeNative", "()J"), reduced);
        EXPECT_EQ(TakeLogs(), Lines{});
        EXPECT_EQ(Calls(), Texts{"touchscreen.getTpPressureWaitingTime()@16"});
    }
}

TEST_F(Pressure, ExternCalibrationCopiesTheArrayAndReducesOnlyUnderTestCode11) {
    struct Case {
        int testCtrl;
        int32_t answer;
        int32_t result;
    } cases[] = {
        {11, 2 * 144000 + 1, 1},    {10, 2 * 144000 + 1, 2 * 144000 + 1},
        {11, -144006, -6},          {11, 143999, 143999},
        {11, INT32_MAX, 11647},     {11, INT32_MIN, -11648},
        {12, INT32_MIN, INT32_MIN},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.answer);
        Answer(Service::kSensors, "setApPressureCalibrationExtern", std::to_string(c.answer));
        EXPECT_EQ(CallInt("setApPressureCalibExternNative", "(II[I)I", 4, c.testCtrl,
                          kxtest::JInts({7, -8, INT32_MAX})),
                  c.result);
        std::string ctrl = std::to_string(c.testCtrl);
        EXPECT_EQ(TakeLogs(),
                  (Lines{Line(D, "SetApPressureCalibrationExtern rawDataLength: 3"),
                         Line(D, "SetApPressureCalibrationExtern, sensorId: 4, testCtrl: " + ctrl +
                                     ", result: " + std::to_string(c.result))}));
        EXPECT_EQ(Calls(), Texts{"sensors.setApPressureCalibrationExtern(4, " + ctrl +
                                 ", [7, -8, 2147483647])@21"});
    }
}

TEST_F(Pressure, ExternCalibrationSendsAnEmptyArrayButRejectsANullOne) {
    EXPECT_EQ(CallInt("setApPressureCalibExternNative", "(II[I)I", 1, 2, kxtest::JInts({})), 0);
    EXPECT_EQ(TakeLogs(), (Lines{Line(D, "SetApPressureCalibrationExtern rawDataLength: 0"),
                                 Line(D,
                                      "SetApPressureCalibrationExtern, sensorId: 1, testCtrl: 2, "
                                      "result: 0")}));
    EXPECT_EQ(Calls(), Texts{"sensors.setApPressureCalibrationExtern(1, 2, [])@21"});

    EXPECT_EQ(CallInt("setApPressureCalibExternNative", "(II[I)I", 1, 2, nullptr), -1);
    EXPECT_EQ(TakeLogs(), Lines{Line(E, "SetApPressureCalibrationExtern fail, rawData is null")});
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(Pressure, TypeSelectsTheOperationAndAnyOtherTypeCallsNothing) {
    struct Case {
        const char* method;
        const char* function;
        bool indexed;
        int type;
        const char* call;  // nullptr: nothing reaches the service
    } cases[] = {
        {"controlTpPressureCalibModeNative", "ControlTpPressureCalibMode", false, 0,
         "controlTpPressureCalibMode0()@26"},
        {"controlTpPressureCalibModeNative", "ControlTpPressureCalibMode", false, 1,
         "controlTpPressureCalibMode1()@27"},
        {"controlTpPressureCalibModeNative", "ControlTpPressureCalibMode", false, 2, nullptr},
        {"setTpPressureCalibrationNative", "SetTpPressureCalibration", true, 0,
         "setTpPressureCalibration0(7)@28"},
        {"setTpPressureCalibrationNative", "SetTpPressureCalibration", true, 1,
         "setTpPressureCalibration1(7)@29"},
        {"setTpPressureCalibrationNative", "SetTpPressureCalibration", true, -1, nullptr},
        {"setTpPressureVerificationNative", "SetTpPressureVerification", true, 0,
         "setTpPressureVerification0(7)@30"},
        {"setTpPressureVerificationNative", "SetTpPressureVerification", true, 1,
         "setTpPressureVerification1(7)@31"},
        {"setTpPressureVerificationNative", "SetTpPressureVerification", true, 256, nullptr},
    };
    for (bool answer : {true, false}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(c.function) + " type " + std::to_string(c.type));
            if (c.call != nullptr) {
                std::string op(c.call, std::string(c.call).find('('));
                Answer(Service::kTouchscreen, op.c_str(), answer ? "true" : "false");
            }
            bool success = answer && c.call != nullptr;
            EXPECT_EQ(CallBool(c.method, c.indexed ? "(II)Z" : "(I)Z", c.type, 7), success);
            std::string args = "type: " + std::to_string(c.type) + (c.indexed ? ", index: 7" : "");
            EXPECT_EQ(TakeLogs(),
                      (Lines{Line(D, std::string(c.function) + ", " + args +
                                         ", isOperationSuccess: " + (success ? "1" : "0"))}));
            EXPECT_EQ(Calls(), c.call ? Texts{std::string("touchscreen.") + c.call} : Texts{});
        }
    }
}

TEST_F(Pressure, ValueAnswersPassThroughWithTheirArgumentsInJavaOrder) {
    Answer(Service::kTouchscreen, "getTpPressureStatus", "-5");
    Answer(Service::kTouchscreen, "getTpPressureVerifyResult", "3");
    Answer(Service::kTouchscreen, "checkTpPressureCalibPosition", "-1");
    EXPECT_EQ(CallInt("getTpPressureStatusNative", "()I"), -5);
    EXPECT_EQ(CallInt("getTpPressureVerifyResultNative", "(I)I", 12), 3);
    EXPECT_EQ(CallInt("checkTpPressureCalibPositionNative", "(III)I", 1, -2, 3), -1);
    EXPECT_EQ(TakeLogs(), (Lines{Line(D, "GetTpPressureStatus, result: -5"),
                                 Line(D, "GetTpPressureVerifyResult, result: 3"),
                                 Line(D, "CheckTpPressureCalibPosition, result: -1")}));
    EXPECT_EQ(Calls(), (Texts{"touchscreen.getTpPressureStatus()@20",
                              "touchscreen.getTpPressureVerifyResult(12)@25",
                              "touchscreen.checkTpPressureCalibPosition(1, -2, 3)@33"}));
}

}  // namespace
}  // namespace touchtest
