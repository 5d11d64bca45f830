// Connect and release passes on one thread, as service registrations and deaths run them, while
// natives on other threads read every one of the seven handles. Under TSan a handle stored or read
// without the handle lock is a data race, reported and fatal (halt_on_error); the run lasts long
// enough that it is reported on every run. In every build each answer must be the native's
// healthy one or its failure value, and both must have been seen.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>

#include "device_test.h"
#include "native_methods.h"

namespace {

// Under TSan every unlocked store or load of a handle was reported within 1,500 passes (35 runs of
// three such faults); the run takes twice that at least, however loaded the machine.
#if defined(__SANITIZE_THREAD__)
constexpr auto kRun = std::chrono::seconds(6);
constexpr long kMinPasses = 3000;
#else
constexpr auto kRun = std::chrono::seconds(1);
constexpr long kMinPasses = 0;
#endif
constexpr auto kLongest = std::chrono::seconds(120);
constexpr int kReaders = 3;

jstring g_text = nullptr;  // a global reference, for the power native's two strings

// One native per service; each answers an int (a boolean as 0 or 1), -1 or 0 when it has none.
struct Reader {
    const char* name;
    jint (*call)(JNIEnv* env);
    jint failure;
};
const Reader kReadersOfEachHandle[] = {
    {"GetManufactureMode", [](JNIEnv* env) { return GetManufactureMode(env, kxtest::Manager()); },
     -1},
    {"SetScreenFps", [](JNIEnv* env) -> jint { return SetScreenFps(env, kxtest::Manager(), 1); },
     0},
    {"GetTpPressureStatus", [](JNIEnv* env) { return GetTpPressureStatus(env, kxtest::Manager()); },
     -1},
    {"GetCompassRawValueLimit",
     [](JNIEnv* env) { return GetCompassRawValueLimit(env, kxtest::Manager()); }, -1},
    {"SetPowerState",
     [](JNIEnv* env) { return SetPowerState(env, kxtest::Manager(), g_text, g_text); }, -1},
    {"SetLightBrightness",
     [](JNIEnv* env) { return SetLightBrightness(env, kxtest::Manager(), 1, 2); }, -1},
    {"GetTouchKeySupportState",
     [](JNIEnv* env) { return GetTouchKeySupportState(env, kxtest::Manager()); }, -1},
};

TEST(HandleRace, NativesOnOtherThreadsReadEveryHandleWhilePassesConnectAndRelease) {
    kxtest::FreshDevice();
    kxtest::Connect();
    g_text = static_cast<jstring>(kxtest::Env()->NewGlobalRef(kxtest::JStr("s")));
    std::vector<jint> healthy;
    for (const Reader& r : kReadersOfEachHandle) {
        healthy.push_back(r.call(kxtest::Env()));
        ASSERT_NE(healthy.back(), r.failure) << r.name << ": the race would not show";
    }
    std::atomic<bool> stop{false};
    std::atomic<long> served{0}, unserved{0}, wrong{0};
    std::vector<std::thread> readers;
    for (int t = 0; t < kReaders; ++t) {
        readers.emplace_back([&, t] {
            JNIEnv* env = kxtest::Env();  // attaches this thread
            for (size_t i = t; !stop; ++i) {
                const size_t n = i % std::size(kReadersOfEachHandle);
                const jint answer = kReadersOfEachHandle[n].call(env);
                if (answer == healthy[n]) {
                    ++served;
                } else if (answer == kReadersOfEachHandle[n].failure) {
                    ++unserved;
                } else if (wrong++ < 5) {
                    std::fprintf(stderr, "race: %s answered %d\n", kReadersOfEachHandle[n].name,
                                 answer);
                }
            }
            kxtest::NoLoanFaults(std::string("reader ") + std::to_string(t));
            kxtest::Vm()->DetachCurrentThread();
        });
    }
    long passes = 0;
    const auto start = std::chrono::steady_clock::now();
    for (auto now = start; now < start + kLongest && (now < start + kRun || passes < kMinPasses);
         now = std::chrono::steady_clock::now()) {
        kxtest::Release();
        kxtest::Connect();
        passes += 2;
        kxtest::Forget();
    }
    stop = true;
    for (std::thread& t : readers) t.join();
    kxtest::Env()->DeleteGlobalRef(g_text);
    kxtest::Forget();
    std::printf(
        "race: %ld connect and release passes against %d reader threads; %ld calls served, "
        "%ld answered with no service\n",
        passes, kReaders, served.load(), unserved.load());
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_GT(served.load(), 0);
    EXPECT_GT(unserved.load(), 0) << "no call met an empty handle: the passes never overlapped";
}

}  // namespace
