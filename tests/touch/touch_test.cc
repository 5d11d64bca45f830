// Touch-panel pressure calibration, capacitance tests, touch keys, feature configuration, crown.
#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <thread>
#include <tuple>

#include "device_test.h"

namespace kxtest {
namespace {

using simdevice::Service;

class Touch : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        Reconnect();  // clears the pressure-support cache
    }
};

bool Supported() { return CallBool("isTpPressureSupportNative", "()Z"); }

std::atomic<uint8_t>* Cache() {
    return static_cast<std::atomic<uint8_t>*>(
        LibrarySymbol("_ZN5kxmmi24g_tpPressureSupportCacheE"));
}

TEST_F(Touch, PressureSupportIsCachedUntilTheNextConnectReleaseOrDeath) {
    const std::string asked = "touchscreen.isTpPressureSupported()";
    const LogLine noHandle = Line(E, "IsTpPressureSupported false, g_kxTouchScreen is null");
    EXPECT_TRUE(Supported());
    Answer(Service::kTouchscreen, "isTpPressureSupported", "false");
    EXPECT_TRUE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{Line(D, "IsTpPressureSupported true")});
    EXPECT_EQ(Calls(), Texts{asked});

    Connect();
    TakeLogs();
    EXPECT_FALSE(Supported());  // asked again: a false answer is neither cached nor logged
    EXPECT_FALSE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{});
    EXPECT_EQ(Calls(), (Texts{asked, asked}));

    Answer(Service::kTouchscreen, "isTpPressureSupported", "true");
    EXPECT_TRUE(Supported());
    Release();
    TakeLogs();
    EXPECT_FALSE(Supported());
    // A cached answer is read through its lowest bit, without looking at the handle.
    std::atomic<uint8_t>* cache = Cache();
    ASSERT_NE(cache, nullptr);
    cache->store(3);
    EXPECT_TRUE(Supported());
    cache->store(2);
    EXPECT_FALSE(Supported());
    EXPECT_EQ(TakeLogs(), (Lines{noHandle, noHandle}));

    Connect();
    EXPECT_TRUE(Supported());
    ASSERT_TRUE(Device().Kill(Service::kSensors));
    WaitIdle();
    TakeLogs();
    EXPECT_FALSE(Supported());
    EXPECT_EQ(TakeLogs(), Lines{noHandle});
}

// A query that took its handle before a connect or release pass began must not cache its true
// answer after the pass. Here the pass runs at the query's worst moment: between the service's
// answer and the cache.
TEST_F(Touch, AnswerOfAQueryThatOverlapsAPassIsNotCached) {
    for (void (*pass)() : {&Release, &Connect}) {
        Connect();
        Answer(Service::kTouchscreen, "isTpPressureSupported", "true");
        OnLogLine([pass](const LogLine& line) {
            if (!(line == Line(D, "IsTpPressureSupported true"))) return;
            OnLogLine(nullptr);
            std::thread(pass).join();  // on a thread of its own, as the event callbacks run it
        });
        EXPECT_TRUE(Supported());  // the service did answer true
        OnLogLine(nullptr);
        Answer(Service::kTouchscreen, "isTpPressureSupported", "false");
        EXPECT_FALSE(Supported()) << "a true answer older than the pass stayed cached";
    }
}

// The same left to chance: two Java threads query while connect and release passes alternate.
// Once a release has returned and every query that overlapped it has finished, nothing may be
// cached, since every handle is empty.
TEST_F(Touch, QueriesRacingWithPassesLeaveNoStaleAnswer) {
    std::atomic<uint8_t>* cache = Cache();
    ASSERT_NE(cache, nullptr);
    Answer(Service::kTouchscreen, "isTpPressureSupported", "true");
    std::atomic<bool> stop{false};
    std::atomic<long> queries[2] = {{0}, {0}};
    std::vector<std::thread> queriers;
    for (std::atomic<long>& done : queries) {
        queriers.emplace_back([&] {
            while (!stop) {
                Supported();
                ++done;
            }
            Vm()->DetachCurrentThread();
        });
    }
    long rounds = 0, stale = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    for (; std::chrono::steady_clock::now() < end; ++rounds) {
        Connect();
        Release();
        // Two more queries on each thread: the one under way when the pass ended has finished.
        const long after[2] = {queries[0] + 2, queries[1] + 2};
        while (queries[0] < after[0] || queries[1] < after[1]) std::this_thread::yield();
        stale += cache->load() & 1;
        if (rounds % 256 == 0) {
            Forget();
        }
    }
    stop = true;
    for (std::thread& t : queriers) t.join();
    std::printf("support race: %ld rounds, %ld stale answers cached\n", rounds, stale);
    EXPECT_EQ(stale, 0);
}

