// What only a fresh load shows: a service that registers while the library connects ends up
// connected, and a successful load answers exactly JNI version 1.4.
#include <gtest/gtest.h>

#include <atomic>

#include "jvm_harness.h"

namespace {

using kxtest::LogLine;
using simdevice::Service;

// The holder must watch for registrations before the first connect pass: the factory service
// registers just after its row was looked up (and not found), so only a registration report can
// connect it. Must run first: it observes the load.
TEST(LoadOrder, ServiceRegisteringWhileTheLibraryConnectsEndsUpConnected) {
    ASSERT_TRUE(kxtest::Device().SetAbsent(Service::kFactory, true));
    std::atomic<bool> revived{false};
    kxtest::OnLogLine([&](const LogLine& line) {
        if (line.text == "KxMMITest_jni: g_kxDisplay linkToDeath" && !revived.exchange(true)) {
            kxtest::Device().Revive(Service::kFactory);
        }
    });
    kxtest::Manager();  // loads the library
    kxtest::OnLogLine(nullptr);
    kxtest::WaitIdle();
    ASSERT_TRUE(revived);
    EXPECT_NE(kxtest::CallString("getBsnNative", "()Ljava/lang/String;").value_or(""), "");
}

TEST(LoadOrder, SuccessfulLoadAnswersJniVersion14) {
    auto onLoad = reinterpret_cast<jint (*)(JavaVM*, void*)>(kxtest::LibrarySymbol("JNI_OnLoad"));
    ASSERT_NE(onLoad, nullptr);
    EXPECT_EQ(onLoad(kxtest::Vm(), nullptr), 0x10004);
}

}  // namespace
