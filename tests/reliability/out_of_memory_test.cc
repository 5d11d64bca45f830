// Runs in a JVM with a small heap: when the runtime cannot make a method's Java result, the method
// clears the exception, writes one error line and answers its failure value; Java never sees a
// pending exception (the harness fails a call that leaves one) or a -Xcheck:jni warning.
#include "workload.h"

namespace reliability {
namespace {

using simdevice::Answer;
using simdevice::Service;

TEST(OutOfMemory, ResultsTheHeapCannotHoldAreEmptyOrNullWithNothingPending) {
    // Services answer more than the heap holds: 64 MB of text, a million values.
    HealthyDevice();
    const std::string text(64 << 20, 'a');
    ASSERT_TRUE(kxtest::Device().Program(Service::kPower, "getPowerState",
                                         Answer::Values({int64_t{0}, text}), nullptr));
    ASSERT_TRUE(kxtest::Device().Program(
        Service::kSensors, "handleSensorParameter",
        Answer::Values({int64_t{0}, text, std::vector<int32_t>(1000000, 7)}), nullptr));
    const std::string failed = Tagged("GetPowerState fail, NewStringUTF failed");
    std::optional<std::string> tooLarge, heapFull;
    std::optional<std::vector<int32_t>> values;
    std::vector<jobject> held;
    jstring query = kxtest::JStr("battery");  // made while the heap has room
    auto powerState = [query] {
        return kxtest::CallString("getPowerStateNative", "(Ljava/lang/String;)Ljava/lang/String;",
                                  query);
    };
    const std::string warnings = StdoutOf([&] {
        tooLarge = powerState();
        EXPECT_EQ(TakeErrors(), std::vector<std::string>{failed});
        // Then the heap filled until not even a small array fits.
        JNIEnv* env = kxtest::Env();
        for (jsize size = 1 << 20; size >= 8;) {
            if (jbyteArray block = env->NewByteArray(size)) {
                held.push_back(env->NewGlobalRef(block));
                env->DeleteLocalRef(block);
            } else {
                env->ExceptionClear();
                size /= 2;
            }
        }
        heapFull = powerState();
        values = kxtest::CallIntArray("handleAmbientLightParameterNative", "(IIII)[I", 1, 2, 3, 4);
        for (jobject block : held) env->DeleteGlobalRef(block);
    });
    EXPECT_EQ(tooLarge, "");
    EXPECT_FALSE(held.empty());
    EXPECT_EQ(heapFull, std::nullopt) << "not even an empty string fits";
    EXPECT_EQ(values, std::nullopt);
    EXPECT_EQ(TakeErrors(),
              (std::vector<std::string>{
                  failed, Tagged("HandleAmbientLightParameter fail, NewIntArray failed")}));
    EXPECT_EQ(warnings.find("WARNING"), std::string::npos) << warnings;
}

}  // namespace
}  // namespace reliability
