#include "jvm_harness.h"

#include <android/log.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <sstream>
#include <string>

#include "text_agent.h"

namespace kxtest {
namespace {

constexpr const char* kManager = "com/tavrin/mmitest/controller/MmiNativeManager";

std::mutex g_logLock;
std::vector<LogLine>* g_logs = new std::vector<LogLine>();  // lines may arrive during exit

std::function<void(const LogLine&)>* g_logHook = new std::function<void(const LogLine&)>();

void CaptureLine(const struct __android_logger_data* data, const char* message) {
    LogLine line{data->priority, message, data->tag != nullptr ? data->tag : ""};
    std::function<void(const LogLine&)> hook;
    {
        std::lock_guard<std::mutex> lock(g_logLock);
        g_logs->push_back(line);
        hook = *g_logHook;
    }
    if (hook) hook(line);  // outside the lock: the hook may make the library log again
}

TextAgentState& Agent() {
    static TextAgentState* state = [] {
        void* agent = dlopen(KXTEST_TEXT_AGENT, RTLD_NOW | RTLD_NOLOAD);
        void* symbol = agent == nullptr ? nullptr : dlsym(agent, "KxTextAgentState");
        if (symbol == nullptr) {
            std::fprintf(stderr, "the text agent is not loaded\n");
            std::abort();
        }
        return reinterpret_cast<TextAgentState* (*)()>(symbol)();
    }();
    return *state;
}

JavaVM* g_vm = nullptr;
jclass g_manager = nullptr;

JavaVM* CreateVm() {
    const char* override = std::getenv("KXTEST_CLASSPATH");  // suites that load other classes
    std::string classPath =
        std::string("-Djava.class.path=") + (override != nullptr ? override : KXTEST_JAR);
    std::vector<std::string> texts = {classPath,
                                      std::string("-Djava.library.path=") + KXTEST_LIB_DIR,
                                      "-Xcheck:jni",  // JNI misuse fails the run
                                      std::string("-agentpath:") + KXTEST_TEXT_AGENT,
                                      "-Xmx256m",
                                      "-Xss4m"};
    texts.push_back("--enable-native-access=ALL-UNNAMED");  // else JDK 22+ warns at each load
    // Suites that need a JVM of their own kind (a small heap) add options; later ones win.
    std::istringstream extra(std::getenv("KXTEST_JVM_OPTIONS") ? std::getenv("KXTEST_JVM_OPTIONS")
                                                               : "");
    for (std::string option; extra >> option;) texts.push_back(option);
    std::vector<JavaVMOption> options;
    for (std::string& text : texts) options.push_back({text.data(), nullptr});
    JavaVMInitArgs args{};
    args.version = JNI_VERSION_1_8;
    args.nOptions = static_cast<jint>(options.size());
    args.options = options.data();
    args.ignoreUnrecognized = JNI_FALSE;
    JavaVM* vm = nullptr;
    JNIEnv* env = nullptr;
    if (JNI_CreateJavaVM(&vm, reinterpret_cast<void**>(&env), &args) != JNI_OK) {
        std::fprintf(stderr, "cannot create the JVM\n");
        std::abort();
    }
    return vm;
}

jmethodID Method(const char* name, const char* signature) {
    JNIEnv* env = Env();
    jmethodID id = env->GetStaticMethodID(Manager(), name, signature);
    if (id == nullptr) {
        NoException(name);
        ADD_FAILURE() << "no method " << name << signature;
    }
    return id;
}

// Tests run on a thread that never returns to Java, so each test gets its own local frame.
class LocalFrames : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { Env()->PushLocalFrame(64); }
    void OnTestEnd(const testing::TestInfo&) override { Env()->PopLocalFrame(nullptr); }
};

// With KXTEST_QUIET=NAME (./mmi stress), the program's own lines stand alone: instead of the test
// framework's banners, each failed check as "NAME: FAIL file:line: message" and one closing line.
class QuietPrinter : public testing::EmptyTestEventListener {
  public:
    explicit QuietPrinter(std::string name) : name_(std::move(name)) {}

  private:
    void OnTestPartResult(const testing::TestPartResult& r) override {
        if (!r.failed()) return;
        std::printf("%s: FAIL %s:%d: %s\n", name_.c_str(), r.file_name() ? r.file_name() : "?",
                    r.line_number(), r.message());
    }
    void OnTestProgramEnd(const testing::UnitTest& unit) override {
        std::printf("%s: %s (%.1f s)\n", name_.c_str(), unit.Passed() ? "PASSED" : "FAILED",
                    static_cast<double>(unit.elapsed_time()) / 1000);
        std::fflush(stdout);
    }
    const std::string name_;
};

}  // namespace

void NoException(const char* what) {
    JNIEnv* env = Env();
    if (!env->ExceptionCheck()) return;
    env->ExceptionDescribe();
    env->ExceptionClear();  // so that one fault does not leak into the next call
    ADD_FAILURE() << "Java exception pending after " << what;
}

std::ostream& operator<<(std::ostream& os, const LogLine& line) {
    return os << line.priority << " " << (line.tag.empty() ? "" : line.tag + ": ") << line.text;
}

