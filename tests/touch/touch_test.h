// Fixture of the touch suites: every service connected afresh with its default answers, so the
// pressure-support cache is clear and neither the log nor the call record holds anything.
#ifndef KXMMI_TESTS_TOUCH_TOUCH_TEST_H
#define KXMMI_TESTS_TOUCH_TOUCH_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "device_test.h"
#include "jvm_harness.h"

namespace touchtest {

using kxtest::CallInt;
using kxtest::LogLine;
using kxtest::TakeLogs;
using Lines = std::vector<LogLine>;
using Texts = std::vector<std::string>;
using simdevice::Service;

using kxtest::Connect;
using kxtest::D;
using kxtest::E;
using kxtest::I;
using kxtest::Line;
using kxtest::Release;

class TouchTest : public kxtest::DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        Connect();  // a fresh connect clears the pressure-support cache
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
    }
    static std::vector<std::string> Calls() { return DeviceTest::Calls(true); }
    // Empties every handle the way a service death does.
    static void Kill(Service service) {
        ASSERT_TRUE(kxtest::Device().Kill(service));
        kxtest::WaitIdle();
        kxtest::TakeLogs();
    }
};

}  // namespace touchtest

#endif
