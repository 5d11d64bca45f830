// What the JNI agent saw: the agent (text_agent.cc, loaded into every suite's JVM) wraps
// NewStringUTF, GetStringUTFChars and ReleaseStringUTFChars in the JVM's function table and
// watches the calls that come from the library itself. It also counts a thread's live JNI local
// references, which the JVM's own checks no longer report.
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

struct TextAgentState {
    std::atomic<long> checked{0};  // texts the library handed to NewStringUTF
    std::atomic<bool> tracing{false};
    std::mutex lock;
    std::vector<std::string> invalid;  // texts that were not modified UTF-8, in hexadecimal
    std::vector<StringCall> trace;     // while tracing
    // The calling thread's live JNI local references, all frames together; -1 if unknown.
    long (*localReferences)(JNIEnv* env) = nullptr;
};

}  // namespace kxtest

// Exported by the agent.
extern "C" kxtest::TextAgentState* KxTextAgentState();

#endif
