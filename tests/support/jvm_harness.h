// Test harness: one real JVM per test binary with the app's classes, the simulated device started
// before the library loads, platform-log capture, and calls of MmiNativeManager's natives through
// Java, exactly as the app makes them.
#ifndef KXMMI_TESTS_SUPPORT_JVM_HARNESS_H
#define KXMMI_TESTS_SUPPORT_JVM_HARNESS_H

#include <jni.h>
#include <simdevice/sim_device.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "text_agent.h"

namespace kxtest {

struct LogLine {
    LogLine(int p, std::string t, std::string g = "")
        : priority(p), text(std::move(t)), tag(std::move(g)) {}
    int priority;  // 3 debug, 4 info, 5 warning, 6 error
    std::string text;
    std::string tag;  // empty for the library's own lines
    bool operator==(const LogLine& o) const {
        return priority == o.priority && text == o.text && tag == o.tag;
    }
};
std::ostream& operator<<(std::ostream& os, const LogLine& line);

// Platform-log lines written since the last call (every priority), oldest first.
std::vector<LogLine> TakeLogs();

// The simulated device of this process. Configure it (absent, 1.0-only) before the first
// Manager() call to change what the library finds at load; Start() happens at that call.
simdevice::SimDevice& Device();

// The JVM of this process and the calling thread's environment (attached on first use).
JavaVM* Vm();
JNIEnv* Env();

// MmiNativeManager; the first use loads libKxMMI_jni through the class's static initializer,
// after the simulated device has been started.
jclass Manager();

// Fails the current test on a pending Java exception, and clears it.
void NoException(const char* what);

// Calls a static native of MmiNativeManager. Fails the current test on a pending Java exception,
// and on characters or elements the native did not give back as it should (see TakeLoans).
jint CallInt(const char* name, const char* signature, ...);
jlong CallLong(const char* name, const char* signature, ...);
bool CallBool(const char* name, const char* signature, ...);
std::optional<std::string> CallString(const char* name, const char* signature, ...);  // null: none
std::optional<std::vector<int32_t>> CallIntArray(const char* name, const char* signature, ...);

// A String's text; deletes the local reference. nullopt for null.
std::optional<std::string> TakeText(jobject string);

// Java values for arguments: local references of the calling thread.
jstring JStr(const char* utf8);  // nullptr gives a null reference
jintArray JInts(const std::vector<int32_t>& values);
jbyteArray JBytes(const std::vector<uint8_t>& values);
// A new com/tavrin/mmitest/model/<className> with its no-argument constructor; fields set with
// SetIntField / SetStringField.
jobject NewModel(const char* className);
void SetIntField(jobject object, const char* field, int32_t value);
void SetStringField(jobject object, const char* field, const char* utf8);
// A static String field of MmiNativeManager (nullopt for null).
std::optional<std::string> ManagerStaticString(const char* field);
void SetManagerStaticString(const char* field, const char* utf8);

// Waits until every service death and registration report has reached the library.
void WaitIdle();

// Calls hook, on the logging thread, with every platform-log line as it is written; an empty hook
// ends it. Lets a test act at an exact point inside a library routine.
void OnLogLine(std::function<void(const LogLine&)> hook);

// From the JNI agent every suite's JVM loads: how many texts the library handed to NewStringUTF,
// and those that were not valid modified UTF-8 (as hexadecimal). A binary that saw one fails.
long LibraryTextsChecked();
std::vector<std::string> InvalidLibraryTexts();
// Records the library's string calls (GetStringUTFChars, ReleaseStringUTFChars, NewStringUTF) in
// order from now on, or stops; TakeStringCalls hands over what was recorded.
void TraceStringCalls(bool on);
std::vector<StringCall> TakeStringCalls();
// The calling thread's live JNI local references, every frame counted.
long LocalReferences();
// What the library borrowed on the calling thread since the last take (GetStringUTFChars,
// Get<Type>ArrayElements) and every fault in giving it back; a loan still open is a fault. Any
// fault on any thread also fails the binary at its end, as does a loan open then.
Loans TakeLoans();
// Fails the current test on every loan fault of the calling thread, each named after what.
void NoLoanFaults(const std::string& what);
// The calling thread's next library calls of call: skip succeed, then count fail as JNI allows
// (NULL, with an OutOfMemoryError pending if pending). StagedFailures: how many calls failed so.
void StageFailures(JniCall call, int skip, int count, bool pending);
int StagedFailures();

// Calls one of the library's exported functions (JNI_OnLoad, InitMmiNativeManager, ...) directly.
void* LibrarySymbol(const char* name);

}  // namespace kxtest

#endif
