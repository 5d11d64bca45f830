// Fixture of the sensor, display and light suites: a healthy device with its default answers and
// nothing left over from the previous test, in the log or in the call record.
#ifndef KXMMI_TESTS_SENSORS_DEVICE_TEST_H
#define KXMMI_TESTS_SENSORS_DEVICE_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "jvm_harness.h"

namespace kxtest {

constexpr int D = 3;
constexpr int I = 4;
constexpr int E = 6;

// A line as the library writes it: the tag, then the text.
inline LogLine Line(int priority, const std::string& text) {
    return LogLine{priority, "KxMMITest_jni: " + text};
}

class DeviceTest : public testing::Test {
  protected:
    void SetUp() override {
        Manager();
        Device().Reset();
        WaitIdle();
        TakeLogs();
        Device().TakeCalls();
    }
    template <typename A>
    static void Answer(simdevice::Service service, const char* operation, const A& answer) {
        std::string error;
        ASSERT_TRUE(Device().Program(service, operation, answer, &error)) << error;
    }
    static std::vector<std::string> Calls() {
        std::vector<std::string> texts;
        for (const simdevice::Call& c : Device().TakeCalls()) texts.push_back(c.Text());
        return texts;
    }
};

}  // namespace kxtest

#endif
