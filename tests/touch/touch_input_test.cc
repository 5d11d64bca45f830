// Capacitance tests with their static fail-info fields, touch keys, feature configuration, the
// calibration result and the crown self-test.
#include <string>
#include <vector>

#include "touch_test.h"

namespace touchtest {
namespace {

using kxtest::CallString;

using TouchInput = TouchTest;

struct CapacitanceTest {
    const char* method;
    const char* function;
    const char* field;
    Service service;
    const char* operation;
    std::string call;
};
const CapacitanceTest kCapacitanceTests[] = {
    {"getCapacitanceTestResultNative", "GetCapacitanceTestResult", "sTpCapacitanceFailInfo",
     Service::kTouchscreen, "getCapacitanceTestResult",
     "touchscreen.getCapacitanceTestResult()@11"},
    {"getTouchKeyCapacitanceTestResultNative", "GetTouchkeyCapacitanceTestResult",
     "sTouchKeyCapacitanceFailInfo", Service::kOtherdevices, "getTouchkeyCapacitanceTestResult",
     "otherdevices.getTouchkeyCapacitanceTestResult(0)@1"},
};

TEST_F(TouchInput, CapacitanceTestsLeaveTheServiceTextInTheirFieldWhateverTheCode) {
    const struct {
        const char* answer;
        int ret;
        std::string info;
    } answers[] = {{R"(0,"")", 0, ""},
                   {R"(3,"channel 5 open")", 3, "channel 5 open"},
                   {R"(0,"marginal")", 0, "marginal"},
                   {"nocallback", -1, ""}};
    for (const CapacitanceTest& t : kCapacitanceTests) {
        for (const auto& [answer, ret, info] : answers) {
            SCOPED_TRACE(std::string(t.function) + " " + answer);
            kxtest::SetManagerStaticString(t.field, "stale");
            Answer(t.service, t.operation, answer);
            EXPECT_EQ(CallInt(t.method, "()I"), ret);
            EXPECT_EQ(kxtest::ManagerStaticString(t.field), info);
            EXPECT_EQ(TakeLogs(), Lines{Line(I, std::string(t.function) + ", ret: " +
                                                    std::to_string(ret) + ", info: " + info)});
            EXPECT_EQ(Calls(), Texts{t.call});
        }
    }
}

TEST_F(TouchInput, CapacitanceTestsWithoutTheirServiceLeaveTheFieldAlone) {
    for (const CapacitanceTest& t : kCapacitanceTests) {
        kxtest::SetManagerStaticString(t.field, "earlier failure");
    }
    Kill(Service::kPower);
    for (const CapacitanceTest& t : kCapacitanceTests) {
        EXPECT_EQ(CallInt(t.method, "()I"), -1);
        EXPECT_EQ(kxtest::ManagerStaticString(t.field), "earlier failure");
    }
    EXPECT_EQ(TakeLogs(),
              (Lines{Line(E, "GetCapacitanceTestResult fail, g_kxTouchScreen is null"),
                     Line(E, "GetTouchkeyCapacitanceTestResult fail, g_kxOtherdevices is null")}));
}

TEST_F(TouchInput, CalibrationResultTurnsAnyNonZeroCodeIntoTheFixedText) {
    const struct {
        const char* answer;
        std::string result;
        Lines lines;
    } cases[] = {
        {R"(0,"cal done 12/12")", "cal done 12/12", {}},
        {R"(0,"")", "", {}},
        {R"(2,"cal done 12/12")",
         "Capacitance Calibrate Failed",
         {Line(E, "GetCapacitanceCalibrateResult fail, ret: 2")}},
        {"nocallback",
         "Capacitance Calibrate Failed",
         {Line(E, "GetCapacitanceCalibrateResult fail, ret: -1")}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer);
        Answer(Service::kTouchscreen, "getCapacitanceCalibrateResult", c.answer);
        EXPECT_EQ(CallString("getCapacitanceCalibrateResultNative", "(I)Ljava/lang/String;", -4),
                  c.result);
        EXPECT_EQ(TakeLogs(), c.lines);
        EXPECT_EQ(Calls(), Texts{"touchscreen.getCapacitanceCalibrateResult(-4)@13"});
    }
}

TEST_F(TouchInput, CrownSelfTestAnswersTheServiceTextOnlyWhenPassed) {
    const std::pair<const char*, const char*> cases[] = {{R"(true,"360 deg ok")", "360 deg ok"},
                                                         {R"(false,"stuck")", "error"},
                                                         {"nocallback", "error"}};
    for (const auto& [answer, result] : cases) {
        SCOPED_TRACE(answer);
        Answer(Service::kTouchscreen, "getRotateCrownTestResult", answer);
        EXPECT_EQ(CallString("getRotaryCrownSelfTestNative", "()Ljava/lang/String;"), result);
        EXPECT_EQ(TakeLogs(), std::string(result) == "error"
                                  ? Lines{Line(E, "GetRotateCrownTestResult fail")}
                                  : Lines{});
        EXPECT_EQ(Calls(), Texts{"touchscreen.getRotateCrownTestResult()@6"});
    }
}

TEST_F(TouchInput, FeatureConfigPassesFeatureAndTextUnchanged) {
    Answer(Service::kTouchscreen, "setTouchScreenFeatureConfig", "-22");
    EXPECT_EQ(CallInt("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 9,
                      kxtest::JStr("glove=on,\xc3\xa9")),
              -22);
    EXPECT_EQ(TakeLogs(),
              Lines{Line(D, "SetTouchScreenFeatureConfig, feature: 9, config: glove=on,\xc3\xa9")});
    EXPECT_EQ(Calls(),
              Texts{"touchscreen.setTouchScreenFeatureConfig(9, \"glove=on,\xc3\xa9\")@39"});

    EXPECT_EQ(CallInt("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 9, nullptr),
              -1);
    EXPECT_EQ(TakeLogs(), Lines{Line(E, "SetTouchScreenFeatureConfig fail, config is null")});
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(TouchInput, TouchKeySupportStateAsksWithZeroAndLogsAtInfoPriority) {
    Answer(Service::kOtherdevices, "getTouchKeySupportState", "-3");
    EXPECT_EQ(CallInt("getTouchKeySupportFlagNative", "()I"), -3);
    EXPECT_EQ(TakeLogs(), Lines{Line(I, "GetTouchKeySupportState, state: -3")});
    EXPECT_EQ(Calls(), Texts{"otherdevices.getTouchKeySupportState(0)@2"});
}

}  // namespace
}  // namespace touchtest
