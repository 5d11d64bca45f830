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
using Lines = std::vector<LogLine>;
using Texts = std::vector<std::string>;

class Touch : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        Connect();  // clears the pressure-support cache
        TakeLogs();
        Device().TakeCalls();
    }
    static Texts Calls() { return DeviceTest::Calls(true); }
};

bool Supported() { return CallBool("isTpPressureSupportNative", "()Z"); }

TEST_F(Touch, PressureSupportIsCachedUntilTheNextConnectReleaseOrDeath) {
    const std::string asked = "touchscreen.isTpPressureSupported()@17";
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
    auto* cache =
        static_cast<std::atomic<uint8_t>*>(LibrarySymbol("_ZN5kxmmi24g_tpPressureSupportCacheE"));
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
    auto* cache =
        static_cast<std::atomic<uint8_t>*>(LibrarySymbol("_ZN5kxmmi24g_tpPressureSupportCacheE"));
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
            TakeLogs();
            Device().TakeCalls();
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
        SCOPED_TRACE(answer);
        Answer(Service::kTouchscreen, "getTpPressureWaitingTime", std::to_string(answer));
        EXPECT_EQ(CallLong("getTpPressureWaitingTimeNative", "()J"), reduced);
        EXPECT_EQ(TakeLogs(), Lines{});
        EXPECT_EQ(Calls(), Texts{"touchscreen.getTpPressureWaitingTime()@16"});
    }
}

TEST_F(Touch, ExternCalibrationCopiesTheArrayAndReducesIn32BitsOnlyUnderTestCode11) {
    const std::tuple<int, int32_t, int32_t> cases[] = {
        {11, 288001, 1},           {10, 288001, 288001},   {11, -144006, -6},
        {11, 143999, 143999},      {11, INT32_MAX, 11647}, {11, INT32_MIN, -11648},
        {12, INT32_MIN, INT32_MIN}};
    for (const auto& [testCtrl, answer, result] : cases) {
        SCOPED_TRACE(answer);
        bool empty = testCtrl == 10;  // an empty array still reaches the service
        Answer(Service::kSensors, "setApPressureCalibrationExtern", std::to_string(answer));
        EXPECT_EQ(CallInt("setApPressureCalibExternNative", "(II[I)I", 4, testCtrl,
                          JInts(empty ? std::vector<int32_t>{} : std::vector{7, -8, INT32_MAX})),
                  result);
        std::string ctrl = std::to_string(testCtrl);
        EXPECT_EQ(TakeLogs(),
                  (Lines{Line(D, std::string("SetApPressureCalibrationExtern rawDataLength: ") +
                                     (empty ? "0" : "3")),
                         Line(D, "SetApPressureCalibrationExtern, sensorId: 4, testCtrl: " + ctrl +
                                     ", result: " + std::to_string(result))}));
        EXPECT_EQ(Calls(), Texts{"sensors.setApPressureCalibrationExtern(4, " + ctrl + ", [" +
                                 (empty ? "" : "7, -8, 2147483647") + "])@21"});
    }
}

// The operations are the method's name with the type appended, at consecutive positions.
TEST_F(Touch, TypeSelectsTheOperationAndAnyOtherTypeCallsNothing) {
    const std::tuple<std::string, int, int> methods[] = {{"controlTpPressureCalibMode", 2, 26},
                                                         {"setTpPressureCalibration", -1, 28},
                                                         {"setTpPressureVerification", 256, 30}};
    for (bool answer : {true, false}) {
        for (const auto& [name, unknown, position] : methods) {
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
                EXPECT_EQ(Calls(), known ? Texts{"touchscreen." + op + (indexed ? "(7)@" : "()@") +
                                                 std::to_string(position + type)}
                                         : Texts{});
            }
        }
    }
}

