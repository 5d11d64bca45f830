// Eight Java threads call random natives while another thread kills and revives random services
// every few milliseconds. Every answer must be the one the device was programmed to give or the
// method's failure value; no call may throw, hang or go unanswered.
//
// KXMMI_STRESS_SECONDS sets the length of the run (a few seconds by default).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <utility>

#include "workload.h"

namespace reliability {
namespace {

using simdevice::Answer;
using simdevice::OperationInfo;
using simdevice::Service;
using simdevice::Type;

constexpr int kThreads = 8;
constexpr int kDefaultSeconds = 6;

// Indices of Workload.run()'s counters.
enum Counter { kCalls, kSuccess, kFailure, kOlder, kWrong, kThrown, kStuckThreads, kLeastCalled };

int Seconds() {
    const char* text = std::getenv("KXMMI_STRESS_SECONDS");
    int seconds = text == nullptr ? 0 : std::atoi(text);
    return seconds > 0 ? seconds : kDefaultSeconds;
}

// Gives every operation an answer of its own, so that an answer handed to the wrong call shows.
// A callback's code stays 0 where the method turns any other code into its failure text, and the
// operations whose 0 is the method's success keep their defaults.
void ProgramDistinctAnswers() {
    static const std::set<std::string> kKeepDefault = {"getFlickerRawData", "getFactoryInfo",
                                                       "sensorActivate", "setDisplayFps"};
    static const std::set<std::string> kCodeIsResult = {
        "getCapacitanceTestResult", "getTouchkeyCapacitanceTestResult", "checkUsbSpeed",
        "executeHighTemperInterceptCmd"};
    int64_t next = 101;
    for (Service service : simdevice::kAllServices) {
        for (const OperationInfo& op : simdevice::SimDevice::Operations(service)) {
            if (kKeepDefault.count(op.name) != 0) continue;
            std::vector<Answer::Value> values;
            for (size_t i = 0; i < op.answers.size(); ++i) {
                switch (op.answers[i].type) {
                    case Type::kBool:
                        values.emplace_back(std::in_place_type<bool>, true);
                        break;
                    case Type::kString:
                        values.emplace_back(std::in_place_type<std::string>,
                                            std::string(op.name) + " #" + std::to_string(next));
                        break;
                    case Type::kInt32Vector: {
                        auto v = static_cast<int32_t>(next);
                        values.emplace_back(std::in_place_type<std::vector<int32_t>>,
                                            std::vector<int32_t>{v, v + 1, v + 2});
                        break;
                    }
                    default: {  // integers and the display's result code
                        bool code = op.callback && i == 0 && kCodeIsResult.count(op.name) == 0;
                        values.emplace_back(std::in_place_type<int64_t>, code ? 0 : next);
                    }
                }
            }
            ++next;
            std::string error;
            ASSERT_TRUE(kxtest::Device().Program(service, op.name, Answer::Values(values), &error))
                << op.name << ": " << error;
        }
    }
}

// Re-registers the services that have a newer minor version with their 1.0 chain only, or with
// their full chain again.
void OlderVersions(bool older) {
    for (Service s : simdevice::kAllServices) {
        if (!simdevice::HasMinorUpdate(s)) continue;
        kxtest::Device().Kill(s);
        kxtest::Device().SetOnlyV10(s, older);
        kxtest::Device().Revive(s);
    }
    kxtest::WaitIdle();
}

// What the service side saw, tallied from the platform log and the device's call record.
struct Tally {
    long deathReports = 0;
    long registrationReports = 0;
    long reconnects = 0;
    long cutMidCall = 0;  // calls whose transport failed under them
    long noService = 0;   // calls answered at an empty handle or an empty cast
    long served = 0;      // calls that reached a service

    void Add(const std::vector<kxtest::LogLine>& lines) {
        for (const kxtest::LogLine& l : lines) {
            const std::string& t = l.text;
            if (t.find("ProcessServiceDied") != std::string::npos) ++deathReports;
            if (t.find("ReinitHal") != std::string::npos &&
                t.find("isPreexisting:0") != std::string::npos) {
                ++registrationReports;
            }
            if (t == Tagged("InitMmiNativeManager")) ++reconnects;
            if (l.priority == kError && t.find("transport error") != std::string::npos) {
                ++cutMidCall;
            }
            if (l.priority == kError && t.find(" is null") != std::string::npos) ++noService;
        }
    }
};

// Kills one to three random services, waits 1-4 ms, revives them, waits 2-8 ms; over and over.
// Another thread counts what the library logged and the services served, and keeps the log and
// the call record from growing without bound.
class Churn {
  public:
    explicit Churn(uint32_t seed) : mRandom(seed) {}

    void Start() {
        mChurner = std::thread([this] { Kill(); });
        mDrainer = std::thread([this] {
            while (!mStop.load()) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
                Drain();
            }
        });
    }
    void Stop() {
        mStop.store(true);
        mChurner.join();
        mDrainer.join();
    }
    void Drain() {
        tally.Add(kxtest::TakeLogs());
        tally.served += static_cast<long>(kxtest::Device().TakeCalls().size());
    }

    long kills = 0;
    long revivals = 0;
    Tally tally;

  private:
    void Kill() {
        std::uniform_int_distribution<int> pick(0, 6);
        std::uniform_int_distribution<int> howMany(1, 3);
        std::uniform_int_distribution<int> dead(1, 4);
        std::uniform_int_distribution<int> alive(2, 8);
        while (!mStop.load()) {
            std::vector<Service> killed;
            for (int n = howMany(mRandom); n > 0; --n) {
                Service s = simdevice::kAllServices[pick(mRandom)];
                if (kxtest::Device().Kill(s)) killed.push_back(s);
            }
            kills += static_cast<long>(killed.size());
            std::this_thread::sleep_for(std::chrono::milliseconds(dead(mRandom)));
            for (Service s : killed) revivals += kxtest::Device().Revive(s) ? 1 : 0;
            std::this_thread::sleep_for(std::chrono::milliseconds(alive(mRandom)));
        }
    }

