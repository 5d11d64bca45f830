// A load that cannot bind the natives answers -1 but keeps the services connected and watched.
// Run twice: with no MmiNativeManager on the class path, and with one that lacks a native.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "device_test.h"

namespace {

using kxtest::D;
using kxtest::E;
using kxtest::LogLine;
using kxtest::W;

TEST(LoadFailure, RefusesTheLoadButKeepsServicesConnectedAndWatched) {
    const char* expect = std::getenv("KXTEST_LOAD_FAILURE");
    ASSERT_NE(expect, nullptr);
    const std::string reason =
        std::string(expect) == "class"
            ? "RegisterNativeMethods fail, class not found"
            : "RegisterNativeMethods fail, cont not register all the methods";

    kxtest::Device().Start();
    JNIEnv* env = kxtest::Env();
    jclass probe = env->FindClass("com/tavrin/mmitest/probe/LoadProbe");
    ASSERT_NE(probe, nullptr);
    jmethodID load = env->GetStaticMethodID(probe, "load", "()Ljava/lang/String;");
    jobject error = env->CallStaticObjectMethod(probe, load);
    ASSERT_FALSE(env->ExceptionCheck());
    EXPECT_NE(error, nullptr) << "the JVM accepted a load that answered -1";
    kxtest::WaitIdle();

    std::vector<LogLine> lines;
    for (const LogLine& l : kxtest::TakeLogs()) {
        if (l.priority != W) lines.push_back(l);  // pre-existing reports arrive in any order
    }
    std::vector<LogLine> expected = kxtest::ConnectLines();
    expected.insert(expected.begin(), kxtest::Line(D, "registerForNotifications"));
    expected.push_back(kxtest::Line(E, reason));
    expected.push_back(kxtest::Line(E, "JNI_OnLoad fail, registerNatives failed"));
    EXPECT_EQ(lines, expected);

    kxtest::Device().Kill(simdevice::Service::kPower);
    kxtest::WaitIdle();
    EXPECT_EQ(kxtest::TakeLogs(),
              (std::vector<LogLine>{{W, "KxMMITest_jni: ProcessServiceDied, cookie is:5"},
                                    {D, "KxMMITest_jni: ExitMmiNativeManager"}}));

    // The JVM raises the pending lookup error whatever the load answers, so ask it directly, with
    // power back (a load waits for a declared service that is down).
    kxtest::Device().Revive(simdevice::Service::kPower);
    kxtest::WaitIdle();  // its reconnect pass reads the holder that a load replaces
    void* library = dlopen(KXTEST_LIB_DIR "/libKxMMI_jni.so", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    auto onLoad = reinterpret_cast<jint (*)(JavaVM*, void*)>(dlsym(library, "JNI_OnLoad"));
    EXPECT_EQ(onLoad(kxtest::Vm(), nullptr), -1);
    env->ExceptionClear();
    kxtest::WaitIdle();
}

}  // namespace
