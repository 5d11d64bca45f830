// JVMTI agent: once the VM is up it replaces, in the JNI function table, NewStringUTF,
// NewIntArray, GetStringUTFChars and ReleaseStringUTFChars, and Get/Release<Type>ArrayElements.
// Calls made from libKxMMI_jni are watched: every text handed to NewStringUTF must be valid
// modified UTF-8 (what Android's CheckJNI aborts on and HotSpot silently mangles); everything the
// library borrows must be given back once, on the object it came from, in the mode the library's
// rules name; while tracing, the order of the string calls is recorded; and a test can make the
// library's calls fail the way JNI lets them.
#include "text_agent.h"

#include <jvmti.h>
#include <link.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>

#include "modified_utf8_check.h"

namespace {

kxtest::TextAgentState g_state;
jvmtiEnv* g_jvmti = nullptr;
JNINativeInterface_ g_original;
JNINativeInterface_ g_wrapped;

// The library's code, found once it is loaded (it is never unloaded).
std::atomic<uintptr_t> g_libraryStart{0}, g_libraryEnd{0};

bool FromLibrary(const void* returnAddress) {
    const auto at = reinterpret_cast<uintptr_t>(returnAddress);
    if (g_libraryEnd.load() == 0) {
        dl_iterate_phdr(
            [](dl_phdr_info* info, size_t, void*) {
                const char* name = std::strrchr(info->dlpi_name, '/');
                if (name == nullptr || std::strcmp(name, "/libKxMMI_jni.so") != 0) return 0;
                for (int i = 0; i < info->dlpi_phnum; ++i) {
                    const ElfW(Phdr)& p = info->dlpi_phdr[i];
                    if (p.p_type != PT_LOAD || (p.p_flags & PF_X) == 0) continue;
                    g_libraryStart = info->dlpi_addr + p.p_vaddr;
                    g_libraryEnd = info->dlpi_addr + p.p_vaddr + p.p_memsz;
                }
                return 1;
            },
            nullptr);
    }
    const uintptr_t end = g_libraryEnd.load();  // stored after the start
    return at >= g_libraryStart.load() && at < end;
}

void Record(char kind, const char* text) {
    if (!g_state.tracing.load() || text == nullptr) return;
    std::lock_guard<std::mutex> lock(g_state.lock);
    g_state.trace.push_back({kind, text});
}

// What the library borrowed on this thread and has not given back yet, by pointer.
struct Loan {
    const char* get;
    const char* release;
    jobject object;
    int mode;  // the release mode the library's rules name; -1: none named
};
thread_local std::unordered_map<const void*, Loan> t_open;
thread_local kxtest::Loans t_loans;

void Fault(std::string text) {
    ++g_state.faultCount;
    {
        std::lock_guard<std::mutex> lock(g_state.lock);
        if (g_state.faults.size() < 20) g_state.faults.push_back(text);
    }
    t_loans.faults.push_back(std::move(text));
}

void Lend(const void* pointer, const char* get, const char* release, jobject object, int mode) {
    if (pointer == nullptr) return;  // a failed call lends nothing
    ++t_loans.obtained;
    ++g_state.open;
    t_open[pointer] = {get, release, object, mode};
}

const char* ModeName(jint mode) {
    return mode == 0            ? "0"
           : mode == JNI_COMMIT ? "JNI_COMMIT"
           : mode == JNI_ABORT  ? "JNI_ABORT"
                                : "?";
}

// A release by the library: judged against its loan. Answers the object to hand the original
// release, or null when the release must not reach the JVM (it would free what is not lent).
jobject GiveBack(JNIEnv* env, const void* pointer, const char* release, jobject object, jint mode) {
    auto loan = t_open.find(pointer);
    if (loan == t_open.end()) {
        Fault(std::string(release) + ": of " + (pointer ? "a pointer" : "NULL") +
              " the library does not hold (a second release, or one after a failed call)");
        return nullptr;
    }
    const Loan lent = loan->second;
    if (std::strcmp(lent.release, release) != 0) {
        Fault(std::string(release) + ": of what " + lent.get + " lent");
        return nullptr;
    }
    // IsSameObject is not among the calls JNI allows with an exception pending.
    if (object != lent.object &&
        (g_original.ExceptionCheck(env) || !g_original.IsSameObject(env, object, lent.object))) {
        Fault(std::string(release) + ": on another object than the one " + lent.get + " lent");
    }
    if (lent.mode >= 0 && mode != lent.mode) {
        Fault(std::string(release) + ": in mode " + ModeName(mode) + ", not " +
              ModeName(lent.mode));
    }
    if (mode == JNI_COMMIT) return lent.object;  // copies back but keeps the loan
    t_open.erase(loan);
    --g_state.open;
    return lent.object;
}

kxtest::Loans TakeLoans() {
    for (const auto& [pointer, loan] : t_open) {
        Fault(std::string(loan.get) + ": never given back with " + loan.release);
        --g_state.open;
    }
    t_open.clear();
    kxtest::Loans loans;
    std::swap(loans, t_loans);
    return loans;
}

// Failures a test staged for this thread's next calls.
struct Stage {
    kxtest::JniCall call;
    int skip = 0, count = 0, met = 0;
    bool pending = false;
};
thread_local Stage t_stage;

void StageFailures(kxtest::JniCall call, int skip, int count, bool pending) {
    t_stage = {call, skip, count, 0, pending};
}

int StagedFailures() { return t_stage.met; }

// True when this call is to fail: it answers NULL, with an OutOfMemoryError pending if asked.
bool FailsNow(JNIEnv* env, kxtest::JniCall call) {
    if (t_stage.count == 0 || t_stage.call != call) return false;
    if (t_stage.skip > 0) {
        --t_stage.skip;
        return false;
    }
    --t_stage.count;
    ++t_stage.met;
    if (t_stage.pending) {
        jclass error = g_original.FindClass(env, "java/lang/OutOfMemoryError");
        g_original.ThrowNew(env, error, "staged by the test agent");
        g_original.DeleteLocalRef(env, error);
    }
    return true;
}

jstring JNICALL NewStringUTF(JNIEnv* env, const char* bytes) {
    if (FromLibrary(__builtin_return_address(0)) && bytes != nullptr) {
        ++g_state.checked;
        if (!kxtest::IsModifiedUtf8(bytes)) {
            std::string hex;
            for (const char* p = bytes; *p != 0 && hex.size() < 200; ++p) {
                char pair[3];
                std::snprintf(pair, sizeof(pair), "%02x", static_cast<unsigned char>(*p));
                hex += pair;
            }
            std::lock_guard<std::mutex> lock(g_state.lock);
            if (g_state.invalid.size() < 20) g_state.invalid.push_back(hex);
        }
        Record('N', bytes);
        if (FailsNow(env, kxtest::JniCall::kNewString)) return nullptr;
    }
    return g_original.NewStringUTF(env, bytes);
}

jintArray JNICALL NewIntArray(JNIEnv* env, jsize length) {
    if (FromLibrary(__builtin_return_address(0)) && FailsNow(env, kxtest::JniCall::kNewIntArray)) {
        return nullptr;
    }
    return g_original.NewIntArray(env, length);
}

const char* JNICALL GetStringUTFChars(JNIEnv* env, jstring string, jboolean* isCopy) {
    if (!FromLibrary(__builtin_return_address(0)))
        return g_original.GetStringUTFChars(env, string, isCopy);
    if (FailsNow(env, kxtest::JniCall::kStringChars)) return nullptr;
    const char* chars = g_original.GetStringUTFChars(env, string, isCopy);
    Record('G', chars);
    Lend(chars, "GetStringUTFChars", "ReleaseStringUTFChars", string, -1);
    return chars;
}

void JNICALL ReleaseStringUTFChars(JNIEnv* env, jstring string, const char* chars) {
    if (!FromLibrary(__builtin_return_address(0)))
        return g_original.ReleaseStringUTFChars(env, string, chars);
    Record('R', chars);
    if (jobject lent = GiveBack(env, chars, "ReleaseStringUTFChars", string, 0))
        g_original.ReleaseStringUTFChars(env, static_cast<jstring>(lent), chars);
}

// The release modes the library's rules name: the signature bytes go back in mode 0, the
// pressure data with JNI_ABORT (never written back); no rule for the other types.
#define KXTEST_ARRAY_LOANS(Type, type, mode)                                                       \
    j##type* JNICALL Get##Type##ArrayElements(JNIEnv* env, j##type##Array array,                   \
                                              jboolean* isCopy) {                                  \
        if (!FromLibrary(__builtin_return_address(0)))                                             \
            return g_original.Get##Type##ArrayElements(env, array, isCopy);                        \
        if (FailsNow(env, kxtest::JniCall::kArrayElements)) return nullptr;                        \
        j##type* elements = g_original.Get##Type##ArrayElements(env, array, isCopy);               \
        Lend(elements, "Get" #Type "ArrayElements", "Release" #Type "ArrayElements", array, mode); \
        return elements;                                                                           \
    }                                                                                              \
    void JNICALL Release##Type##ArrayElements(JNIEnv* env, j##type##Array array,                   \
                                              j##type* elements, jint how) {                       \
        if (!FromLibrary(__builtin_return_address(0)))                                             \
            return g_original.Release##Type##ArrayElements(env, array, elements, how);             \
        if (jobject lent = GiveBack(env, elements, "Release" #Type "ArrayElements", array, how))   \
            g_original.Release##Type##ArrayElements(env, static_cast<j##type##Array>(lent),        \
                                                    elements, how);                                \
    }
KXTEST_ARRAY_LOANS(Boolean, boolean, -1)
KXTEST_ARRAY_LOANS(Byte, byte, 0)
KXTEST_ARRAY_LOANS(Char, char, -1)
KXTEST_ARRAY_LOANS(Short, short, -1)
KXTEST_ARRAY_LOANS(Int, int, JNI_ABORT)
KXTEST_ARRAY_LOANS(Long, long, -1)
KXTEST_ARRAY_LOANS(Float, float, -1)
KXTEST_ARRAY_LOANS(Double, double, -1)
#undef KXTEST_ARRAY_LOANS

// The heap walk reports every JNI local reference as a root; the calling thread is told apart from
// the others by a tag of its own for the length of the walk.
constexpr jlong kCallingThread = 0x4b584d4d49;
std::atomic<long> g_localReferences{0};

long LocalReferences(JNIEnv* env) {
    jthread self = nullptr;
    if (g_jvmti->GetCurrentThread(&self) != JVMTI_ERROR_NONE) return -1;
    g_localReferences.store(0);  // the walk counts on the VM's own thread
    jvmtiHeapCallbacks callbacks{};
    callbacks.heap_reference_callback = [](jvmtiHeapReferenceKind kind,
                                           const jvmtiHeapReferenceInfo* info, jlong, jlong, jlong,
                                           jlong*, jlong*, jint, void*) -> jint {
        if (kind == JVMTI_HEAP_REFERENCE_JNI_LOCAL && info->jni_local.thread_tag == kCallingThread)
            ++g_localReferences;
        return 0;  // roots only
    };
    const bool walked =
        g_jvmti->SetTag(self, kCallingThread) == JVMTI_ERROR_NONE &&
        g_jvmti->FollowReferences(0, nullptr, nullptr, &callbacks, nullptr) == JVMTI_ERROR_NONE;
    g_jvmti->SetTag(self, 0);
    env->DeleteLocalRef(self);
    return walked ? g_localReferences.load() - 1 : -1;  // not the thread reference made here
}

// The table can only be replaced once the VM is live.
void JNICALL OnVmInit(jvmtiEnv* jvmti, JNIEnv* /*env*/, jthread /*thread*/) {
    jniNativeInterface* table = nullptr;
    if (jvmti->GetJNIFunctionTable(&table) != JVMTI_ERROR_NONE) {
        std::fprintf(stderr, "text agent: cannot read the JNI function table\n");
        std::abort();
    }
    g_original = *table;
    g_wrapped = *table;
    jvmti->Deallocate(reinterpret_cast<unsigned char*>(table));
    g_wrapped.NewStringUTF = NewStringUTF;
    g_wrapped.NewIntArray = NewIntArray;
    g_wrapped.GetStringUTFChars = GetStringUTFChars;
    g_wrapped.ReleaseStringUTFChars = ReleaseStringUTFChars;
#define KXTEST_WRAP(Type)                                          \
    g_wrapped.Get##Type##ArrayElements = Get##Type##ArrayElements; \
    g_wrapped.Release##Type##ArrayElements = Release##Type##ArrayElements;
    KXTEST_WRAP(Boolean)
    KXTEST_WRAP(Byte)
    KXTEST_WRAP(Char)
    KXTEST_WRAP(Short)
    KXTEST_WRAP(Int)
    KXTEST_WRAP(Long)
    KXTEST_WRAP(Float)
    KXTEST_WRAP(Double)
#undef KXTEST_WRAP
    if (jvmti->SetJNIFunctionTable(&g_wrapped) != JVMTI_ERROR_NONE) {
        std::fprintf(stderr, "text agent: cannot replace the JNI function table\n");
        std::abort();
    }
}

}  // namespace

