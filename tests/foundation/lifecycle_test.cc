// Library load, unload and the service registry's reaction to deaths and registrations.
#include <gtest/gtest.h>
#include <hidl/HostTransport.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <set>
#include <tuple>

#include "device_test.h"
#include "service_registry.h"

namespace {

using android::sp;
using android::hidl::base::V1_0::IBase;
using kxtest::D;
using kxtest::E;
using kxtest::LogLine;
using kxtest::W;
using simdevice::Service;

const std::vector<LogLine> kConnectLines = kxtest::ConnectLines();

// The lines of a death report: the service's cookie, then the release of every handle.
std::vector<LogLine> Died(uint64_t cookie) {
    return {{W, "KxMMITest_jni: ProcessServiceDied, cookie is:" + std::to_string(cookie)},
            {D, "KxMMITest_jni: ExitMmiNativeManager"}};
}

std::vector<LogLine> WithPriority(const std::vector<LogLine>& lines, int priority, bool keep) {
    std::vector<LogLine> out;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(out),
                 [&](const LogLine& l) { return (l.priority == priority) == keep; });
    return out;
}

std::string PowerState() {
    return kxtest::CallString("getPowerStateNative", "(Ljava/lang/String;)Ljava/lang/String;",
                              kxtest::JStr("battery"))
        .value_or("<null>");
}

template <typename Fn>
Fn Symbol(const char* name) {
    void* symbol = kxtest::LibrarySymbol(name);
    EXPECT_NE(symbol, nullptr) << name;
    return reinterpret_cast<Fn>(symbol);
}

// Must run first in this binary: it observes the load itself.
TEST(Load, WatchesEveryInterfaceThenConnectsEveryServiceInRowOrder) {
    kxtest::Manager();
    std::vector<LogLine> lines = kxtest::TakeLogs();

    std::vector<LogLine> expected = {{D, "KxMMITest_jni: registerForNotifications"}};
    expected.insert(expected.end(), kConnectLines.begin(), kConnectLines.end());
    EXPECT_EQ(WithPriority(lines, W, false), expected);

    // Services registered before the holder are reported as pre-existing and only logged.
    std::vector<LogLine> reports = WithPriority(lines, W, true);
    std::set<std::string> texts, expectedTexts;
    for (const LogLine& l : reports) texts.insert(l.text);
    for (const char* fq :
         {"kxfactoryinterface@1.0::IKxFactoryInterface, name:kxfactoryinterface_hal",
          "kxdisplay@1.0::IDisplay, name:default", "tp@1.0::ITouchscreen, name:default",
          "sensors@1.0::ISensors, name:default", "power@1.0::IKXPower, name:default",
          "light@2.0::ILight, name:default", "otherdevices@1.0::IOtherdevices, name:default"}) {
        expectedTexts.insert(
            std::string("KxMMITest_jni: ReinitHal, fqName:vendor.tavrin.hardware.") + fq +
            ", isPreexisting:1");
    }
    EXPECT_EQ(texts, expectedTexts);
    EXPECT_EQ(reports.size(), 7u);
}

class Registry : public kxtest::DeviceTest {
  protected:
    void TearDown() override {
        kxtest::Device().Reset();
        kxtest::Connect();
        kxtest::WaitIdle();
    }
};

TEST_F(Registry, DeathOfOneServiceReleasesAllSevenAndItsReturnReconnectsThem) {
    ASSERT_TRUE(kxtest::Device().Kill(Service::kTouchscreen));
    kxtest::WaitIdle();
    EXPECT_EQ(kxtest::TakeLogs(), Died(3));
    EXPECT_EQ(PowerState(), "");  // the power service never went away
    EXPECT_EQ(kxtest::TakeLogs(),
              (std::vector<LogLine>{{E, "KxMMITest_jni: GetPowerState fail, g_kxPower is null"}}));

    ASSERT_TRUE(kxtest::Device().Revive(Service::kTouchscreen));
    kxtest::WaitIdle();
    std::vector<LogLine> expected = {
        {W,
         "KxMMITest_jni: ReinitHal, fqName:vendor.tavrin.hardware.tp@1.0::ITouchscreen, "
         "name:default, isPreexisting:0"}};
    expected.insert(expected.end(), kConnectLines.begin(), kConnectLines.end());
    EXPECT_EQ(kxtest::TakeLogs(), expected);
    EXPECT_NE(PowerState(), "");
}

// A second release, with every handle already empty, writes only its own line.
TEST_F(Registry, UnloadReleasesTheHandlesAndKeepsWatching) {
    const std::vector<LogLine> released = {{D, "KxMMITest_jni: ExitMmiNativeManager"}};
    Symbol<void (*)(JavaVM*, void*)>("JNI_OnUnload")(kxtest::Vm(), nullptr);
    EXPECT_EQ(kxtest::TakeLogs(), released);
    kxtest::Release();
    EXPECT_EQ(kxtest::TakeLogs(), released);
    EXPECT_EQ(PowerState(), "");
    kxtest::TakeLogs();

    // The holder still listens: a new registration connects again.
    kxtest::Device().Kill(Service::kLight);
    kxtest::Device().Revive(Service::kLight);
    kxtest::WaitIdle();
    EXPECT_NE(PowerState(), "");
}

