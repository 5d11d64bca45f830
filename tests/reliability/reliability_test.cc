// Every native against failing services and bad arguments from Java; then called directly, with
// ordinary, empty and null arguments, as a native caller that never returns to Java would call it:
// whatever a call leaves in the frame piles up, and the JNI agent counts the thread's live local
// references around the calls. Nor may the native heap grow.
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <type_traits>

#include "native_methods.h"
#include "workload.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// From the sanitizer runtime's allocator interface (GCC ships the runtime but not its header).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
size_t HeapInUse() { return __sanitizer_get_current_allocated_bytes(); }
constexpr int kRounds = 300;  // per batch; every call costs many times more here
#else
size_t HeapInUse() { return mallinfo2().uordblks; }
constexpr int kRounds = 5000;
#endif

namespace reliability {
namespace {

using simdevice::Answer;
using simdevice::Type;

// Workload's hostile arguments as they reach a service: the text in modified UTF-8, with U+0000 as
// C0 80 and U+1F600 as its two surrogates of three bytes each, then a million characters; a
// million zero bytes as hexadecimal digits; a million ints.
const std::string kHostileText = std::string("\"a\xC0\x80") + "b\xED\xA0\xBD\xED\xB8\x80" + "c" +
                                 std::string(1000000, 'x') + "\"";
const std::string kHostileHex = "\"" + std::string(2000000, '0') + "\"";

// One call of native i from Java on connections made afresh: its answer, error lines and calls.
struct Reached {
    std::string answer;
    std::vector<std::string> errors;
    std::vector<simdevice::Call> calls;
    explicit Reached(int i, int set = kPlain) {
        Reconnect();
        answer = CallNative(i, set);
        errors = TakeErrors();
        calls = kxtest::Device().TakeCalls();
    }
};

// Per native: a transport failure in the middle of the call, a crash of the service in the middle
// of the call, and no callback where the operation calls back, give the failure value (or the
// callback's presets) and the next call works again (after the crashed service's restart).
// A null String or array gives one error line and the failure value without reaching the service;
// a null model object is still sent. Hostile texts (also inside the model objects) and
// arrays of a million elements reach the service whole.
TEST(Faults, EveryNativeAgainstFailingServicesAndBadArguments) {
    HealthyDevice();
    kxtest::Device().SetRestartDelay(10);  // 52 crashes, each with its restart
    std::string zeros = "[0";
    for (int i = 1; i < 64; ++i) zeros += ", 0";
    // Callback presets that are not the failure values.
    const std::map<std::string, std::string> kPresets = {
        {"getMmiAutoStartFlagNative()", "\"Error\""},
        {"getRotaryCrownSelfTestNative()", "\"error\""},
        {"handleAmbientLightParameterNative(int, int, int, int)", zeros + "]"}};
    // The arguments the null lines name, native after native by name.
    const std::vector<std::string> kNullArgs = {"scene",     "flag", "testScene", "parameters",
                                                "query",     "data", "rawData",   "mode",
                                                "testScene", "para", "config"};
    const Oracle o;
    size_t callbacks = 0, nulls = 0, nullLines = 0;
    for (int i = 0; i < kMethods; ++i) {
        const std::string name = Describe(i);
        SCOPED_TRACE(name);
        const Reached healthy(i);
        ASSERT_EQ(healthy.calls.size(), 1u);
        ASSERT_NE(healthy.answer, o.failure[i]) << "the fault would not show";
        const simdevice::Call call = healthy.calls[0];
        auto program = [&](const char* answer) {
            return kxtest::Device().Program(call.service, call.operation, answer, nullptr);
        };
        ASSERT_TRUE(program("transport-error"));
        Reached r(i);
        EXPECT_EQ(r.answer, o.failure[i]);
        EXPECT_EQ(r.calls.size(), 1u) << "the failure must come from the middle of the call";
        const std::string transportLine =
            o.function[i] +
            " fail, transport error: Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '";
        EXPECT_EQ(r.errors, std::vector<std::string>{Tagged(transportLine)});
        // A crash: the same failure, then the death report releases every handle, and the
        // service's restart connects them again.
        ASSERT_TRUE(program("crash"));
        Reconnect();
        EXPECT_EQ(CallNative(i), o.failure[i]);
        kxtest::WaitIdle();
        kxtest::Device().ResetAnswers();
        std::vector<kxtest::LogLine> lines = kxtest::TakeLogs();
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [](const kxtest::LogLine& l) { return l.priority == kxtest::E; }),
                  1);
        EXPECT_NE(std::find(lines.begin(), lines.end(), kxtest::Line(kxtest::E, transportLine)),
                  lines.end());
        const std::string died =
            "ProcessServiceDied, cookie is:" + std::to_string(static_cast<int>(call.service) + 1);
        auto death = std::find(lines.begin(), lines.end(), kxtest::Line(kxtest::W, died));
        ASSERT_NE(death, lines.end());
        EXPECT_NE(std::find(death, lines.end(), kxtest::Line(kxtest::D, "ExitMmiNativeManager")),
                  lines.end());
        kxtest::Device().WaitRestarts();
        EXPECT_TRUE(kxtest::Device().IsRegistered(call.service));
        EXPECT_EQ(CallNative(i), healthy.answer) << "after the restart";
        if (simdevice::SimDevice::FindOperation(call.service, call.operation)->callback) {
            ++callbacks;
            ASSERT_TRUE(program("nocallback"));
            r = Reached(i);
            EXPECT_EQ(r.answer, kPresets.count(name) ? kPresets.at(name) : o.failure[i]);
            EXPECT_EQ(r.calls.size(), 1u);
            for (const std::string& line : r.errors)
                EXPECT_EQ(line.find("transport"), std::string::npos) << line;
        }
        kxtest::Device().ResetAnswers();
        EXPECT_EQ(Reached(i).answer, healthy.answer) << "after the faults";

