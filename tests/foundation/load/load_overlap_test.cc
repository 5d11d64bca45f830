// Death and registration reports that arrive while the load's connect pass or the unload's release
// pass runs on a Java thread: the report's pass starts only once the running one has finished, the
// handles end as the later pass leaves them, and a pressure-support query made meanwhile answers at
// once but caches nothing.
#include <gtest/gtest.h>
#include <hidl/HostTransport.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "device_test.h"
#include "native_methods.h"
#include "service_registry.h"

namespace {

using kxtest::D;
using kxtest::Line;
using kxtest::LogLine;
using simdevice::Service;

// Holds one thread where it calls Hold until Open.
struct Gate {
    std::promise<void> held, opened;
    std::shared_future<void> heldSeen = held.get_future().share();
    std::shared_future<void> open = opened.get_future().share();
    void Hold() {
        held.set_value();
        open.wait();
    }
    void WaitHeld() { heldSeen.wait(); }
    void Open() { opened.set_value(); }
};

// Whether line is logged within the time, keeping every line taken meanwhile in seen.
bool Appears(std::vector<LogLine>* seen, const LogLine& line, std::chrono::milliseconds within) {
    const auto end = std::chrono::steady_clock::now() + within;
    for (;;) {
        for (LogLine& l : kxtest::TakeLogs()) seen->push_back(std::move(l));
        if (std::find(seen->begin(), seen->end(), line) != seen->end()) return true;
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

// Which of the seven handles are connected, row by row: "1111111" when all are.
std::string Rows() {
    using kxmmi::Handle;
    using S = kxmmi::Service;
    std::string rows;
    for (bool connected : {Handle<S::Factory>() != nullptr, Handle<S::Display>() != nullptr,
                           Handle<S::TouchScreen>() != nullptr, Handle<S::Sensors>() != nullptr,
                           Handle<S::Power>() != nullptr, Handle<S::Light>() != nullptr,
                           Handle<S::OtherDevices>() != nullptr}) {
        rows += connected ? '1' : '0';
    }
    return rows;
}

// What a native on another thread meets while a pass is held: an answer at once, nothing cached.
struct Query {
    bool supported = false;
    uint8_t cached = 1;
    void Run() {
        supported = IsTpPressureSupported(kxtest::Env(), nullptr) == JNI_TRUE;
        cached = kxmmi::g_tpPressureSupportCache.load();
    }
};

const LogLine kReleasePass = Line(D, "ExitMmiNativeManager");
const LogLine kConnectPass = Line(D, "InitMmiNativeManager");

// Must run first: it holds the load's own connect pass at the sensors lookup, where the factory
// service, already linked by this pass, dies.
TEST(LoadOverlap, DeathReportDuringTheLoadsConnectPassWaitsForItToFinish) {
    std::string error;
    ASSERT_TRUE(
        kxtest::Device().Program(Service::kTouchscreen, "isTpPressureSupported", "true", &error))
        << error;
    const std::thread::id loader = std::this_thread::get_id();
    std::atomic<bool> armed{true};
    Gate gate;
    ::android::hardware::details::setLookupHook(
        [&](const std::string& descriptor, const std::string&) {
            if (descriptor == kxmmi::ISensors::descriptor && std::this_thread::get_id() == loader &&
                armed.exchange(false)) {
                gate.Hold();
            }
        });
    Query query;
    std::vector<LogLine> seen;
    bool releasedInside = true;
    std::thread reporter([&] {
        gate.WaitHeld();
        query.Run();
        kxtest::Device().Kill(Service::kFactory);
        releasedInside = Appears(&seen, kReleasePass, std::chrono::milliseconds(300));
        gate.Open();
        kxtest::Vm()->DetachCurrentThread();
    });
    kxtest::Manager();  // JNI_OnLoad on this Java thread
    reporter.join();
    ::android::hardware::details::setLookupHook(nullptr);
    kxtest::WaitIdle();
    Appears(&seen, kReleasePass, std::chrono::milliseconds(0));

    EXPECT_TRUE(query.supported);
    EXPECT_EQ(query.cached, 0) << "a query that overlapped the connect pass was cached";
    EXPECT_FALSE(releasedInside) << "the release pass ran inside the connect pass";
    EXPECT_LT(kxtest::IndexOf(seen, Line(D, "g_kxOtherdevices linkToDeath")),
              kxtest::IndexOf(seen, kReleasePass));
    EXPECT_EQ(Rows(), "0000000");

    kxtest::Device().Revive(Service::kFactory);
    kxtest::WaitIdle();
    EXPECT_EQ(Rows(), "1111111");
}

// A registration report while the unload's release pass is under way: its connect pass follows.
TEST(UnloadOverlap, RegistrationReportDuringTheUnloadsReleasePassWaitsForItToFinish) {
    ASSERT_EQ(Rows(), "1111111");
    kxtest::TakeLogs();
    std::atomic<bool> armed{true};
    Gate gate;
    kxtest::OnLogLine([&](const LogLine& line) {
        if (line == kReleasePass && armed.exchange(false)) gate.Hold();
    });
    std::thread unloader([] {
        auto onUnload =
            reinterpret_cast<void (*)(JavaVM*, void*)>(kxtest::LibrarySymbol("JNI_OnUnload"));
        kxtest::Env();  // the unload runs on a Java thread
        onUnload(kxtest::Vm(), nullptr);
        kxtest::Vm()->DetachCurrentThread();
    });
    gate.WaitHeld();
    Query query;
    query.Run();
    ::android::hardware::details::postToTransport(
        [] { g_hidlUtil->onRegistration(kxmmi::IKXPower::descriptor, "default", false).isOk(); });
    std::vector<LogLine> seen;
    const bool connectedInside = Appears(&seen, kConnectPass, std::chrono::milliseconds(300));
    gate.Open();
    unloader.join();
    kxtest::OnLogLine(nullptr);
    kxtest::WaitIdle();

    // Held at its first line, the release pass has not cleared the cache yet: what the query
    // cached must be gone once the passes are over.
    EXPECT_TRUE(query.supported);
    EXPECT_EQ(kxmmi::g_tpPressureSupportCache.load(), 0)
        << "a query that overlapped the release pass stayed cached";
    EXPECT_FALSE(connectedInside) << "the connect pass ran inside the release pass";
    EXPECT_EQ(Rows(), "1111111");
}

}  // namespace