// A registration report's reconnect pass meets a declared service that is still dead: it waits for
// it on the transport thread, and meanwhile natives on Java threads answer at once from the handles
// the pass has already connected or left empty. The service's return ends the wait.
TEST_F(Registry, ReconnectPassWaitsForADeadDeclaredServiceWhileNativesAnswer) {
    ASSERT_TRUE(kxtest::Device().Kill(Service::kPower));
    kxtest::WaitIdle();
    std::mutex lock;
    std::condition_variable reached;
    bool waiting = false;
    android::hardware::details::setLookupHook(
        [&](const std::string& descriptor, const std::string&) {
            if (descriptor != kxmmi::IKXPower::descriptor) return;
            std::lock_guard<std::mutex> guard(lock);
            waiting = true;
            reached.notify_all();
        });
    kxtest::Device().Kill(Service::kLight);
    kxtest::Device().Revive(Service::kLight);  // its report starts the reconnect pass
    {
        std::unique_lock<std::mutex> guard(lock);
        ASSERT_TRUE(reached.wait_for(guard, std::chrono::seconds(10), [&] { return waiting; }));
    }
    android::hardware::details::setLookupHook(nullptr);
    EXPECT_NE(kxtest::CallString("getBsnNative", "()Ljava/lang/String;").value_or(""), "");
    EXPECT_EQ(PowerState(), "");
    ASSERT_TRUE(kxtest::Device().Revive(Service::kPower));
    kxtest::WaitIdle();
    EXPECT_NE(PowerState(), "");
    std::vector<LogLine> lines = kxtest::TakeLogs();
    // The light's pass goes on to connect power itself, before power's own report reconnects.
    EXPECT_LT(kxtest::IndexOf(lines, kConnectLines[5]),
              kxtest::IndexOf(lines, kxtest::Line(W,
                                                  "ReinitHal, fqName:vendor.tavrin.hardware."
                                                  "power@1.0::IKXPower, name:default, "
                                                  "isPreexisting:0")));
}

template <kxmmi::Service S>
sp<IBase> ProxyOf() {
    return kxmmi::Handle<S>();
}
// The library's current proxy of each service, to hold past a release.
const std::map<Service, sp<IBase> (*)()> kProxies = {
    {Service::kFactory, ProxyOf<kxmmi::Service::Factory>},
    {Service::kDisplay, ProxyOf<kxmmi::Service::Display>},
    {Service::kTouchscreen, ProxyOf<kxmmi::Service::TouchScreen>},
    {Service::kSensors, ProxyOf<kxmmi::Service::Sensors>},
    {Service::kPower, ProxyOf<kxmmi::Service::Power>},
    {Service::kLight, ProxyOf<kxmmi::Service::Light>},
    {Service::kOtherdevices, ProxyOf<kxmmi::Service::OtherDevices>},
};

// Each row links its service with its own cookie, and that cookie comes back with the service's
// death. A release pass unlinks every handle: a service that dies after it goes unreported, even
// while its proxy lives on. A service that has just registered again is linked by exactly one
// connect pass, so one link is all there is to see.
TEST_F(Registry, EachRowLinksWithItsCookieAndReleaseUnlinksEveryHandle) {
    auto reconnect = [](Service s) {
        kxtest::Device().Kill(s);
        kxtest::WaitIdle();
        kxtest::Device().Revive(s);
        kxtest::WaitIdle();
        kxtest::TakeLogs();
    };
    uint64_t cookie = 0;
    for (Service s : simdevice::kAllServices) {
        SCOPED_TRACE(simdevice::ServiceName(s));
        reconnect(s);
        ASSERT_TRUE(kxtest::Device().Kill(s));
        kxtest::WaitIdle();
        EXPECT_EQ(kxtest::TakeLogs(), Died(++cookie));

        reconnect(s);
        sp<IBase> held = kProxies.at(s)();
        ASSERT_NE(held, nullptr);
        kxtest::Release();
        kxtest::TakeLogs();
        ASSERT_TRUE(kxtest::Device().Kill(s));
        kxtest::WaitIdle();
        EXPECT_EQ(kxtest::TakeLogs(), std::vector<LogLine>{}) << "a death after the release";
        kxtest::Device().Revive(s);  // a declared service left dead would hold up the next pass
        kxtest::WaitIdle();
    }
}

// While a release pass unlinks a handle, the handle still holds the service; it is emptied after,
// and the handle's lock is not held during the unlink.
TEST(ReleaseRow, UnlinksWhileTheHandleStillHoldsTheServiceThenEmptiesIt) {
    struct Watched : IBase {
        sp<IBase>* handle = nullptr;
        std::mutex* lock = nullptr;
        std::vector<std::tuple<bool, bool, const void*>> unlinks;  // handle set, lock free, whom
        android::hardware::Return<bool> unlinkToDeath(
            const sp<android::hardware::hidl_death_recipient>& recipient) override {
            const bool free = lock->try_lock();
            if (free) lock->unlock();
            unlinks.emplace_back(handle->get() == this, free, recipient.get());
            return true;
        }
    };
    std::mutex lock;
    sp<Watched> service = new Watched();
    sp<IBase> handle = service;
    service->handle = &handle;
    service->lock = &lock;
    sp<HidlUtil> holder = new HidlUtil(nullptr, nullptr);
    kxmmi::UnlinkAndEmpty(handle, lock, holder);
    EXPECT_EQ(handle, nullptr);
    kxmmi::UnlinkAndEmpty(handle, lock, holder);  // an empty handle is skipped
    EXPECT_EQ(service->unlinks, (std::vector<std::tuple<bool, bool, const void*>>{
                                    {true, true, static_cast<const void*>(holder.get())}}));
}

TEST_F(Registry, LoadWithoutVmFailsAtOnce) {
    EXPECT_EQ(Symbol<jint (*)(JavaVM*, void*)>("JNI_OnLoad")(nullptr, nullptr), -1);
    EXPECT_EQ(kxtest::TakeLogs(),
              (std::vector<LogLine>{{D, "KxMMITest_jni: JNI_OnLoad fail, vm is null"}}));
    EXPECT_NE(PowerState(), "");  // nothing was released or replaced
}

}  // namespace
