// Shared pieces of the reliability suites: the Java driver Workload (every native of
// MmiNativeManager, by index), a device put back to a known state, and every native's answers.
#ifndef KXMMI_TESTS_RELIABILITY_WORKLOAD_H
#define KXMMI_TESTS_RELIABILITY_WORKLOAD_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "device_test.h"

namespace reliability {

constexpr int kMethods = 52;
// Workload's argument sets: ordinary, hostile texts, or kNullAt + k: the k-th reference null.
enum ArgumentSet { kPlain, kHostile, kNullAt };

// The harness builds its JVM from KXTEST_CLASSPATH; these suites also need the driver's jar.
inline const bool kClassPathSet = setenv("KXTEST_CLASSPATH", KXTEST_RELIABILITY_CLASSPATH, 0) == 0;

// Calls a static method of Workload; fails the test on a Java exception.
template <typename... A>
jobject CallWorkload(const char* name, const char* signature, A... args) {
    kxtest::Manager();  // the library loads first, after the device has started
    JNIEnv* env = kxtest::Env();
    jclass workload = env->FindClass("com/tavrin/mmitest/reliability/Workload");
    jobject result = env->CallStaticObjectMethod(
        workload, env->GetStaticMethodID(workload, name, signature), args...);
    env->DeleteLocalRef(workload);
    kxtest::NoException(name);
    return result;
}

// Native index's answer to an argument set, as text.
inline std::string CallNative(int index, int set = kPlain) {
    return kxtest::TakeText(CallWorkload("call", "(II)Ljava/lang/String;", index, set))
        .value_or("");
}

inline std::string Tagged(const std::string& text) { return "KxMMITest_jni: " + text; }

// Native index's Java name and parameter types, as "name(String, int[])".
inline std::string Describe(int index) {
    return kxtest::TakeText(CallWorkload("describe", "(I)Ljava/lang/String;", index)).value_or("");
}

// How often part occurs in text.
inline size_t Count(const std::string& text, const std::string& part) {
    size_t n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

// The Java texts a native with these parameter types reads: its Strings, and the String fields of
// its record objects (eleven of a BigDataValue, two of a BigDataOperation).
inline size_t TextsRead(const std::string& params) {
    return Count(params, "String") + 11 * Count(params, "BigDataValue") +
           2 * Count(params, "BigDataOperation");
}

// The error lines logged since the last take.
inline std::vector<std::string> TakeErrors() {
    std::vector<std::string> texts;
    for (const kxtest::LogLine& l : kxtest::TakeLogs())
        if (l.priority == kxtest::E) texts.push_back(l.text);
    return texts;
}

using kxtest::Reconnect;

// Every service registered with its default answers and connected afresh, log and record empty.
inline void HealthyDevice() {
    kxtest::FreshDevice();
    Reconnect();
}

// Kills (or revives) every service and waits until the library has seen it.
inline void SetAllAlive(bool alive) {
    for (simdevice::Service s : simdevice::kAllServices)
        alive ? kxtest::Device().Revive(s) : kxtest::Device().Kill(s);
    kxtest::WaitIdle();
}

// Every native's answer on the device as programmed, with every service dead (and the name its
// error line then starts with), and with the services that have one registered 1.0-only.
struct Oracle {
    std::vector<std::string> success, failure, function, older;
    Oracle() {
        for (int i = 0; i < kMethods; ++i) success.push_back(CallNative(i));
        SetAllAlive(false);
        kxtest::TakeLogs();
        for (int i = 0; i < kMethods; ++i) {
            failure.push_back(CallNative(i));
            std::vector<std::string> errors = TakeErrors();
            std::string line = errors.empty() ? "" : errors[0].substr(Tagged("").size());
            function.push_back(line.substr(0, line.find_first_of(" ,")));
        }
        // The services that have a newer minor version registered again 1.0-only, then in full.
        for (bool only : {true, false}) {
            for (simdevice::Service s : simdevice::kAllServices)
                kxtest::Device().SetOnlyV10(s, only);
            SetAllAlive(false);
            SetAllAlive(true);
            for (int i = 0; only && i < kMethods; ++i) older.push_back(CallNative(i));
        }
        kxtest::Forget();
    }
};

// Programs every operation of every service but those kept: value i of the n-th operation op is
// value(op, i, n).
using AnswerValue =
    std::function<simdevice::Answer::Value(const simdevice::OperationInfo&, size_t, int)>;
inline void ProgramEvery(const std::set<std::string>& keep, const AnswerValue& value) {
    int n = 0;
    for (simdevice::Service service : simdevice::kAllServices) {
        for (const simdevice::OperationInfo& op : simdevice::SimDevice::Operations(service)) {
            if (keep.count(op.name) != 0) continue;
            std::vector<simdevice::Answer::Value> values;
            for (size_t i = 0; i < op.answers.size(); ++i) values.push_back(value(op, i, n));
            ++n;
            auto answer = simdevice::Answer::Values(values);
            ASSERT_TRUE(kxtest::Device().Program(service, op.name, answer, nullptr)) << op.name;
        }
    }
}

// What was written to standard output (where -Xcheck:jni reports misuse) while body ran.
inline std::string StdoutOf(const std::function<void()>& body) {
    std::fflush(stdout);
    std::FILE* file = std::tmpfile();
    const int saved = dup(STDOUT_FILENO);
    dup2(fileno(file), STDOUT_FILENO);
    body();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    std::string text(static_cast<size_t>(lseek(fileno(file), 0, SEEK_END)), '\0');
    std::rewind(file);
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    return text;
}

}  // namespace reliability

#endif
