// JVMTI agent: once the VM is up it replaces NewStringUTF, GetStringUTFChars and
// ReleaseStringUTFChars in the JNI function table. Calls made from libKxMMI_jni are watched: every
// text handed to NewStringUTF must be valid modified UTF-8 (what Android's CheckJNI aborts on and
// HotSpot silently mangles), and while tracing, the order of the calls is recorded.
#include "text_agent.h"

#include <jvmti.h>
#include <link.h>

#include <cstdio>
#include <cstring>

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
    }
    return g_original.NewStringUTF(env, bytes);
}

const char* JNICALL GetStringUTFChars(JNIEnv* env, jstring string, jboolean* isCopy) {
    const char* chars = g_original.GetStringUTFChars(env, string, isCopy);
    if (FromLibrary(__builtin_return_address(0))) Record('G', chars);
    return chars;
}

void JNICALL ReleaseStringUTFChars(JNIEnv* env, jstring string, const char* chars) {
    if (FromLibrary(__builtin_return_address(0))) Record('R', chars);
    g_original.ReleaseStringUTFChars(env, string, chars);
}

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
    g_wrapped.GetStringUTFChars = GetStringUTFChars;
    g_wrapped.ReleaseStringUTFChars = ReleaseStringUTFChars;
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
    jvmtiEventCallbacks callbacks{};
    callbacks.VMInit = OnVmInit;
    if (jvmti->SetEventCallbacks(&callbacks, sizeof(callbacks)) != JVMTI_ERROR_NONE ||
        jvmti->SetEventNotificationMode(JVMTI_ENABLE, JVMTI_EVENT_VM_INIT, nullptr) !=
            JVMTI_ERROR_NONE) {
        return JNI_ERR;
    }
    return JNI_OK;
}