std::vector<LogLine> TakeLogs() {
    std::lock_guard<std::mutex> lock(g_logLock);
    std::vector<LogLine> lines;
    lines.swap(*g_logs);
    return lines;
}

simdevice::SimDevice& Device() {
    // Never destroyed: its services must outlive the library's own teardown at exit.
    static simdevice::SimDevice* device = new simdevice::SimDevice();
    return *device;
}

JavaVM* Vm() {
    static std::once_flag once;
    std::call_once(once, [] {
        __android_log_set_logger(CaptureLine);
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
        __android_log_set_default_tag("");  // the library's lines have none; the platform's do
        g_vm = CreateVm();
    });
    return g_vm;
}

JNIEnv* Env() {
    JavaVM* vm = Vm();
    JNIEnv* env = nullptr;
    if (vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) == JNI_EDETACHED) {
        vm->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr);
    }
    return env;
}

jclass Manager() {
    static std::once_flag once;
    std::call_once(once, [] {
        // The JVM before the device: a service's start delay counts from the device's start, and
        // a slow JVM start (a sanitizer build on a busy machine) must not use it up.
        JNIEnv* env = Env();
        Device().Start();
        jclass local = env->FindClass(kManager);
        if (local == nullptr) {
            env->ExceptionDescribe();
            std::abort();
        }
        g_manager = static_cast<jclass>(env->NewGlobalRef(local));
        env->DeleteLocalRef(local);
        // Looking a static method up initialises the class, whose initialiser loads the library.
        env->GetStaticMethodID(g_manager, "isFactoryVersionNative", "()Z");
        if (env->ExceptionCheck()) {
            env->ExceptionDescribe();
            std::abort();
        }
        WaitIdle();
    });
    return g_manager;
}

#define KXTEST_CALL(JniCall)                                                    \
    JNIEnv* env = Env();                                                        \
    jmethodID id = Method(name, signature);                                     \
    va_list args;                                                               \
    va_start(args, signature);                                                  \
    auto result = id == nullptr ? decltype(env->JniCall(Manager(), id, args)){} \
                                : env->JniCall(Manager(), id, args);            \
    va_end(args);                                                               \
    NoException(name);                                                          \
    NoLoanFaults(name);

jint CallInt(const char* name, const char* signature, ...) {
    KXTEST_CALL(CallStaticIntMethodV)
    return result;
}

jlong CallLong(const char* name, const char* signature, ...) {
    KXTEST_CALL(CallStaticLongMethodV)
    return result;
}

bool CallBool(const char* name, const char* signature, ...) {
    KXTEST_CALL(CallStaticBooleanMethodV)
    return result == JNI_TRUE;
}

std::optional<std::string> CallString(const char* name, const char* signature, ...) {
    KXTEST_CALL(CallStaticObjectMethodV)
    return TakeText(result);
}

std::optional<std::vector<int32_t>> CallIntArray(const char* name, const char* signature, ...) {
    KXTEST_CALL(CallStaticObjectMethodV)
    if (result == nullptr) return std::nullopt;
    jintArray array = static_cast<jintArray>(result);
    std::vector<int32_t> values(static_cast<size_t>(env->GetArrayLength(array)));
    if (!values.empty()) env->GetIntArrayRegion(array, 0, values.size(), values.data());
    env->DeleteLocalRef(result);
    return values;
}
#undef KXTEST_CALL

std::optional<std::string> TakeText(jobject string) {
    if (string == nullptr) return std::nullopt;
    JNIEnv* env = Env();
    const char* chars = env->GetStringUTFChars(static_cast<jstring>(string), nullptr);
    std::string text(chars);
    env->ReleaseStringUTFChars(static_cast<jstring>(string), chars);
    env->DeleteLocalRef(string);
    return text;
}

jstring JStr(const char* utf8) { return utf8 == nullptr ? nullptr : Env()->NewStringUTF(utf8); }

jintArray JInts(const std::vector<int32_t>& values) {
    JNIEnv* env = Env();
    jintArray array = env->NewIntArray(static_cast<jsize>(values.size()));
    if (!values.empty()) env->SetIntArrayRegion(array, 0, values.size(), values.data());
    return array;
}

jbyteArray JBytes(const std::vector<uint8_t>& values) {
    JNIEnv* env = Env();
    jbyteArray array = env->NewByteArray(static_cast<jsize>(values.size()));
    if (!values.empty()) {
        env->SetByteArrayRegion(array, 0, values.size(),
                                reinterpret_cast<const jbyte*>(values.data()));
    }
    return array;
}

jobject NewModel(const char* className) {
    JNIEnv* env = Env();
    std::string name = std::string("com/tavrin/mmitest/model/") + className;
    jclass clazz = env->FindClass(name.c_str());
    if (clazz == nullptr) {
        NoException(className);
        return nullptr;
    }
    jobject object = env->NewObject(clazz, env->GetMethodID(clazz, "<init>", "()V"));
    NoException(className);
    env->DeleteLocalRef(clazz);
    return object;
}

