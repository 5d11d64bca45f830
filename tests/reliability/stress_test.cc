// Eight Java threads call random natives while another thread kills one to three random services
// for 1-4 ms every 2-8 ms. KXMMI_STRESS_SECONDS sets the length of the run (6 s by default, at
// most a day) and KXMMI_STRESS_SEED the random choices (a fresh seed by default); ./mmi stress
// sets both. A line on standard error every 5 s shows how far the run is.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>

#include "workload.h"

namespace reliability {
namespace {

using simdevice::Answer;
using simdevice::Service;

constexpr int kThreads = 8;
constexpr int kProgressSeconds = 5;
enum Counter { kCalls, kSuccess, kFailure, kOlder, kWrong, kThrown, kStuckThreads, kLeastCalled };

// Every operation answers values of its own, so that an answer handed to the wrong call shows. A
// callback's code stays 0 where the native turns any other code into its failure text, and the
// operations whose 0 is the native's success keep their defaults.
void ProgramDistinctAnswers() {
    static const std::set<std::string> kCodeIsResult = {
        "getCapacitanceTestResult", "getTouchkeyCapacitanceTestResult", "checkUsbSpeed",
        "executeHighTemperInterceptCmd"};
    ProgramEvery({"getFlickerRawData", "getFactoryInfo", "sensorActivate", "setDisplayFps"},
                 [&](const simdevice::OperationInfo& op, size_t i, int n) -> Answer::Value {
                     const int32_t v = 100 + n;
                     const simdevice::Type type = op.answers[i].type;
                     if (type == simdevice::Type::kBool) return true;
                     if (type == simdevice::Type::kString) return op.name + std::to_string(v);
                     if (type == simdevice::Type::kInt32Vector) return std::vector{v, v + 1, v + 2};
                     bool code = op.callback && i == 0 && !kCodeIsResult.count(op.name);
                     return Answer::Value(std::in_place_type<int64_t>, code ? 0 : v);
                 });
}

// What the library logged and the services served while services died and came back.
struct Tally {
    long deaths = 0, reconnects = 0, served = 0, cutMidCall = 0, noService = 0;
    void Drain() {
        for (const kxtest::LogLine& l : kxtest::TakeLogs()) {
            auto has = [&](const char* part) { return l.text.find(part) != std::string::npos; };
            deaths += has("ProcessServiceDied");
            reconnects += l.text == Tagged("InitMmiNativeManager");
            cutMidCall += l.priority == kxtest::E && has("transport error");
            noService += l.priority == kxtest::E && has(" is null");
        }
        served += static_cast<long>(kxtest::Device().TakeCalls().size());
    }
};

// A setting from the environment: `fallback` when unset or empty; a value outside [low, high]
// refuses the run before the JVM starts, with exit status 2.
unsigned long Setting(const char* name, unsigned long low, unsigned long high,
                      unsigned long fallback) {
    const char* text = std::getenv(name);
    if (text == nullptr || *text == '\0') return fallback;
    char* end = nullptr;
    errno = 0;
    const unsigned long long v = std::strtoull(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != '\0' || errno == ERANGE || v < low || v > high) {
        std::fprintf(stderr, "stress: %s takes a whole number from %lu to %lu\n", name, low, high);
        std::exit(2);
    }
    return static_cast<unsigned long>(v);
}

const int kSeconds = static_cast<int>(Setting("KXMMI_STRESS_SECONDS", 1, 86400, 6));
const auto kSeed =
    static_cast<uint32_t>(Setting("KXMMI_STRESS_SEED", 0, UINT32_MAX, std::random_device{}()));

jobjectArray ToJava(JNIEnv* env, const std::vector<std::string>& texts) {
    jobjectArray array = env->NewObjectArray(static_cast<jsize>(texts.size()),
                                             env->FindClass("java/lang/String"), nullptr);
    for (size_t i = 0; i < texts.size(); ++i) {
        jstring text = env->NewStringUTF(texts[i].c_str());
        env->SetObjectArrayElement(array, static_cast<jsize>(i), text);
        env->DeleteLocalRef(text);
    }
    return array;
}

TEST(Stress, EveryAnswerIsProgrammedOrFailureWhileServicesDieAndReturn) {
    HealthyDevice();
    ProgramDistinctAnswers();
    const Oracle oracle;
    for (int i = 0; i < kMethods; ++i) ASSERT_NE(oracle.success[i], oracle.failure[i]) << i;
    const int seconds = kSeconds;
    const uint32_t seed = kSeed;
    std::fprintf(stderr,
                 "stress: %d s with seed %" PRIu32 " (--seed %" PRIu32 " repeats its choices)\n",
                 seconds, seed, seed);

    std::atomic<bool> stop{false};
    std::atomic<long> kills{0};
    long revivals = 0;
    Tally tally;
    JNIEnv* env = kxtest::Env();
    jobject counts = nullptr;
    const std::string warnings = StdoutOf([&] {
        std::thread churner([&] {
            std::mt19937 random(seed);
            std::uniform_int_distribution<int> pick(0, 6), howMany(1, 3), dead(1, 4), alive(2, 8);
            while (!stop) {
                std::vector<Service> killed;
                for (int n = howMany(random); n > 0; --n) {
                    Service s = simdevice::kAllServices[pick(random)];
                    if (kxtest::Device().Kill(s)) killed.push_back(s);
                }
                kills += static_cast<long>(killed.size());
                std::this_thread::sleep_for(std::chrono::milliseconds(dead(random)));
                for (Service s : killed) revivals += kxtest::Device().Revive(s);
                std::this_thread::sleep_for(std::chrono::milliseconds(alive(random)));
            }
        });
        std::thread drainer([&] {
            const auto start = std::chrono::steady_clock::now();
            for (int shown = 0; !stop; std::this_thread::sleep_for(std::chrono::milliseconds(10))) {
                tally.Drain();
                const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(
                    std::chrono::steady_clock::now() - start);
                if (elapsed.count() < shown + kProgressSeconds || elapsed.count() >= seconds) {
                    continue;
                }
                shown = static_cast<int>(elapsed.count());
                std::fprintf(stderr,
                             "stress: %d of %d s: %ld service calls served, %ld answered with no "
                             "service, %ld kills so far\n",
                             shown, seconds, tally.served, tally.noService, kills.load());
            }
        });
        counts = CallWorkload(
            "run", "(IJ[Ljava/lang/String;[Ljava/lang/String;[Ljava/lang/String;J)[J", kThreads,
            static_cast<jlong>(seconds) * 1000, ToJava(env, oracle.success),
            ToJava(env, oracle.failure), ToJava(env, oracle.older), static_cast<jlong>(seed));
        stop = true;
        churner.join();
        drainer.join();
    });
    ASSERT_NE(counts, nullptr);
    jlong c[kLeastCalled + 1];
    env->GetLongArrayRegion(static_cast<jlongArray>(counts), 0, kLeastCalled + 1, c);
    SetAllAlive(true);
    tally.Drain();

    std::printf(
        "stress: %d Java threads for %d s (seed %" PRIu32
        ")\n"
        "stress: %ld calls: %ld success, %ld failure, %ld older-version, %ld wrong, %ld thrown; "
        "%ld stuck threads; fewest calls of one native %ld\n"
        "stress: %ld kills, %ld revivals; %ld death reports, %ld reconnects; %ld calls served, "
        "%ld cut mid-call, %ld answered with no service\n"
        "stress: %ld texts handed to Java checked, %zu not modified UTF-8\n",
        kThreads, seconds, seed, c[kCalls], c[kSuccess], c[kFailure], c[kOlder], c[kWrong],
        c[kThrown], c[kStuckThreads], c[kLeastCalled], kills.load(), revivals, tally.deaths,
        tally.reconnects, tally.served, tally.cutMidCall, tally.noService,
        kxtest::LibraryTextsChecked(), kxtest::InvalidLibraryTexts().size());
    EXPECT_EQ(warnings.find("WARNING"), std::string::npos) << warnings;
    EXPECT_EQ(c[kStuckThreads], 0) << "calls that never returned";
    EXPECT_EQ(c[kThrown] + c[kWrong], 0) << "the first of them are on standard error";
    // Both sides of the oracle were exercised, every native was called, and services really died
    // and came back.
    EXPECT_GT(std::min({c[kSuccess], c[kFailure], c[kLeastCalled]}), 0);
    EXPECT_GT(std::min(tally.deaths, tally.reconnects), 0);
    for (int i = 0; i < kMethods; ++i) EXPECT_EQ(CallNative(i), oracle.success[i]) << "after";
}

}  // namespace
}  // namespace reliability
