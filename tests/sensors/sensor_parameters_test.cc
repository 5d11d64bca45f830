// Parameter commands through version 1.1 of the sensor service, as text or as 64 integers.
#include <numeric>

#include "device_test.h"

namespace kxtest {
namespace {

using simdevice::Service;

constexpr const char* kText = "(IIII)Ljava/lang/String;";
constexpr const char* kArray = "(IIII)[I";

class SensorParameters : public DeviceTest {};

std::vector<int32_t> Count(int from, int n) {
    std::vector<int32_t> v(n);
    std::iota(v.begin(), v.end(), from);
    return v;
}

TEST_F(SensorParameters, TextCommandPassesItsIntsInOrderAndKeepsTheTextOfAFailure) {
    Answer(Service::kSensors, "handleSensorParameter", "3,\"busy\",[1,2]");
    EXPECT_EQ(CallString("handleSensorParameterNative", kText, 1, 2, 3, 4), "busy");
    EXPECT_EQ(TakeLogs(), std::vector<LogLine>{Line(D,
                                                    "HandleSensorParameter, ret: 3, resultInfo: "
                                                    "busy, sensorId: 1, mainCmd: 2, subCmd: 3, "
                                                    "length: 4")});
    std::vector<simdevice::Call> calls = Device().TakeCalls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].Text(), "sensors.handleSensorParameter(1, 2, 3, 4)");
    EXPECT_EQ(calls[0].position, 29u);
}

TEST_F(SensorParameters, ArrayAlwaysHoldsSixtyFourValues) {
    std::vector<int32_t> three(64, 0);
    three[0] = 1, three[1] = 2, three[2] = 3;
    const struct {
        const char* name;
        simdevice::Answer answer;
        std::vector<int32_t> result;
        std::string head;
    } cases[] = {
        {"fewer", simdevice::Answer::Values({int64_t{0}, std::string("p"), Count(1, 3)}), three,
         "ret: 0, para: p"},
        {"exactly 64", simdevice::Answer::Values({int64_t{2}, std::string("q"), Count(-5, 64)}),
         Count(-5, 64), "ret: 2, para: q"},
        {"more", simdevice::Answer::Values({int64_t{0}, std::string(""), Count(100, 100)}),
         Count(100, 64), "ret: 0, para: "},
        {"nocallback", simdevice::Answer::NoCallback(), std::vector<int32_t>(64, 0),
         "ret: -1, para: "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Answer(Service::kSensors, "handleSensorParameter", c.answer);
        EXPECT_EQ(CallIntArray("handleAmbientLightParameterNative", kArray, 5, 6, 7, 1), c.result);
        EXPECT_EQ(TakeLogs(),
                  std::vector<LogLine>{Line(D, "HandleAmbientLightParameter, " + c.head +
                                                   ", sensorId: 5, mainCmd: 6, "
                                                   "subCmd: 7, length: 1")});
        EXPECT_EQ(Calls(), std::vector<std::string>{"sensors.handleSensorParameter(5, 6, 7, 1)"});
    }
}

}  // namespace
}  // namespace kxtest