TEST_F(Touch, WaitingTimeIsReducedIn64BitsKeepingItsSign) {
    const std::pair<int64_t, int64_t> cases[] = {
        {144000, 0},        {143999, 143999}, {144006, 6},        {-144000, 0},
        {-143999, -143999}, {-144006, -6},    {INT64_MAX, 55807}, {INT64_MIN, -55808}};
    for (const auto& [answer, reduced] : cases) {
        Check(Bind("getTpPressureWaitingTimeNative", "()J"), std::to_string(answer),
              "touchscreen.getTpPressureWaitingTime()", std::to_string(reduced), {});
    }
}

TEST_F(Touch, ExternCalibrationCopiesTheArrayAndReducesIn32BitsOnlyUnderTestCode11) {
    const std::tuple<int, int32_t, int32_t> cases[] = {
        {11, 288001, 1},           {10, 288001, 288001},   {11, -144006, -6},
        {11, 143999, 143999},      {11, INT32_MAX, 11647}, {11, INT32_MIN, -11648},
        {12, INT32_MIN, INT32_MIN}};
    for (const auto& [testCtrl, answer, result] : cases) {
        const bool empty = testCtrl == 10;  // an empty array still reaches the service
        const std::string ctrl = std::to_string(testCtrl), ret = std::to_string(result);
        Check(Bind("setApPressureCalibExternNative", "(II[I)I", 4, testCtrl,
                   JInts(empty ? std::vector<int32_t>{} : std::vector{7, -8, INT32_MAX})),
              std::to_string(answer),
              "sensors.setApPressureCalibrationExtern(4, " + ctrl + ", [" +
                  (empty ? "" : "7, -8, 2147483647") + "])",
              ret,
              {Line(D, std::string("SetApPressureCalibrationExtern rawDataLength: ") +
                           (empty ? "0" : "3")),
               Line(D, "SetApPressureCalibrationExtern, sensorId: 4, testCtrl: " + ctrl +
                           ", result: " + ret)});
    }
}

// The operations are the method's name with the type appended.
TEST_F(Touch, TypeSelectsTheOperationAndAnyOtherTypeCallsNothing) {
    const std::pair<std::string, int> methods[] = {{"controlTpPressureCalibMode", 2},
                                                   {"setTpPressureCalibration", -1},
                                                   {"setTpPressureVerification", 256}};
    for (bool answer : {true, false}) {
        for (const auto& [name, unknown] : methods) {
            for (int type : {0, 1, unknown}) {
                SCOPED_TRACE(name + " type " + std::to_string(type));
                std::string op = name + std::to_string(type);
                bool indexed = name[0] == 's', known = type == 0 || type == 1;
                if (known) Answer(Service::kTouchscreen, op.c_str(), answer ? "true" : "false");
                EXPECT_EQ(CallBool((name + "Native").c_str(), indexed ? "(II)Z" : "(I)Z", type, 7),
                          answer && known);
                EXPECT_EQ(
                    TakeLogs(),
                    Lines{Line(D, char(std::toupper(name[0])) + name.substr(1) + ", type: " +
                                      std::to_string(type) + (indexed ? ", index: 7" : "") +
                                      ", isOperationSuccess: " + (answer && known ? "1" : "0"))});
                EXPECT_EQ(Calls(),
                          known ? Texts{"touchscreen." + op + (indexed ? "(7)" : "()")} : Texts{});
            }
        }
    }
}

