// A load in front of a declared service that starts late waits for it, logging the platform's
// warning each second, and ends with every service connected.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "device_test.h"

namespace {

using kxtest::D;
using kxtest::Line;
using kxtest::LogLine;
using simdevice::Service;

TEST(LoadLate, LoadWaitsForALateDeclaredServiceAndEndsConnected) {
    // One warning, however long the load takes to reach power, up to half a second.
    constexpr int kDelayMs = 1500;
    ASSERT_TRUE(kxtest::Device().SetStartDelay(Service::kPower, kDelayMs));
    const auto start = std::chrono::steady_clock::now();
    kxtest::Manager();  // loads the library
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    EXPECT_GE(waited.count(), kDelayMs);
    std::vector<LogLine> lines = kxtest::TakeLogs();

    const LogLine wait(kxtest::W,
                       "Waited one second for vendor.tavrin.hardware.power@1.0::IKXPower/default",
                       "HidlServiceManagement");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), wait), 1);
    auto at = [&](const LogLine& l) { return kxtest::IndexOf(lines, l); };
    EXPECT_LT(at(Line(D, "g_kxSensors linkToDeath")), at(wait));
    EXPECT_LT(at(wait), at(Line(D, "g_kxPower linkToDeath")));
    EXPECT_LT(at(Line(D, "g_kxPower linkToDeath")), at(Line(D, "g_kxOtherdevices linkToDeath")))
        << "the load's own pass connects power";

    kxtest::WaitIdle();
    EXPECT_NE(kxtest::CallString("getPowerStateNative", "(Ljava/lang/String;)Ljava/lang/String;",
                                 kxtest::JStr("battery"))
                  .value_or(""),
              "");
}

}  // namespace