    std::mt19937 mRandom;
    std::atomic<bool> mStop{false};
    std::thread mChurner;
    std::thread mDrainer;
};

jobjectArray ToJava(JNIEnv* env, const std::vector<std::string>& texts) {
    jclass string = env->FindClass("java/lang/String");
    jobjectArray array = env->NewObjectArray(static_cast<jsize>(texts.size()), string, nullptr);
    for (size_t i = 0; i < texts.size(); ++i) {
        jstring s = env->NewStringUTF(texts[i].c_str());
        env->SetObjectArrayElement(array, static_cast<jsize>(i), s);
        env->DeleteLocalRef(s);
    }
    env->DeleteLocalRef(string);
    return array;
}

// One of Workload's static String reports.
std::string Report(JNIEnv* env, const char* name) {
    jmethodID report = env->GetStaticMethodID(WorkloadClass(), name, "()Ljava/lang/String;");
    auto text = static_cast<jstring>(env->CallStaticObjectMethod(WorkloadClass(), report));
    if (env->ExceptionCheck() || text == nullptr) {
        env->ExceptionClear();
        return std::string("<no ") + name + ">";
    }
    const char* chars = env->GetStringUTFChars(text, nullptr);
    std::string result(chars);
    env->ReleaseStringUTFChars(text, chars);
    env->DeleteLocalRef(text);
    return result;
}

TEST(Stress, EveryAnswerIsProgrammedOrFailureWhileServicesDieAndReturn) {
    HealthyDevice();
    ProgramDistinctAnswers();
    OlderVersions(true);
    std::vector<std::string> older = AnswersOfAll();
    OlderVersions(false);
    std::vector<std::string> success = AnswersOfAll();
    KillAll();
    std::vector<std::string> failure = AnswersOfAll();
    ReviveAll();
    // The oracle only means something where the two answers differ.
    for (int i = 0; i < kMethods; ++i) {
        ASSERT_NE(success[i], failure[i]) << "native " << i;
    }
    kxtest::TakeLogs();
    kxtest::Device().TakeCalls();

    const int seconds = Seconds();
    const auto seed = static_cast<uint32_t>(std::random_device{}());
    Churn churn(seed);
    auto jvmOutput = std::make_unique<StdoutCapture>();  // -Xcheck:jni reports misuse there
    churn.Start();

    JNIEnv* env = kxtest::Env();
    jmethodID run = env->GetStaticMethodID(
        WorkloadClass(), "run", "(IJ[Ljava/lang/String;[Ljava/lang/String;[Ljava/lang/String;J)[J");
    auto counts = static_cast<jlongArray>(env->CallStaticObjectMethod(
        WorkloadClass(), run, kThreads, static_cast<jlong>(seconds) * 1000, ToJava(env, success),
        ToJava(env, failure), ToJava(env, older), static_cast<jlong>(seed)));
    churn.Stop();
    const std::string warnings = jvmOutput->Take();
    jvmOutput.reset();
    ASSERT_FALSE(env->ExceptionCheck());
    jlong c[8];
    env->GetLongArrayRegion(counts, 0, 8, c);

    ReviveAll();
    churn.Drain();
    const Tally& t = churn.tally;
    auto n = [](jlong v) { return static_cast<long long>(v); };
    std::printf("stress: %d Java threads for %d s (seed %" PRIu32 ")\n", kThreads, seconds, seed);
    std::printf(
        "stress: %lld calls: %lld success, %lld failure, %lld older-version (natives %s), "
        "%lld wrong, %lld thrown; %lld stuck threads; fewest calls of one native %lld\n",
        n(c[kCalls]), n(c[kSuccess]), n(c[kFailure]), n(c[kOlder]),
        Report(env, "olderFrom").c_str(), n(c[kWrong]), n(c[kThrown]), n(c[kStuckThreads]),
        n(c[kLeastCalled]));
    std::printf(
        "stress: %ld kills, %ld revivals; %ld death reports, %ld registration reports, "
        "%ld reconnects; %ld calls served, %ld cut mid-call, %ld answered with no "
        "service\n",
        churn.kills, churn.revivals, t.deathReports, t.registrationReports, t.reconnects, t.served,
        t.cutMidCall, t.noService);

    EXPECT_EQ(warnings.find("WARNING"), std::string::npos) << warnings;
    EXPECT_EQ(c[kStuckThreads], 0) << "calls that never returned";
    EXPECT_EQ(c[kThrown], 0) << Report(env, "problems");
    EXPECT_EQ(c[kWrong], 0) << Report(env, "problems");
    // Every call made came back with an answer that was checked.
    EXPECT_EQ(c[kCalls], c[kSuccess] + c[kFailure] + c[kOlder] + c[kWrong] + c[kThrown]);
    EXPECT_GT(c[kLeastCalled], 0) << "a native was never called";
    // Both sides of the oracle were exercised, and services really died and came back.
    EXPECT_GT(c[kSuccess], 0);
    EXPECT_GT(c[kFailure], 0);
    EXPECT_GT(churn.kills, 0);
    EXPECT_GT(t.deathReports, 0);
    EXPECT_GT(t.reconnects, 0);

    // Once every service is back, every native answers as before the run.
    EXPECT_EQ(AnswersOfAll(), success);
}

}  // namespace
}  // namespace reliability
