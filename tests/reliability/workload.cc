#include "workload.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <mutex>

namespace reliability {
namespace {

// The harness builds its JVM from KXTEST_CLASSPATH; these suites also need the driver's jar.
// Set before main, so that the binaries run the same under ctest and by hand; an explicit
// setting wins.
[[maybe_unused]] const bool kClassPathSet =
    setenv("KXTEST_CLASSPATH", KXTEST_RELIABILITY_CLASSPATH, 0) == 0;

}  // namespace

jclass WorkloadClass() {
    static jclass workload = nullptr;
    static std::once_flag once;
    std::call_once(once, [] {
        kxtest::Manager();  // loads the library first, after the device has started
        JNIEnv* env = kxtest::Env();
        jclass local = env->FindClass("com/tavrin/mmitest/reliability/Workload");
        if (local == nullptr) {
            env->ExceptionDescribe();
            std::abort();
        }
        workload = static_cast<jclass>(env->NewGlobalRef(local));
        env->DeleteLocalRef(local);
    });
    return workload;
}

std::string CallNative(int index) {
    JNIEnv* env = kxtest::Env();
    jclass workload = WorkloadClass();
    static jmethodID call = env->GetStaticMethodID(workload, "call", "(I)Ljava/lang/String;");
    auto answer = static_cast<jstring>(env->CallStaticObjectMethod(workload, call, index));
    if (env->ExceptionCheck()) {
        env->ExceptionDescribe();
        env->ExceptionClear();
        ADD_FAILURE() << "native " << index << " left a Java exception";
        return "<exception>";
    }
    const char* chars = env->GetStringUTFChars(answer, nullptr);
    std::string text(chars);
    env->ReleaseStringUTFChars(answer, chars);
    env->DeleteLocalRef(answer);
    return text;
}

std::vector<std::string> AnswersOfAll() {
    std::vector<std::string> answers;
    for (int i = 0; i < kMethods; ++i) answers.push_back(CallNative(i));
    return answers;
}

void Reconnect() {
    reinterpret_cast<void (*)()>(kxtest::LibrarySymbol("_Z20InitMmiNativeManagerv"))();
}

void HealthyDevice() {
    kxtest::Manager();
    kxtest::Device().Reset();
    kxtest::WaitIdle();
    Reconnect();
    kxtest::TakeLogs();
    kxtest::Device().TakeCalls();
}

void KillAll() {
    for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().Kill(s);
    kxtest::WaitIdle();
}

void ReviveAll() {
    for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().Revive(s);
    kxtest::WaitIdle();
}

StdoutCapture::StdoutCapture() : mFile(std::tmpfile()) {
    std::fflush(stdout);
    mSaved = dup(STDOUT_FILENO);
    dup2(fileno(mFile), STDOUT_FILENO);
}

StdoutCapture::~StdoutCapture() {
    std::fflush(stdout);
    dup2(mSaved, STDOUT_FILENO);
    close(mSaved);
    std::fclose(mFile);
}

std::string StdoutCapture::Take() {
    std::fflush(stdout);
    std::string text;
    char buffer[4096];
    ssize_t n;
    while ((n = pread(fileno(mFile), buffer, sizeof(buffer), mRead)) > 0) {
        text.append(buffer, static_cast<size_t>(n));
        mRead += n;
    }
    return text;
}

std::string Tagged(const std::string& text) { return "KxMMITest_jni: " + text; }

std::vector<std::string> LinesAt(const std::vector<kxtest::LogLine>& lines, int priority) {
    std::vector<std::string> texts;
    for (const kxtest::LogLine& l : lines) {
        if (l.priority == priority) texts.push_back(l.text);
    }
    return texts;
}

}  // namespace reliability
