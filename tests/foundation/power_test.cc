// Power state and USB speed through the power service.
#include <tuple>

#include "device_test.h"

namespace kxtest {
namespace {

constexpr const char* kGetState = "(Ljava/lang/String;)Ljava/lang/String;";
constexpr const char* kSetState = "(Ljava/lang/String;Ljava/lang/String;)I";

class Power : public DeviceTest {};

TEST_F(Power, GetPowerStateKeepsTheInfoOnlyForASuccessfulQuery) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
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
    for (const auto& [answer, result, line] : cases) {
        Check(Bind("getPowerStateNative", kGetState, JStr("battery")), answer,
              "power.getPowerState(\"battery\")", result, {Line(D, "GetPowerState, " + line)});
    }
}

TEST_F(Power, SetPowerStateAndUsbSpeedPassTheirTextsAndReturnTheCode) {
    for (int code : {0, 3, -7}) {
        Check(Bind("setPowerStateNative", kSetState, JStr("aging"), JStr("on")),
              std::to_string(code), "power.setPowerState(\"aging\", \"on\")", std::to_string(code),
              {Line(E, "SetPowerState, testScene:aging, para:on, result:" + std::to_string(code))});
    }
    // The scene goes with three empty texts; the info is only logged.
    const std::tuple<const char*, int, const char*> cases[] = {
        {"0,\"USB3.0\"", 0, "USB3.0"}, {"-9,\"no link\"", -9, "no link"}, {"nocallback", -1, ""}};
    for (const auto& [answer, code, info] : cases) {
        Check(Bind("checkUsbSpeedNative", "(Ljava/lang/String;)I", JStr("otg")), answer,
              "power.checkUsbSpeed(\"otg\", \"\", \"\", \"\")", std::to_string(code),
              {Line(D, "CheckUsbSpeed, scene: otg, resultCode: " + std::to_string(code) +
                           ", resultInfo: " + info)});
    }
}

// Characters go back in the order they were taken, and before the result string is made.
TEST_F(Power, StringCallsReleaseInTheOrderTakenBeforeTheResultIsMade) {
    using Trace = std::vector<StringCall>;
    Answer(simdevice::Service::kPower, "getPowerState", "0,\"full\"");
    TraceStringCalls(true);
    EXPECT_EQ(CallString("getPowerStateNative", kGetState, JStr("battery")), "full");
    EXPECT_EQ(TakeStringCalls(), (Trace{{'G', "battery"}, {'R', "battery"}, {'N', "full"}}));
    EXPECT_EQ(CallInt("setPowerStateNative", kSetState, JStr("aging"), JStr("on")), 0);
    EXPECT_EQ(TakeStringCalls(), (Trace{{'G', "aging"}, {'G', "on"}, {'R', "aging"}, {'R', "on"}}));
    TraceStringCalls(false);
}

}  // namespace
}  // namespace kxtest