extern "C" kxtest::TextAgentState* KxTextAgentState() { return &g_state; }

extern "C" JNIEXPORT jint JNICALL Agent_OnLoad(JavaVM* vm, char* /*options*/, void* /*reserved*/) {
    jvmtiEnv* jvmti = nullptr;
    if (vm->GetEnv(reinterpret_cast<void**>(&jvmti), JVMTI_VERSION_1_2) != JNI_OK) return JNI_ERR;
    jvmtiCapabilities tagging{};
    tagging.can_tag_objects = 1;
    if (jvmti->AddCapabilities(&tagging) != JVMTI_ERROR_NONE) return JNI_ERR;
    g_jvmti = jvmti;
    g_state.localReferences = LocalReferences;
    g_state.takeLoans = TakeLoans;
    g_state.stageFailures = StageFailures;
    g_state.stagedFailures = StagedFailures;
    jvmtiEventCallbacks callbacks{};
    callbacks.VMInit = OnVmInit;
    if (jvmti->SetEventCallbacks(&callbacks, sizeof(callbacks)) != JVMTI_ERROR_NONE ||
        jvmti->SetEventNotificationMode(JVMTI_ENABLE, JVMTI_EVENT_VM_INIT, nullptr) !=
            JVMTI_ERROR_NONE) {
        return JNI_ERR;
    }
    return JNI_OK;
}
