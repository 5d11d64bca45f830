// Shared pieces of the reliability suites: the Java driver that calls every native from Java, and
// a device put back to a known state between cases.
#ifndef KXMMI_TESTS_RELIABILITY_WORKLOAD_H
#define KXMMI_TESTS_RELIABILITY_WORKLOAD_H

#include <jni.h>
#include <sys/types.h>

#include <cstdio>
#include <string>
#include <vector>

#include "jvm_harness.h"

namespace reliability {

constexpr int kMethods = 52;
constexpr int kDebug = 3;
constexpr int kError = 6;

// com.tavrin.mmitest.reliability.Workload (a global reference).
jclass WorkloadClass();
// Calls native index (its row in the registration table) from Java once; its answer as text:
// a number, true/false, a quoted string, [a, b, ...] or null.
std::string CallNative(int index);
// The answers of every native, in table order.
std::vector<std::string> AnswersOfAll();

// Every service registered with its default answers and connected afresh (which also forgets
// the touch panel's cached pressure support), with the log and the call record emptied.
void HealthyDevice();
// The library's own connect routine, as a registration report runs it.
void Reconnect();
// Kills or revives every service and waits until the library has seen it.
void KillAll();
void ReviveAll();

// A local frame of the calling thread for the length of a scope, so that a table's rows do not
// pile their arguments up in the test's own frame.
class LocalFrame {
  public:
    LocalFrame() { kxtest::Env()->PushLocalFrame(32); }
    ~LocalFrame() { kxtest::Env()->PopLocalFrame(nullptr); }
    LocalFrame(const LocalFrame&) = delete;
    LocalFrame& operator=(const LocalFrame&) = delete;
};

// Everything written to standard output (where the JVM prints its -Xcheck:jni warnings) while it
// lives goes to a file instead, to be read back.
class StdoutCapture {
  public:
    StdoutCapture();
    ~StdoutCapture();
    StdoutCapture(const StdoutCapture&) = delete;
    StdoutCapture& operator=(const StdoutCapture&) = delete;

    // What was written since the last call.
    std::string Take();

  private:
    std::FILE* mFile;
    int mSaved;
    off_t mRead = 0;
};

// "KxMMITest_jni: " + text.
std::string Tagged(const std::string& text);
// The lines of one priority.
std::vector<std::string> LinesAt(const std::vector<kxtest::LogLine>& lines, int priority);

}  // namespace reliability

#endif