TEST_F(Touch, ValueAnswersPassThroughWithTheirArgumentsInJavaOrder) {
    Answer(Service::kTouchscreen, "getTpPressureStatus", "-5");
    Answer(Service::kTouchscreen, "getTpPressureVerifyResult", "3");
    Answer(Service::kTouchscreen, "checkTpPressureCalibPosition", "-1");
    Answer(Service::kTouchscreen, "setTouchScreenFeatureConfig", "-22");
    Answer(Service::kOtherdevices, "getTouchKeySupportState", "-3");
    EXPECT_EQ(CallInt("getTpPressureStatusNative", "()I"), -5);
    EXPECT_EQ(CallInt("getTpPressureVerifyResultNative", "(I)I", 12), 3);
    EXPECT_EQ(CallInt("checkTpPressureCalibPositionNative", "(III)I", 1, -2, 3), -1);
    EXPECT_EQ(CallInt("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 9,
                      JStr("glove=on,\xc3\xa9")),
              -22);
    EXPECT_EQ(CallInt("getTouchKeySupportFlagNative", "()I"), -3);
    EXPECT_EQ(TakeLogs(),
              (Lines{Line(D, "GetTpPressureStatus, result: -5"),
                     Line(D, "GetTpPressureVerifyResult, result: 3"),
                     Line(D, "CheckTpPressureCalibPosition, result: -1"),
                     Line(D, "SetTouchScreenFeatureConfig, feature: 9, config: glove=on,\xc3\xa9"),
                     Line(I, "GetTouchKeySupportState, state: -3")}));
    EXPECT_EQ(Calls(),
              (Texts{"touchscreen.getTpPressureStatus()@20",
                     "touchscreen.getTpPressureVerifyResult(12)@25",
                     "touchscreen.checkTpPressureCalibPosition(1, -2, 3)@33",
                     "touchscreen.setTouchScreenFeatureConfig(9, \"glove=on,\xc3\xa9\")@39",
                     "otherdevices.getTouchKeySupportState(0)@2"}));
}

TEST_F(Touch, CapacitanceTestsWriteTheServiceTextToTheirFieldWhateverTheCode) {
    const std::tuple<const char*, const char*, const char*, Service, std::string> tests[] = {
        {"getCapacitanceTestResultNative", "GetCapacitanceTestResult", "sTpCapacitanceFailInfo",
         Service::kTouchscreen, "touchscreen.getCapacitanceTestResult()@11"},
        {"getTouchKeyCapacitanceTestResultNative", "GetTouchkeyCapacitanceTestResult",
         "sTouchKeyCapacitanceFailInfo", Service::kOtherdevices,
         "otherdevices.getTouchkeyCapacitanceTestResult(0)@1"}};
    const std::tuple<const char*, int, std::string> answers[] = {
        {R"(0,"")", 0, ""}, {R"(3,"channel 5 open")", 3, "channel 5 open"}, {"nocallback", -1, ""}};
    for (const auto& [method, function, field, service, call] : tests) {
        for (const auto& [answer, ret, info] : answers) {
            SCOPED_TRACE(call + " " + answer);
            SetManagerStaticString(field, "stale");
            Answer(service,
                   call.substr(call.find('.') + 1, call.find('(') - call.find('.') - 1).c_str(),
                   answer);
            EXPECT_EQ(CallInt(method, "()I"), ret);
            EXPECT_EQ(ManagerStaticString(field), info);
            EXPECT_EQ(TakeLogs(), Lines{Line(I, std::string(function) + ", ret: " +
                                                    std::to_string(ret) + ", info: " + info)});
            EXPECT_EQ(Calls(), Texts{call});
        }
    }
    ASSERT_TRUE(Device().Kill(Service::kPower));  // empties every handle
    WaitIdle();
    for (const auto& [method, function, field, service, call] : tests) {
        SetManagerStaticString(field, "stale");
        EXPECT_EQ(CallInt(method, "()I"), -1);
        EXPECT_EQ(ManagerStaticString(field), "stale");
    }
}

TEST_F(Touch, CalibrationAndCrownTurnAnyFailureIntoTheirFixedTexts) {
    const char* kFailed = "Capacitance Calibrate Failed";
    const std::tuple<bool, const char*, const char*, const char*> cases[] = {
        // crown test or calibration, answer, Java result, error line (null: none)
        {false, R"(0,"cal done")", "cal done", nullptr},
        {false, R"(2,"cal done")", kFailed, "GetCapacitanceCalibrateResult fail, ret: 2"},
        {true, R"(true,"360 deg ok")", "360 deg ok", nullptr},
        {true, R"(false,"stuck")", "error", "GetRotateCrownTestResult fail"}};
    for (const auto& [crown, answer, result, error] : cases) {
        SCOPED_TRACE(answer);
        Answer(Service::kTouchscreen,
               crown ? "getRotateCrownTestResult" : "getCapacitanceCalibrateResult", answer);
        EXPECT_EQ(
            crown ? CallString("getRotaryCrownSelfTestNative", "()Ljava/lang/String;")
                  : CallString("getCapacitanceCalibrateResultNative", "(I)Ljava/lang/String;", -4),
            result);
        EXPECT_EQ(TakeLogs(), error ? Lines{Line(E, error)} : Lines{});
        EXPECT_EQ(Calls(), Texts{crown ? "touchscreen.getRotateCrownTestResult()@6"
                                       : "touchscreen.getCapacitanceCalibrateResult(-4)@13"});
    }
}

}  // namespace
}  // namespace kxtest
