// Power state and USB speed through the power service.
#include <gtest/gtest.h>

#include <tuple>

#include "device_test.h"
#include "jvm_harness.h"

namespace {

using kxtest::JStr;
using kxtest::LogLine;
using simdevice::Service;

using kxtest::D;
using kxtest::E;
constexpr const char* kGetState = "(Ljava/lang/String;)Ljava/lang/String;";
constexpr const char* kSetState = "(Ljava/lang/String;Ljava/lang/String;)I";
constexpr const char* kUsb = "(Ljava/lang/String;)I";

class Power : public kxtest::DeviceTest {
  protected:
    static void Answer(const char* operation, const char* answer) {
        DeviceTest::Answer(Service::kPower, operation, std::string(answer));
    }
};

struct StateCase {
    const char* answer;
    std::string result;
    std::string line;
};

TEST_F(Power, GetPowerStateKeepsTheInfoOnlyForASuccessfulQuery) {
    const StateCase cases[] = {
        {"0,\"charging 87%\"", "charging 87%", "result code: 0, result info: charging 87%"},
        {"5,\"charging 87%\"", "", "result code: 5, result info: "},
        {"-2,\"gone\"", "", "result code: -2, result info: "},
        {"nocallback", "", "result code: -1, result info: "},
        // Java gets valid modified UTF-8 (as GetStringUTFChars hands it back); the log line keeps
        // the service's bytes.
        {R"(0,"caf\u00e9 \ud83d\ude00 ok")", "caf\xC3\xA9 \xED\xA0\xBD\xED\xB8\x80 ok",
         "result code: 0, result info: caf\xC3\xA9 \xF0\x9F\x98\x80 ok"},
        {"0,bytes:41ff42",
         "A\xEF\xBF\xBD"
         "B",
         "result code: 0, result info: A\xFF"
         "B"},
    };
    for (const StateCase& c : cases) {
        SCOPED_TRACE(c.answer);
        Answer("getPowerState", c.answer);
        EXPECT_EQ(kxtest::CallString("getPowerStateNative", kGetState, JStr("battery")), c.result);
        EXPECT_EQ(kxtest::TakeLogs(),
                  (std::vector<LogLine>{{D, "KxMMITest_jni: GetPowerState, " + c.line}}));
        EXPECT_EQ(Calls(), (std::vector<std::string>{"power.getPowerState(\"battery\")"}));
    }
}

TEST_F(Power, SetPowerStatePassesSceneThenParameterAndLogsAtErrorPriority) {
    for (int result : {0, 3, -7}) {
        Answer("setPowerState", std::to_string(result).c_str());
        EXPECT_EQ(kxtest::CallInt("setPowerStateNative", kSetState, JStr("aging"), JStr("on")),
                  result);
        EXPECT_EQ(kxtest::TakeLogs(),
                  (std::vector<LogLine>{{E,
                                         "KxMMITest_jni: SetPowerState, testScene:aging, "
                                         "para:on, result:" +
                                             std::to_string(result)}}));
        EXPECT_EQ(Calls(), (std::vector<std::string>{"power.setPowerState(\"aging\", \"on\")"}));
    }
}

// Characters go back in the order they were taken, and before the result string is made.
TEST_F(Power, StringCallsReleaseInTheOrderTakenBeforeTheResultIsMade) {
    using Trace = std::vector<kxtest::StringCall>;
    Answer("getPowerState", "0,\"full\"");
    kxtest::TraceStringCalls(true);
    EXPECT_EQ(kxtest::CallString("getPowerStateNative", kGetState, JStr("battery")), "full");
    EXPECT_EQ(kxtest::TakeStringCalls(),
              (Trace{{'G', "battery"}, {'R', "battery"}, {'N', "full"}}));
    EXPECT_EQ(kxtest::CallInt("setPowerStateNative", kSetState, JStr("aging"), JStr("on")), 0);
    EXPECT_EQ(kxtest::TakeStringCalls(),
              (Trace{{'G', "aging"}, {'G', "on"}, {'R', "aging"}, {'R', "on"}}));
    kxtest::TraceStringCalls(false);
}

TEST_F(Power, CheckUsbSpeedSendsTheSceneWithThreeEmptyTextsAndReturnsTheCode) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"0,\"USB3.0\"", 0, "USB3.0"}, {"-9,\"no link\"", -9, "no link"}, {"nocallback", -1, ""}};
    for (const auto& [answer, code, info] : cases) {
        SCOPED_TRACE(answer);
        Answer("checkUsbSpeed", answer);
        EXPECT_EQ(kxtest::CallInt("checkUsbSpeedNative", kUsb, JStr("otg")), code);
        EXPECT_EQ(kxtest::TakeLogs(), (std::vector<LogLine>{kxtest::Line(
                                          D, "CheckUsbSpeed, scene: otg, resultCode: " +
                                                 std::to_string(code) + ", resultInfo: " + info)}));
        EXPECT_EQ(Calls(),
                  (std::vector<std::string>{"power.checkUsbSpeed(\"otg\", \"\", \"\", \"\")"}));
    }
}

}  // namespace
