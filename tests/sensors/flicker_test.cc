// Flicker measurement: raw samples from the sensor service, the detector on the first 256.
#include <cstdint>

#include "device_test.h"

namespace kxtest {
namespace {

using simdevice::Service;

class Flicker : public DeviceTest {
  protected:
    static jint Measure(int64_t code, const std::vector<int32_t>& samples) {
        Answer(Service::kSensors, "getFlickerRawData", simdevice::Answer::Values({code, samples}));
        return CallInt("getFlickerFrequencyNative", "(I)I", 1);
    }
};

// 100 Hz at 1000 samples a second: on for five samples, off for five, starting on.
// A steady level of 1000 follows from sample `steadyFrom` on.
std::vector<int32_t> Square(size_t n, size_t steadyFrom = SIZE_MAX) {
    std::vector<int32_t> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = i >= steadyFrom || (i / 5) % 2 == 0 ? 1000 : 0;
    return v;
}

LogLine Detected(int frequency) {
    return Line(D, "GetFlickerFrequency, frequenceDetected: " + std::to_string(frequency));
}

TEST_F(Flicker, DefaultLightIsA100HzSquareWaveFetchedAtPosition24) {
    EXPECT_EQ(CallInt("getFlickerFrequencyNative", "(I)I", 42), 99);
    EXPECT_EQ(TakeLogs(), std::vector<LogLine>{Detected(99)});
    std::vector<simdevice::Call> calls = Device().TakeCalls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].Text(), "sensors.getFlickerRawData(42)");
    EXPECT_EQ(calls[0].position, 24u);
}

TEST_F(Flicker, DetectsOnTheFirst256Samples) {
    const LogLine illegal = Line(E, "GetFlickerFrequency fail, original data is illegal");
    const struct {
        const char* name;
        std::vector<int32_t> samples;
        jint result;
        LogLine line;
    } cases[] = {
        {"square wave", Square(256), 99, Detected(99)},
        {"steady level", std::vector<int32_t>(256, 1000), 21, Detected(21)},
        {"zeros", std::vector<int32_t>(256, 0), 0, Detected(0)},
        // The steady tail alone would read 21.
        {"1000 samples", Square(1000, 256), 99, Detected(99)},
        {"255 samples", Square(255), -1, illegal},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Measure(0, c.samples), c.result);
        EXPECT_EQ(TakeLogs(), std::vector<LogLine>{c.line});
    }
}

TEST_F(Flicker, FailedFetchIsRejectedWhateverTheSamples) {
    const LogLine fail = Line(E, "GetFlickerFrequency fail, result fail");
    for (int64_t code : {1, -1}) {
        EXPECT_EQ(Measure(code, Square(300)), -1);
        EXPECT_EQ(TakeLogs(), std::vector<LogLine>{fail});
    }
    Answer(Service::kSensors, "getFlickerRawData", "nocallback");
    EXPECT_EQ(CallInt("getFlickerFrequencyNative", "(I)I", 1), -1);
    EXPECT_EQ(TakeLogs(), std::vector<LogLine>{fail});
}

}  // namespace
}  // namespace kxtest