        const std::string params = name.substr(name.find('('));
        const size_t models = Count(params, "BigData");
        const size_t references = Count(params, "String") + Count(params, "[]") + models;
        for (size_t k = 0; k < references; ++k, ++nulls) {
            r = Reached(i, kNullAt + static_cast<int>(k));
            EXPECT_EQ(r.answer, models ? o.success[i] : o.failure[i]);
            EXPECT_EQ(r.calls.size(), models);
            if (models) continue;
            const std::string line =
                o.function[i] + " fail, " + kNullArgs.at(nullLines++) + " is null";
            EXPECT_EQ(r.errors, std::vector<std::string>{Tagged(line)});
        }
        const size_t texts = TextsRead(params);
        if (texts + Count(params, "[]") == 0) continue;
        r = Reached(i, kHostile);
        ASSERT_EQ(r.calls.size(), 1u);
        const std::string args = r.calls[0].Text();
        EXPECT_EQ(Count(args, kHostileText), texts);
        EXPECT_EQ(Count(args, kHostileHex) + Count(args, ", ... (1000000 values)]"),
                  Count(params, "[]"));
    }
    EXPECT_EQ(callbacks, 18u);
    EXPECT_EQ(nulls, 13u);
    EXPECT_EQ(nullLines, kNullArgs.size());
}

// Service text as bytes mostly above 0x7F, where modified UTF-8 goes wrong: leads, continuations,
// surrogates, the two-byte zero, four-byte forms whole and cut off.
std::string RandomText(std::mt19937& random) {
    static const char* const kPieces[] = {"\xC0\x80",         "\xED\xA0\xBD",     "\xED\xB8\x80",
                                          "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF", "\xE0\x80",
                                          "\xF0\x9F",         "\xC3\xA9",         "a"};
    std::string text;
    for (int n = std::uniform_int_distribution<int>(0, 64)(random); n > 0; --n) {
        if (random() % 3 == 0) {
            text += kPieces[random() % (sizeof(kPieces) / sizeof(kPieces[0]))];
        } else {
            text.push_back(static_cast<char>(1 + random() % 255));
        }
    }
    return text;
}

