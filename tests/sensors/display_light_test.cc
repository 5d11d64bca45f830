// Display refresh rate through version 1.1 of the display service, and light brightness.
#include "device_test.h"

namespace kxtest {
namespace {

using simdevice::Service;

class DisplayLight : public DeviceTest {};

constexpr const char* kFailed = "FAILED:getDisplayFpsConfig";

TEST_F(DisplayLight, FpsConfigIsTheTextOnlyForResultZero) {
    const struct {
        const char* answer;
        std::string result;
        LogLine line;
    } cases[] = {
        {"0,\"60,90,120\"", "60,90,120", Line(I, "GetScreenFpsConfig, fpsConfig: 60,90,120")},
        {"3,\"60,90\"", kFailed,
         Line(E, "GetScreenFpsConfig fail, error info: FAILED:getDisplayFpsConfig, ret: 3")},
        {"-7,\"\"", kFailed,
         Line(E, "GetScreenFpsConfig fail, error info: FAILED:getDisplayFpsConfig, ret: -7")},
        {"nocallback", kFailed,
         Line(E, "GetScreenFpsConfig fail, error info: FAILED:getDisplayFpsConfig, ret: -2")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answer);
        Answer(Service::kDisplay, "getDisplayFpsConfig", c.answer);
        EXPECT_EQ(CallString("getScreenFpsConfigNative", "()Ljava/lang/String;"), c.result);
        EXPECT_EQ(TakeLogs(), std::vector<LogLine>{c.line});
        EXPECT_EQ(Calls(), std::vector<std::string>{"display.getDisplayFpsConfig()"});
    }
}

TEST_F(DisplayLight, SetFpsIsTrueOnlyForResultZero) {
    for (jint ret : {0, 1, -1}) {
        SCOPED_TRACE(ret);
        Answer(Service::kDisplay, "setDisplayFps", std::to_string(ret).c_str());
        EXPECT_EQ(CallBool("setScreenFpsNative", "(I)Z", 2), ret == 0);
        EXPECT_EQ(TakeLogs(), std::vector<LogLine>{Line(
                                  I, "SetScreenFps, freqIndex: 2, ret: " + std::to_string(ret))});
        EXPECT_EQ(Calls(), std::vector<std::string>{"display.setDisplayFps(2)"});
    }
}

TEST_F(DisplayLight, BrightnessResultPassesThrough) {
    Answer(Service::kLight, "setLightBrightness", "-5");
    EXPECT_EQ(CallInt("setLightBrightnessNative", "(II)I", 3, 255), -5);
    EXPECT_EQ(TakeLogs(), std::vector<LogLine>{
                              Line(D, "SetLightBrightness, Id: 3, brightness: 255, result: -5")});
    EXPECT_EQ(Calls(), std::vector<std::string>{"light.setLightBrightness(3, 255)"});
}

}  // namespace
}  // namespace kxtest
