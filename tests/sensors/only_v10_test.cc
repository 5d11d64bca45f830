// Sensor and display services found at version 1.0 only when the library loads: the 1.1
// operations are never called, while the 1.0 ones work as before.
#include "device_test.h"

namespace kxtest {
namespace {

using simdevice::Service;

TEST(OnlyV10, NewerOperationsAnswerTheirNoViewValues) {
    ASSERT_TRUE(Device().SetOnlyV10(Service::kSensors, true));
    ASSERT_TRUE(Device().SetOnlyV10(Service::kDisplay, true));
    Manager();
    Forget();

    EXPECT_EQ(CallString("handleSensorParameterNative", "(IIII)Ljava/lang/String;", 1, 2, 3, 4),
              "");
    EXPECT_EQ(CallIntArray("handleAmbientLightParameterNative", "(IIII)[I", 1, 2, 3, 4),
              std::nullopt);
    EXPECT_EQ(CallString("getScreenFpsConfigNative", "()Ljava/lang/String;"), "0");
    EXPECT_TRUE(CallBool("setScreenFpsNative", "(I)Z", 2));
    EXPECT_EQ(TakeLogs(),
              (std::vector<LogLine>{
                  Line(E, "HandleSensorParameter fail, sensorNewVer is null"),
                  Line(E, "HandleAmbientLightParameter fail, sensorNewVer is null"),
                  Line(E, "GetScreenFpsConfig fail, kxDisplayNew is null, not support multi fps"),
                  Line(E, "SetScreenFps fail, kxDisplayNew is null, not support multi fps")}));
    EXPECT_TRUE(Device().TakeCalls().empty());

    EXPECT_EQ(CallInt("getFlickerFrequencyNative", "(I)I", 1), 99);
    EXPECT_TRUE(CallBool("sensorActivateNative", "(IZI)Z", 5, JNI_TRUE, 200));
    EXPECT_EQ(Device().TakeCalls().size(), 2u);
}

}  // namespace
}  // namespace kxtest