// The services may answer anything: boundary integers, a megabyte that is not UTF-8 (a four-byte
// sequence, a cut-off one, then bytes never valid), a NUL, vectors of a million values or none,
// and random texts. Every native still answers, without a Java exception or a JNI warning, and
// every text it hands to Java (the agent checks each) is valid modified UTF-8.
TEST(Faults, ExtremeServiceAnswersNeverBreakACall) {
    std::string huge(1 << 20, '\xff');
    huge.replace(0, 5, "\xF0\x9F\x98\x80\xC0");
    const struct {
        int64_t code, int32, int64;  // code: of callbacks; 0 lets the natives use the rest
        std::string text;            // empty with random: a random text per operation
        std::vector<int32_t> values;
        bool random;
    } profiles[] = {
        {0, INT32_MAX, INT64_MAX, huge, std::vector<int32_t>(1000000, INT32_MAX), false},
        {INT32_MIN, INT32_MIN, INT64_MIN, std::string("\0", 1), {INT32_MIN}, false},
        {0, 0, 0, "", {}, false},
        {0, 1, 1, "", {1}, true},
    };
    const auto seed = static_cast<uint32_t>(std::random_device{}());
    std::mt19937 random(seed);
    std::printf("texts: random service texts from seed %u\n", seed);
    const long checkedBefore = kxtest::LibraryTextsChecked();
    for (const auto& x : profiles) {
        for (int round = 0; round < (x.random ? 200 : 1); ++round) {
            SCOPED_TRACE(x.int32);
            HealthyDevice();
            ProgramEvery({},
                         [&](const simdevice::OperationInfo& op, size_t i, int) -> Answer::Value {
                             const Type type = op.answers[i].type;
                             auto integer = [](int64_t v) {
                                 return Answer::Value(std::in_place_type<int64_t>, v);
                             };
                             if (op.callback && i == 0 && type != Type::kBool)
                                 return integer(x.code);
                             if (type == Type::kBool) return x.int32 != 0;
                             if (type == Type::kString)
                                 return x.random ? RandomText(random) : x.text;
                             if (type == Type::kInt32Vector) return x.values;
                             return integer(type == Type::kInt64 ? x.int64 : x.int32);
                         });
            const std::string warnings = StdoutOf([] {
                for (int i = 0; i < kMethods; ++i) CallNative(i);  // fails on a Java exception
            });
            EXPECT_EQ(warnings.find("WARNING"), std::string::npos) << warnings.substr(0, 4000);
        }
    }
    const long checked = kxtest::LibraryTextsChecked() - checkedBefore;
    std::printf("texts: %ld texts the library handed to Java checked, %zu invalid\n", checked,
                kxtest::InvalidLibraryTexts().size());
    EXPECT_GE(checked, 203 * 13) << "the 13 String natives, every profile and round";
    EXPECT_EQ(kxtest::InvalidLibraryTexts(), std::vector<std::string>{});
}

// An argument of every type the natives take, made once outside the frames under test.
struct Args {
    jstring text;
    jintArray ints;
    jbyteArray bytes;
    jobject model;
    operator jint() const { return 1; }
    operator jboolean() const { return JNI_TRUE; }
    operator jstring() const { return text; }
    operator jintArray() const { return ints; }
    operator jbyteArray() const { return bytes; }
    operator jobject() const { return model; }
};

struct Native {
    const char* name;
    bool takesReferences;
    bool takesArrays;
    jobject (*call)(const Args& args);  // the Java result, null when primitive
};

template <auto F, typename R, typename... P>
Native Bind(const char* name, R (*)(JNIEnv*, jobject, P...)) {
    return {name, (std::is_pointer_v<P> || ...),
            (std::is_same_v<P, jintArray> || ...) || (std::is_same_v<P, jbyteArray> || ...),
            [](const Args& a) -> jobject {
                R result = F(kxtest::Env(), kxtest::Manager(), static_cast<P>(a)...);
                if constexpr (std::is_pointer_v<R>) return result;
                return nullptr;
            }};
}

const std::vector<Native> kNatives = {
#define NATIVE(f) Bind<f>(#f, f),
#include "natives.inc"  // NATIVE(f) for every f of native_methods.h, made by CMake
#undef NATIVE
};