void SetIntField(jobject object, const char* field, int32_t value) {
    JNIEnv* env = Env();
    jclass clazz = env->GetObjectClass(object);
    env->SetIntField(object, env->GetFieldID(clazz, field, "I"), value);
    NoException(field);
    env->DeleteLocalRef(clazz);
}

void SetStringField(jobject object, const char* field, const char* utf8) {
    JNIEnv* env = Env();
    jclass clazz = env->GetObjectClass(object);
    jstring value = JStr(utf8);
    env->SetObjectField(object, env->GetFieldID(clazz, field, "Ljava/lang/String;"), value);
    NoException(field);
    if (value != nullptr) env->DeleteLocalRef(value);
    env->DeleteLocalRef(clazz);
}

std::optional<std::string> ManagerStaticString(const char* field) {
    JNIEnv* env = Env();
    jfieldID id = env->GetStaticFieldID(Manager(), field, "Ljava/lang/String;");
    if (id == nullptr) {
        NoException(field);
        return std::nullopt;
    }
    return TakeText(env->GetStaticObjectField(Manager(), id));
}

void SetManagerStaticString(const char* field, const char* utf8) {
    JNIEnv* env = Env();
    jfieldID id = env->GetStaticFieldID(Manager(), field, "Ljava/lang/String;");
    jstring value = JStr(utf8);
    env->SetStaticObjectField(Manager(), id, value);
    NoException(field);
    if (value != nullptr) env->DeleteLocalRef(value);
}

void WaitIdle() { simdevice::SimDevice::WaitIdle(); }

void OnLogLine(std::function<void(const LogLine&)> hook) {
    std::lock_guard<std::mutex> lock(g_logLock);
    *g_logHook = std::move(hook);
}

long LibraryTextsChecked() { return Agent().checked.load(); }

long LocalReferences() { return Agent().localReferences(Env()); }

Loans TakeLoans() { return Agent().takeLoans(); }

void NoLoanFaults(const std::string& what) {
    for (const std::string& fault : TakeLoans().faults) ADD_FAILURE() << what << ": " << fault;
}

void StageFailures(JniCall call, int skip, int count, bool pending) {
    Agent().stageFailures(call, skip, count, pending);
}

int StagedFailures() { return Agent().stagedFailures(); }

std::vector<std::string> InvalidLibraryTexts() {
    std::lock_guard<std::mutex> lock(Agent().lock);
    return Agent().invalid;
}

void TraceStringCalls(bool on) {
    std::lock_guard<std::mutex> lock(Agent().lock);
    Agent().trace.clear();
    Agent().tracing = on;
}

std::vector<StringCall> TakeStringCalls() {
    std::lock_guard<std::mutex> lock(Agent().lock);
    std::vector<StringCall> calls;
    calls.swap(Agent().trace);
    return calls;
}

void* LibrarySymbol(const char* name) {
    Manager();
    static void* handle =
        dlopen((std::string(KXTEST_LIB_DIR) + "/libKxMMI_jni.so").c_str(), RTLD_NOW | RTLD_NOLOAD);
    return handle == nullptr ? nullptr : dlsym(handle, name);
}

}  // namespace kxtest

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    kxtest::Env();
    testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
    listeners.Append(new kxtest::LocalFrames());
    if (const char* quiet = std::getenv("KXTEST_QUIET"); quiet != nullptr && *quiet != '\0') {
        delete listeners.Release(listeners.default_result_printer());
        listeners.Append(new kxtest::QuietPrinter(quiet));
    }
    int result = RUN_ALL_TESTS();
    // A report that never reached its reader is no report; a reader that stopped early (| head -1)
    // has what it wanted and is told nothing, as a pipe's writer ends quietly.
    // errno is the last failed write's: every later write to the stream failed the same way.
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        const int error = errno;
        const char* quiet = std::getenv("KXTEST_QUIET");
        if (error != EPIPE) {
            std::string reason = std::strerror(error);
            reason[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(reason[0])));
            std::fprintf(stderr, "%s: cannot write standard output: %s\n",
                         quiet != nullptr && *quiet != '\0' ? quiet : argv[0], reason.c_str());
        }
        result = 1;
    }
    // Whatever test ran, Java must never have been handed a text that is not modified UTF-8.
    for (const std::string& hex : kxtest::InvalidLibraryTexts()) {
        std::fprintf(stderr, "the library handed NewStringUTF invalid modified UTF-8: %s\n",
                     hex.c_str());
        result = 1;
    }
    // Nor may it have kept, or given back wrongly, anything it borrowed from Java, on any thread.
    kxtest::TextAgentState& agent = kxtest::Agent();
    kxtest::TakeLoans();  // this thread's loans still open count as faults
    std::lock_guard<std::mutex> lock(agent.lock);
    for (const std::string& fault : agent.faults) {
        std::fprintf(stderr, "the library broke a JNI loan: %s\n", fault.c_str());
    }
    if (agent.faultCount.load() > 0 || agent.open.load() > 0) {
        std::fprintf(stderr, "the library broke %ld JNI loans; %ld still open\n",
                     agent.faultCount.load(), agent.open.load());
        result = 1;
    }
    return result;
}
