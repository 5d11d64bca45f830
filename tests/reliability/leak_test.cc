// Long runs of every native, also with null, empty and hostile arguments: the natives must leave no
// JNI local reference behind in their caller's frame, and the native heap must not grow.
//
// The natives are called directly, with this thread's JNI environment, as a native caller that
// never returns to Java would call them: whatever a call leaves in the frame then piles up, and
// the JVM's -Xcheck:jni (which the harness turns on) reports a frame that outgrows its capacity.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "native_methods.h"
#include "workload.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KXTEST_SANITIZED 1
// From the sanitizer runtime's allocator interface (GCC ships the runtime but not its header).
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace reliability {
namespace {

// Bytes of native heap in use, as the allocator in charge counts them.
size_t HeapInUse() {
#ifdef KXTEST_SANITIZED
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

// Arguments made once, outside the frames under test.
struct Args {
    jclass manager;
    jstring text;
    jstring hostile;  // with U+0000 and U+1F600
    jintArray raw;
    jintArray noInts;
    jbyteArray signature;
    jbyteArray noBytes;
    jobject value;
    jobject operation;
};

using Call = std::function<jobject(JNIEnv*, const Args&)>;
struct Row {
    const char* what;
    Call call;  // returns the call's Java result, or null for a primitive one
};

#define PRIM(expr)                            \
    [](JNIEnv* e, const Args& a) -> jobject { \
        (void)(expr);                         \
        return nullptr;                       \
    }
#define OBJ(expr) [](JNIEnv* e, const Args& a) -> jobject { return (expr); }

std::vector<Row> Rows() {
    return {
        {"setApPressureCalibExtern",
         PRIM(SetApPressureCalibrationExtern(e, a.manager, 1, 11, a.raw))},
        {"setApPressureCalibExtern empty",
         PRIM(SetApPressureCalibrationExtern(e, a.manager, 1, 10, a.noInts))},
        {"setApPressureCalibExtern null",
         PRIM(SetApPressureCalibrationExtern(e, a.manager, 1, 10, nullptr))},
        {"isTpPressureSupport", PRIM(IsTpPressureSupported(e, a.manager))},
        {"getTpPressureStatus", PRIM(GetTpPressureStatus(e, a.manager))},
        {"getTpPressureVerifyResult", PRIM(GetTpPressureVerifyResult(e, a.manager, 1))},
        {"controlTpPressureCalibMode", PRIM(ControlTpPressureCalibMode(e, a.manager, 1))},
        {"setTpPressureCalibration", PRIM(SetTpPressureCalibration(e, a.manager, 0, 2))},
        {"setTpPressureVerification", PRIM(SetTpPressureVerification(e, a.manager, 1, 2))},
        {"getTpPressureWaitingTime", PRIM(GetTpPressureWaitingTime(e, a.manager))},
        {"checkTpPressureCalibPosition", PRIM(CheckTpPressureCalibPosition(e, a.manager, 1, 2, 3))},
        {"isFactoryVersion", PRIM(IsFactoryVersion(e, a.manager))},
        {"getManufactureFileName", OBJ(GetManufactureFileName(e, a.manager))},
        {"releaseFactoryHidlResource", PRIM(ReleaseFactoryHidlResource(e, a.manager))},
        {"setMmiResult", PRIM(SetMmiTestResult(e, a.manager, 1, 2))},
        {"getCapacitanceTestResult", PRIM(GetCapacitanceTestResult(e, a.manager))},
        {"getTouchKeyCapacitanceTestResult", PRIM(GetTouchkeyCapacitanceTestResult(e, a.manager))},
        {"getTouchKeySupportFlag", PRIM(GetTouchKeySupportState(e, a.manager))},
        {"getCapacitanceCalibrateResult", OBJ(GetCapacitanceCalibrateResult(e, a.manager, 1))},
        {"getSensorCalibrateDelayTime", PRIM(GetSensorCalibrateDelayTime(e, a.manager, 1))},
        {"getSensorSelfTestDelayTime", PRIM(GetSensorSelfTestDelayTime(e, a.manager, 1))},
        {"startSensorCalibrate", PRIM(StartSensorCalibrate(e, a.manager, 1, 2))},
        {"startSensorSelfTest", PRIM(StartSensorSelfTest(e, a.manager, 1, 2))},
        {"getSensorCalibrateResult", PRIM(GetSensorCalibrateResult(e, a.manager, 1))},
        {"getSensorSelfTestResult", PRIM(GetSensorSelfTestResult(e, a.manager, 1))},
        {"setLightBrightness", PRIM(SetLightBrightness(e, a.manager, 1, 255))},
        {"getBsn", OBJ(GetBsn(e, a.manager))},
        {"getPowerState", OBJ(GetPowerState(e, a.manager, a.text))},
        {"getPowerState hostile", OBJ(GetPowerState(e, a.manager, a.hostile))},
        {"getPowerState null", OBJ(GetPowerState(e, a.manager, nullptr))},
        {"getSensorCalibrateType", OBJ(GetSensorCalibrateType(e, a.manager, 1))},
        {"sendBigDataOperation", PRIM(SendBigDataOperation(e, a.manager, a.operation))},
        {"sendBigDataOperation null", PRIM(SendBigDataOperation(e, a.manager, nullptr))},
        {"sendBigDataValue", PRIM(SendBigDataValue(e, a.manager, a.value))},
        {"sendBigDataValue null", PRIM(SendBigDataValue(e, a.manager, nullptr))},
        {"checkUsbSpeed", PRIM(CheckUsbSpeed(e, a.manager, a.hostile))},
        {"checkUsbSpeed null", PRIM(CheckUsbSpeed(e, a.manager, nullptr))},
        {"getMmiAutoStartFlag", OBJ(GetMmiAutoStartFlag(e, a.manager))},
        {"disableMmiAutoStart", PRIM(SetMMIAutoStartFlag(e, a.manager, a.text))},
        {"disableMmiAutoStart null", PRIM(SetMMIAutoStartFlag(e, a.manager, nullptr))},
        {"getCompassRawValueLimit", PRIM(GetCompassRawValueLimit(e, a.manager))},
        {"getManufactureStationFlag", OBJ(GetManufactureStationFlag(e, a.manager, 3))},
        {"setTestCycle", PRIM(SetTestCycle(e, a.manager, 7, 3))},
        {"getManufactureMode", PRIM(GetManufactureMode(e, a.manager))},
        {"setProximitySensorExternalIrMode", PRIM(SetPsExternalIrMode(e, a.manager, 1))},
        {"setPowerState", PRIM(SetPowerState(e, a.manager, a.text, a.hostile))},
        {"setPowerState null", PRIM(SetPowerState(e, a.manager, a.text, nullptr))},
        {"getMmiDeviceFeaturesCheckResult", PRIM(GetMmiDeviceFeaturesCheckResult(e, a.manager, 1))},
        {"getOeminfo", OBJ(GetOeminfo(e, a.manager, 143, 64, 0))},
        {"sensorActivate", PRIM(SensorActivate(e, a.manager, 5, JNI_TRUE, 200))},
        {"getFlickerFrequency", PRIM(GetFlickerFrequency(e, a.manager, 1))},
        {"handleSensorParameter", OBJ(HandleSensorParameter(e, a.manager, 1, 2, 3, 4))},
        {"handleAmbientLightParameter", OBJ(HandleAmbientLightParameter(e, a.manager, 1, 2, 3, 4))},
        {"setTouchScreenFeatureConfig",
         PRIM(SetTouchScreenFeatureConfig(e, a.manager, 1, a.hostile))},
        {"setTouchScreenFeatureConfig null",
         PRIM(SetTouchScreenFeatureConfig(e, a.manager, 1, nullptr))},
        {"getScreenFpsConfig", OBJ(GetScreenFpsConfig(e, a.manager))},
        {"setScreenFps", PRIM(SetScreenFps(e, a.manager, 1))},
        {"getVerifySignatureResult", PRIM(GetVerifySignatureResult(e, a.manager, a.signature))},
        {"getVerifySignatureResult empty", PRIM(GetVerifySignatureResult(e, a.manager, a.noBytes))},
        {"getVerifySignatureResult null", PRIM(GetVerifySignatureResult(e, a.manager, nullptr))},
        {"setMockCardTestMode", PRIM(SetZqCardTestMode(e, a.manager, a.hostile))},
        {"setMockCardTestMode null", PRIM(SetZqCardTestMode(e, a.manager, nullptr))},
        {"getMockCardTestResult", OBJ(GetZqCardTestResult(e, a.manager))},
        {"getRotaryCrownSelfTest", OBJ(GetRotateCrownTestResult(e, a.manager))},
        {"executeHighTemperInterceptCmd",
         PRIM(ExecuteHighTemperInterceptCmd(e, a.manager, a.hostile, a.text))},
        {"executeHighTemperInterceptCmd null",
         PRIM(ExecuteHighTemperInterceptCmd(e, a.manager, nullptr, a.text))},
    };
}

#undef PRIM
#undef OBJ

Args MakeArgs() {
    JNIEnv* env = kxtest::Env();
    const jchar units[] = {'a', 0x0000, 'b', 0xD83D, 0xDE00, 'c'};
    const std::vector<int32_t> raw = {3, 1, 4, 1, 5, 9, 2, 6};
    jobject value = kxtest::NewModel("BigDataValue");
    kxtest::SetStringField(value, "mResult", "pass");
    kxtest::SetStringField(value, "mDescription", nullptr);
    return Args{kxtest::Manager(),
                kxtest::JStr("battery"),
                env->NewString(units, 6),
                kxtest::JInts(raw),
                kxtest::JInts({}),
                kxtest::JBytes({0x00, 0x7f, 0xa5, 0xff}),
                kxtest::JBytes({}),
                value,
                kxtest::NewModel("BigDataOperation")};
}

constexpr const char* kLocalRefWarning = "JNI local refs";

void RunRow(JNIEnv* env, const Row& row, const Args& args, int times) {
    for (int i = 0; i < times; ++i) {
        jobject result = row.call(env, args);
        if (result != nullptr) env->DeleteLocalRef(result);
    }
}

class Leaks : public testing::Test {
  protected:
    void SetUp() override {
        HealthyDevice();
        kxtest::Device().TakeCalls();
    }
    void TearDown() override {
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
    }
};

TEST_F(Leaks, NativesLeaveNothingInTheCallersLocalFrame) {
    JNIEnv* env = kxtest::Env();
    const Args args = MakeArgs();
    StdoutCapture capture;

    // The JVM must see a frame that outgrows its capacity, or this test could not fail.
    env->PushLocalFrame(4);
    for (int i = 0; i < 80; ++i) env->NewStringUTF("canary");
    env->PopLocalFrame(nullptr);
    ASSERT_NE(capture.Take().find(kLocalRefWarning), std::string::npos)
        << "the JVM reports no outgrown local frame; is -Xcheck:jni on?";

    // Each row runs more times than a frame's warning margin: one reference left per call shows.
    for (const Row& row : Rows()) {
        env->PushLocalFrame(4);
        RunRow(env, row, args, 100);
        env->PopLocalFrame(nullptr);
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
        std::string output = capture.Take();
        EXPECT_EQ(output.find(kLocalRefWarning), std::string::npos) << row.what << ":\n" << output;
    }
}

TEST_F(Leaks, NativeHeapDoesNotGrowOverRepeatedRounds) {
#ifdef KXTEST_SANITIZED
    constexpr int kRounds = 300;  // per batch; every call costs many times more here
#else
    constexpr int kRounds = 5000;
#endif
    JNIEnv* env = kxtest::Env();
    const Args args = MakeArgs();
    const std::vector<Row> rows = Rows();
    auto round = [&] {
        env->PushLocalFrame(16);
        for (const Row& row : rows) RunRow(env, row, args, 1);
        env->PopLocalFrame(nullptr);
        // The log capture and the call record keep what they are given until taken.
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
    };
    for (int i = 0; i < kRounds; ++i) round();  // first-use allocations settle

    // A leak grows the heap in every batch; other threads of the process may grow it in one.
    std::vector<long long> growth;
    for (int batch = 0; batch < 3; ++batch) {
        size_t before = HeapInUse();
        for (int i = 0; i < kRounds; ++i) round();
        growth.push_back(static_cast<long long>(HeapInUse()) - static_cast<long long>(before));
    }
    const long long least = *std::min_element(growth.begin(), growth.end());
    std::printf(
        "leaks: %zu calls per round, %d rounds per batch, heap growth per batch %lld, "
        "%lld, %lld bytes\n",
        rows.size(), kRounds, growth[0], growth[1], growth[2]);
    // Less than one byte per round: a single call that keeps any allocation would exceed it.
    EXPECT_LT(least, kRounds) << "the native heap grows with every batch of calls";
}

}  // namespace
}  // namespace reliability