class Leaks : public testing::Test {
  protected:
    void SetUp() override {
        HealthyDevice();
        const jchar hostile[] = {'a', 0x0000, 'b', 0xD83D, 0xDE00, 'c'};
        mValue = kxtest::NewModel("BigDataValue");
        kxtest::SetStringField(mValue, "mDescription", nullptr);
        jobject operation = kxtest::NewModel("BigDataOperation");
        mArgs = {{kxtest::Env()->NewString(hostile, 6), kxtest::JInts({3, 1, 4, 1, 5, 9, 2, 6}),
                  kxtest::JBytes({0x00, 0x7f, 0xa5, 0xff}), operation},
                 {kxtest::JStr(""), kxtest::JInts({}), kxtest::JBytes({}), operation},
                 {nullptr, nullptr, nullptr, nullptr}};
    }
    // Every native (or those that take arrays) with every argument set, times times each in a
    // frame of capacity 4; with check, the calls must leave the thread's local references as they
    // found them. Whatever they borrow from Java must be given back as the library's rules say.
    void Run(int times, bool check, bool arraysOnly = false) {
        for (const Native& native : kNatives) {
            if (arraysOnly && !native.takesArrays) continue;
            for (Args args : mArgs) {
                if (args.model && !std::strcmp(native.name, "SendBigDataValue"))
                    args.model = mValue;
                kxtest::Env()->PushLocalFrame(4);
                const long before = check ? kxtest::LocalReferences() : 0;
                for (int i = 0; i < times; ++i) {
                    if (jobject result = native.call(args)) kxtest::Env()->DeleteLocalRef(result);
                }
                const long left = check ? kxtest::LocalReferences() - before : 0;
                kxtest::Env()->PopLocalFrame(nullptr);
                EXPECT_EQ(left, 0)
                    << native.name << " left local references after " << times << " calls";
                kxtest::NoLoanFaults(native.name);
                kxtest::Forget();
                if (!native.takesReferences) break;
            }
        }
    }

    void JudgeHeap(bool arraysOnly);

    jobject mValue;
    std::vector<Args> mArgs;
};

TEST_F(Leaks, NativesLeaveNothingInTheCallersLocalFrame) {
    ASSERT_EQ(kNatives.size(), static_cast<size_t>(kMethods));
    // The count must see references made in a pushed frame, or this test could not fail.
    kxtest::Env()->PushLocalFrame(4);
    const long before = kxtest::LocalReferences();
    for (int i = 0; i < 80; ++i) kxtest::Env()->NewStringUTF("canary");
    const long made = kxtest::LocalReferences() - before;
    kxtest::Env()->PopLocalFrame(nullptr);
    ASSERT_GE(before, 0) << "the JNI agent cannot count local references";
    ASSERT_EQ(made, 80);
    Run(100, true);
}

// A steady leak grows the heap in every batch of rounds. The first batch settles (first calls, the
// JIT); then each batch's growth is measured and their median judged, so that neither a batch in
// which something else was freed nor one in which another thread grew hides or fakes a leak.
void Leaks::JudgeHeap(bool arraysOnly) {
    constexpr int kBatches = 5;
    for (int i = 0; i < kRounds; ++i) Run(1, false, arraysOnly);
    std::vector<long long> growth;
    for (int b = 0; b < kBatches; ++b) {
        const size_t before = HeapInUse();
        for (int i = 0; i < kRounds; ++i) Run(1, false, arraysOnly);
        growth.push_back(static_cast<long long>(HeapInUse()) - static_cast<long long>(before));
    }
    std::string shown;
    for (long long g : growth) shown += (shown.empty() ? "" : ", ") + std::to_string(g);
    std::vector<long long> sorted = growth;
    std::sort(sorted.begin(), sorted.end());
    const long long median = sorted[kBatches / 2];
    std::printf("leaks: %d rounds of %s per batch, heap growth per batch %s bytes (median %lld)\n",
                kRounds, arraysOnly ? "the natives that take arrays" : "every native",
                shown.c_str(), median);
    // Less than one byte per round: a single call that keeps any allocation would exceed it.
    EXPECT_LT(median, kRounds) << "the heap grows batch after batch: " << shown;
}

TEST_F(Leaks, NativeHeapDoesNotGrowOverRepeatedRounds) { JudgeHeap(false); }

// The same for the natives that borrow array elements, on their own: nothing else's noise.
TEST_F(Leaks, NativeHeapDoesNotGrowWhenTheArrayNativesRepeatAlone) { JudgeHeap(true); }

}  // namespace
}  // namespace reliability
