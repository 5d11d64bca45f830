// Fixture of the touch suites: every service connected afresh with its default answers, so the
// pressure-support cache is clear and neither the log nor the call record holds anything.
#ifndef KXMMI_TESTS_TOUCH_TOUCH_TEST_H
#define KXMMI_TESTS_TOUCH_TOUCH_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "jvm_harness.h"

namespace touchtest {

using kxtest::CallInt;
using kxtest::LogLine;
using kxtest::TakeLogs;
using Lines = std::vector<LogLine>;
using Texts = std::vector<std::string>;
using simdevice::Service;

constexpr int D = 3;
constexpr int I = 4;
constexpr int E = 6;

inline LogLine Line(int priority, const std::string& text) {
    return LogLine{priority, "KxMMITest_jni: " + text};
}

// The registry routines, called directly as the event holder would.
inline void Connect() {
    reinterpret_cast<void (*)()>(kxtest::LibrarySymbol("_Z20InitMmiNativeManagerv"))();
}
inline void Release() {
    reinterpret_cast<void (*)()>(kxtest::LibrarySymbol("_Z20ExitMmiNativeManagerv"))();
}

class TouchTest : public testing::Test {
  protected:
    void SetUp() override {
        kxtest::Manager();
        kxtest::Device().Reset();
        kxtest::WaitIdle();
        Connect();
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
    }
    static void Answer(Service service, const char* operation, const std::string& answer) {
        std::string error;
        ASSERT_TRUE(kxtest::Device().Program(service, operation, answer, &error)) << error;
    }
    // "service.operation(args)@position" of every call since the last look.
    static std::vector<std::string> Calls() {
        std::vector<std::string> texts;
        for (const simdevice::Call& c : kxtest::Device().TakeCalls()) {
            texts.push_back(c.Text() + "@" + std::to_string(c.position));
        }
        return texts;
    }
    // Empties every handle the way a service death does.
    static void Kill(Service service) {
        ASSERT_TRUE(kxtest::Device().Kill(service));
        kxtest::WaitIdle();
        kxtest::TakeLogs();
    }
};

}  // namespace touchtest

#endif
