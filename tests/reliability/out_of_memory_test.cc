// Runs in a JVM with a small heap: when the runtime cannot make a method's Java result, the method
// clears the exception, writes one error line and answers its failure value; Java never sees a
// pending exception (the harness fails a call that leaves one) or a -Xcheck:jni warning.
#include "workload.h"

namespace reliability {
namespace {

using simdevice::Answer;
using simdevice::Service;

constexpr const char* kPowerState = "(Ljava/lang/String;)Ljava/lang/String;";
constexpr const char* kAmbient = "(IIII)[I";

// Services answer more than the heap holds: 64 MB of text, a million values.
void HugeAnswers() {
    HealthyDevice();
    const std::string text(64 << 20, 'a');
    std::string error;
    ASSERT_TRUE(kxtest::Device().Program(Service::kPower, "getPowerState",
                                         Answer::Values({int64_t{0}, text}), &error))
        << error;
    ASSERT_TRUE(kxtest::Device().Program(
        Service::kSensors, "handleSensorParameter",
        Answer::Values({int64_t{0}, text, std::vector<int32_t>(1000000, 7)}), &error))
        << error;
}

// Fills the Java heap until not even a small array fits; the arrays stay until the result is
// deleted.
std::vector<jobject> FillHeap() {
    JNIEnv* env = kxtest::Env();
    std::vector<jobject> held;
    for (jsize size = 1 << 20; size >= 8;) {
        jbyteArray block = env->NewByteArray(size);
        if (block == nullptr) {
            env->ExceptionClear();
            size /= 2;
            continue;
        }
        held.push_back(env->NewGlobalRef(block));
        env->DeleteLocalRef(block);
    }
    return held;
}

TEST(OutOfMemory, AStringResultTooLargeForTheHeapGivesAnEmptyString) {
    HugeAnswers();
    std::optional<std::string> result;
    const std::string warnings = StdoutOf([&] {
        result = kxtest::CallString("getPowerStateNative", kPowerState, kxtest::JStr("battery"));
    });
    EXPECT_EQ(result, "");
    EXPECT_EQ(TakeErrors(),
              std::vector<std::string>{Tagged("GetPowerState fail, NewStringUTF failed")});
    EXPECT_EQ(warnings.find("WARNING"), std::string::npos) << warnings;
}

TEST(OutOfMemory, WithTheHeapFullTheResultsAreNullWithNothingPending) {
    HugeAnswers();
    jstring query = kxtest::JStr("battery");
    std::vector<jobject> held = FillHeap();
    std::optional<std::string> text;
    std::optional<std::vector<int32_t>> values;
    const std::string warnings = StdoutOf([&] {
        text = kxtest::CallString("getPowerStateNative", kPowerState, query);
        values = kxtest::CallIntArray("handleAmbientLightParameterNative", kAmbient, 1, 2, 3, 4);
    });
    for (jobject block : held) kxtest::Env()->DeleteGlobalRef(block);
    EXPECT_FALSE(held.empty());
    EXPECT_EQ(text, std::nullopt) << "not even an empty string fits";
    EXPECT_EQ(values, std::nullopt);
    EXPECT_EQ(TakeErrors(), (std::vector<std::string>{
                                Tagged("GetPowerState fail, NewStringUTF failed"),
                                Tagged("HandleAmbientLightParameter fail, NewIntArray failed")}));
    EXPECT_EQ(warnings.find("WARNING"), std::string::npos) << warnings;
}

}  // namespace
}  // namespace reliability
