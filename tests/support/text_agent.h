// What the JNI agent saw: the agent (text_agent.cc, loaded into every suite's JVM) wraps the JNI
// functions through which the library borrows from Java or makes Java values, and watches the
// calls that come from the library itself: the texts it hands to NewStringUTF, the characters and
// array elements it obtains and gives back, and, on request, calls it makes fail as JNI allows.
// It also counts a thread's live JNI local references, which the JVM's own checks no longer
// report.
#ifndef KXMMI_TESTS_SUPPORT_TEXT_AGENT_H
#define KXMMI_TESTS_SUPPORT_TEXT_AGENT_H

#include <jni.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace kxtest {

// One string call of the library: 'G' GetStringUTFChars, 'R' ReleaseStringUTFChars (with the
// characters it hands back), 'N' NewStringUTF (with the text it was given).
struct StringCall {
    char kind;
    std::string text;
    bool operator==(const StringCall& o) const { return kind == o.kind && text == o.text; }
};

// The JNI calls of the library that a test can make fail. kArrayElements stands for every
// Get<Type>ArrayElements.
enum class JniCall { kStringChars, kArrayElements, kNewString, kNewIntArray };

// The characters and elements the library obtained on one thread, and every way it gave them back
// wrongly: not at all, twice, on another object, or in another mode than its rules name (mode 0
// for the signature bytes, JNI_ABORT for the pressure data).
struct Loans {
    long obtained = 0;
    std::vector<std::string> faults;  // "<JNI function>: what went wrong"
};

struct TextAgentState {
    std::atomic<long> checked{0};  // texts the library handed to NewStringUTF
    std::atomic<bool> tracing{false};
    std::mutex lock;
    std::vector<std::string> invalid;  // texts that were not modified UTF-8, in hexadecimal
    std::vector<StringCall> trace;     // while tracing
    // Every thread: loans not given back yet, and the first loan faults (under lock).
    std::atomic<long> open{0};
    std::atomic<long> faultCount{0};
    std::vector<std::string> faults;
    // The calling thread's live JNI local references, all frames together; -1 if unknown.
    long (*localReferences)(JNIEnv* env) = nullptr;
    // The calling thread's loans since the last take; a loan still open is a fault, and closed.
    Loans (*takeLoans)() = nullptr;
    // On the calling thread: of the library's next calls of call, the first skip succeed and the
    // count after them answer NULL, with an OutOfMemoryError pending if pending (JNI allows a
    // failure with or without one). Replaces what was staged before.
    void (*stageFailures)(JniCall call, int skip, int count, bool pending) = nullptr;
    // How many staged failures the calling thread's calls met since they were staged.
    int (*stagedFailures)() = nullptr;
};

}  // namespace kxtest

// Exported by the agent.
extern "C" kxtest::TextAgentState* KxTextAgentState();

#endif