TEST_F(Touch, ValueAnswersPassThroughWithTheirArgumentsInJavaOrder) {
    Check(Bind("getTpPressureStatusNative", "()I"), "-5", "touchscreen.getTpPressureStatus()", "-5",
          {Line(D, "GetTpPressureStatus, result: -5")});
    Check(Bind("getTpPressureVerifyResultNative", "(I)I", 12), "3",
          "touchscreen.getTpPressureVerifyResult(12)", "3",
          {Line(D, "GetTpPressureVerifyResult, result: 3")});
    Check(Bind("checkTpPressureCalibPositionNative", "(III)I", 1, -2, 3), "-1",
          "touchscreen.checkTpPressureCalibPosition(1, -2, 3)", "-1",
          {Line(D, "CheckTpPressureCalibPosition, result: -1")});
    Check(Bind("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 9,
               JStr("glove=on,\xc3\xa9")),
          "-22", "touchscreen.setTouchScreenFeatureConfig(9, \"glove=on,\xc3\xa9\")", "-22",
          {Line(D, "SetTouchScreenFeatureConfig, feature: 9, config: glove=on,\xc3\xa9")});
    Check(Bind("getTouchKeySupportFlagNative", "()I"), "-3",
          "otherdevices.getTouchKeySupportState(0)", "-3",
          {Line(I, "GetTouchKeySupportState, state: -3")});
}

TEST_F(Touch, CapacitanceTestsWriteTheServiceTextToTheirFieldWhateverTheCode) {
    const std::tuple<const char*, const char*, const char*, std::string> tests[] = {
        {"getCapacitanceTestResultNative", "GetCapacitanceTestResult", "sTpCapacitanceFailInfo",
         "touchscreen.getCapacitanceTestResult()"},
        {"getTouchKeyCapacitanceTestResultNative", "GetTouchkeyCapacitanceTestResult",
         "sTouchKeyCapacitanceFailInfo", "otherdevices.getTouchkeyCapacitanceTestResult(0)"}};
    const std::tuple<const char*, int, std::string> answers[] = {
        {R"(0,"")", 0, ""}, {R"(3,"channel 5 open")", 3, "channel 5 open"}, {"nocallback", -1, ""}};
    for (const auto& [method, function, field, call] : tests) {
        for (const auto& [answer, ret, info] : answers) {
            SetManagerStaticString(field, "stale");
            Check(Bind(method, "()I"), answer, call, std::to_string(ret),
                  {Line(I, std::string(function) + ", ret: " + std::to_string(ret) +
                               ", info: " + info)});
            EXPECT_EQ(ManagerStaticString(field), info) << call << " answering " << answer;
        }
    }
    ASSERT_TRUE(Device().Kill(Service::kPower));  // empties every handle
    WaitIdle();
    for (const auto& [method, function, field, call] : tests) {
        SetManagerStaticString(field, "stale");
        EXPECT_EQ(CallInt(method, "()I"), -1);
        EXPECT_EQ(ManagerStaticString(field), "stale");
    }
}

TEST_F(Touch, CalibrationAndCrownTurnAnyFailureIntoTheirFixedTexts) {
    const Native calibration =
        Bind("getCapacitanceCalibrateResultNative", "(I)Ljava/lang/String;", -4);
    const Native crown = Bind("getRotaryCrownSelfTestNative", "()Ljava/lang/String;");
    const std::string calibrated = "touchscreen.getCapacitanceCalibrateResult(-4)";
    const std::string turned = "touchscreen.getRotateCrownTestResult()";
    Check(calibration, R"(0,"cal done")", calibrated, "cal done", {});
    Check(calibration, R"(2,"cal done")", calibrated, "Capacitance Calibrate Failed",
          {Line(E, "GetCapacitanceCalibrateResult fail, ret: 2")});
    Check(crown, R"(true,"360 deg ok")", turned, "360 deg ok", {});
    Check(crown, R"(false,"stuck")", turned, "error", {Line(E, "GetRotateCrownTestResult fail")});
}

}  // namespace
}  // namespace kxtest
