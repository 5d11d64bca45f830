// Fixture of the suites that call natives against the simulated device: a healthy device with its
// default answers and nothing left over from the previous test, in the log or in the call record.
#ifndef KXMMI_TESTS_SUPPORT_DEVICE_TEST_H
#define KXMMI_TESTS_SUPPORT_DEVICE_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "jvm_harness.h"

namespace kxtest {

constexpr int D = 3;
constexpr int I = 4;
constexpr int W = 5;
constexpr int E = 6;

// A line as the library writes it: the tag, then the text.
inline LogLine Line(int priority, const std::string& text) {
    return LogLine{priority, "KxMMITest_jni: " + text};
}

// Every service registered with its default answers; log and call record empty.
inline void FreshDevice() {
    Manager();
    Device().Reset();
    WaitIdle();
    TakeLogs();
    Device().TakeCalls();
}

class DeviceTest : public testing::Test {
  protected:
    void SetUp() override { FreshDevice(); }
    template <typename A>
    static void Answer(simdevice::Service service, const char* operation, const A& answer) {
        std::string error;
        ASSERT_TRUE(Device().Program(service, operation, answer, &error)) << error;
    }
    // The calls that reached the services since the last take, as "service.operation(args)",
    // with "@position" appended when asked for.
    static std::vector<std::string> Calls(bool withPositions = false) {
        std::vector<std::string> texts;
        for (const simdevice::Call& c : Device().TakeCalls()) {
            texts.push_back(withPositions ? c.Text() + "@" + std::to_string(c.position) : c.Text());
        }
        return texts;
    }
};

// The registry routines, called directly as the event holder would.
inline void Connect() {
    reinterpret_cast<void (*)()>(LibrarySymbol("_Z20InitMmiNativeManagerv"))();
}
inline void Release() {
    reinterpret_cast<void (*)()>(LibrarySymbol("_Z20ExitMmiNativeManagerv"))();
}

}  // namespace kxtest

#endif
