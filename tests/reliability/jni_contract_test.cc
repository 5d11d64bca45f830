// The JNI contract, call by call, as the suites' JNI agent sees it. Everything a native borrows
// from Java (a string's characters, an array's elements) goes back once, on the object it came
// from, in the mode the library's rules name, whatever the service does. And every JNI call that
// JNI lets fail (GetStringUTFChars, Get<Type>ArrayElements, NewStringUTF, NewIntArray), failed by
// the agent, gives the native's failure value and its one error line, leaves no exception pending
// and no -Xcheck:jni warning, and the next call works.
#include <algorithm>
#include <climits>
#include <map>
#include <set>

#include "workload.h"

namespace reliability {
namespace {

using kxtest::JniCall;

// One call of native i from Java; fails the test on every loan the call broke.
long CallAndAudit(int i, int set, const std::string& what) {
    kxtest::NoLoanFaults("before " + what);
    CallNative(i, set);
    kxtest::Loans loans = kxtest::TakeLoans();
    for (const std::string& fault : loans.faults) ADD_FAILURE() << what << ": " << fault;
    kxtest::Forget();
    return loans.obtained;
}

TEST(JniLoans, EveryNativeGivesBackWhatItBorrowedWhateverTheService) {
    HealthyDevice();
    std::vector<int> borrowers;
    long borrowed = 0;
    for (int i = 0; i < kMethods; ++i) {
        const std::string name = Describe(i);
        const std::string params = name.substr(name.find('('));
        const size_t references =
            Count(params, "String") + Count(params, "[]") + Count(params, "BigData");
        if (references == 0) continue;
        borrowers.push_back(i);
        // Healthy: ordinary, hostile and each null argument. An ordinary call borrows every text
        // and array it is given, or this test could not see a release go missing.
        Reconnect();
        const long plain = CallAndAudit(i, kPlain, name + " with a healthy service");
        EXPECT_EQ(plain, static_cast<long>(TextsRead(params) + Count(params, "[]"))) << name;
        borrowed += plain;
        CallAndAudit(i, kHostile, name + " with hostile arguments");
        for (size_t k = 0; k < references; ++k) {
            CallAndAudit(i, kNullAt + static_cast<int>(k),
                         name + " with reference argument " + std::to_string(k) + " null");
        }
        // Failing services: a transport failure in the middle of the call, no callback.
        Reconnect();
        CallNative(i);
        const std::vector<simdevice::Call> calls = kxtest::Device().TakeCalls();
        ASSERT_EQ(calls.size(), 1u) << name;
        kxtest::TakeLoans();
        const simdevice::Call& call = calls[0];
        std::vector<std::string> faults = {"transport-error"};
        if (simdevice::SimDevice::FindOperation(call.service, call.operation)->callback)
            faults.push_back("nocallback");
        for (const std::string& fault : faults) {
            ASSERT_TRUE(kxtest::Device().Program(call.service, call.operation, fault, nullptr));
            CallAndAudit(i, kPlain, name + " with " + fault);
        }
        kxtest::Device().ResetAnswers();
    }
    // No service at all, then services of the older version only.
    SetAllAlive(false);
    for (int i : borrowers) CallAndAudit(i, kPlain, Describe(i) + " with no service");
    for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().SetOnlyV10(s, true);
    SetAllAlive(true);
    for (int i : borrowers) CallAndAudit(i, kPlain, Describe(i) + " with older services");
    for (simdevice::Service s : simdevice::kAllServices) kxtest::Device().SetOnlyV10(s, false);
    SetAllAlive(false);
    SetAllAlive(true);
    std::printf("loans: %zu natives borrow from Java; %ld loans of their ordinary calls audited\n",
                borrowers.size(), borrowed);
    EXPECT_EQ(borrowers.size(), 11u);
}

const char* CallName(JniCall call) {
    static const char* const kNames[] = {"GetStringUTFChars", "Get<Type>ArrayElements",
                                         "NewStringUTF", "NewIntArray"};
    return kNames[static_cast<int>(call)];
}

constexpr int kEvery = -1;         // every call of the kind fails, not one
const std::string kHealthy = "=";  // the native's answer when nothing fails

// What a native does when one JNI call fails: which call (the skip-th of its kind, or every one),
// the answer Java gets, the one error line, and whether the service is called all the same.
struct Staged {
    std::string java;
    JniCall call;
    int skip;
    std::string answer;
    std::string line;
    bool reaches;
};

std::vector<Staged> ExpectedFailures() {
    const JniCall chars = JniCall::kStringChars;
    std::vector<Staged> rows = {
        {"checkUsbSpeedNative", chars, 0, "-1", "CheckUsbSpeed fail, cannot read scene", false},
        {"executeHighTemperInterceptCmdNative", chars, 0, "-1",
         "ExecuteHighTemperInterceptCmd fail, cannot read testScene", false},
        {"executeHighTemperInterceptCmdNative", chars, 1, "-1",
         "ExecuteHighTemperInterceptCmd fail, cannot read parameters", false},
        {"getPowerStateNative", chars, 0, "\"\"", "GetPowerState fail, cannot read query", false},
        {"disableMmiAutoStartNative", chars, 0, "-1", "SetMMIAutoStartFlag fail, cannot read flag",
         false},
        {"setMockCardTestModeNative", chars, 0, "-1", "SetZqCardTestMode fail, cannot read mode",
         false},
        {"setPowerStateNative", chars, 0, "-1", "SetPowerState fail, cannot read testScene", false},
        {"setPowerStateNative", chars, 1, "-1", "SetPowerState fail, cannot read para", false},
        {"setTouchScreenFeatureConfigNative", chars, 0, "-1",
         "SetTouchScreenFeatureConfig fail, cannot read config", false},
        {"getVerifySignatureResultNative", JniCall::kArrayElements, 0, "-1",
         "GetVerifySignatureResult fail, data elements are null", false},
        // Its rules give the empty-handle line for elements that cannot be obtained.
        {"setApPressureCalibExternNative", JniCall::kArrayElements, 0, "-1",
         "SetApPressureCalibrationExtern fail, g_kxSensors is null", false},
        {"handleAmbientLightParameterNative", JniCall::kNewIntArray, 0, "null",
         "HandleAmbientLightParameter fail, NewIntArray failed", false},
    };
    // A record's text that cannot be read is sent empty; the record still goes.
    const std::string unread = "GetBigDataValueString fail, string value is null";
    for (int k = 0; k < 2; ++k)
        rows.push_back({"sendBigDataOperationNative", chars, k, kHealthy, unread, true});
    for (int k = 0; k < 11; ++k)
        rows.push_back({"sendBigDataValueNative", chars, k, kHealthy, unread, true});
    // A result text the runtime cannot make: a new empty string instead, or null when not even
    // that can be made. The capacitance tests publish theirs in a static field and still answer
    // their code.
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"getBsnNative", "GetBsn"},
        {"getCapacitanceCalibrateResultNative", "GetCapacitanceCalibrateResult"},
        {"getManufactureFileNameNative", "GetManufactureFileName"},
        {"getManufactureStationFlagNative", "GetManufactureStationFlag"},
        {"getMmiAutoStartFlagNative", "GetMmiAutoStartFlag"},
        {"getMockCardTestResultNative", "GetZqCardTestResult"},
        {"getOeminfoNative", "GetOeminfo"},
        {"getPowerStateNative", "GetPowerState"},
        {"getRotaryCrownSelfTestNative", "GetRotateCrownTestResult"},
        {"getScreenFpsConfigNative", "GetScreenFpsConfig"},
        {"getSensorCalibrateTypeNative", "GetSensorCalibrateType"},
        {"handleSensorParameterNative", "HandleSensorParameter"},
        {"getCapacitanceTestResultNative", "GetCapacitanceTestResult"},
        {"getTouchKeyCapacitanceTestResultNative", "GetTouchkeyCapacitanceTestResult"}};
    for (const auto& [java, function] : texts) {
        const bool published = java.find("CapacitanceTest") != std::string::npos;
        const std::string line = function + " fail, NewStringUTF failed";
        rows.push_back({java, JniCall::kNewString, 0, published ? kHealthy : "\"\"", line, true});
        rows.push_back(
            {java, JniCall::kNewString, kEvery, published ? kHealthy : "null", line, true});
    }
    return rows;
}

// What one call of a native did while the agent failed its JNI calls as staged.
struct Outcome {
    int met = 0;
    std::string answer;
    std::vector<std::string> errors;
    std::vector<simdevice::Call> calls;
    std::string warnings;
    std::vector<std::string> loanFaults;
};

Outcome CallFailing(int i, JniCall call, int skip, bool pending) {
    Outcome o;
    kxtest::StageFailures(call, std::max(skip, 0), skip == kEvery ? INT_MAX : 1, pending);
    o.warnings = StdoutOf([&] { o.answer = CallNative(i); });
    o.met = kxtest::StagedFailures();
    kxtest::StageFailures(call, 0, 0, false);
    o.errors = TakeErrors();
    o.calls = kxtest::Device().TakeCalls();
    o.loanFaults = kxtest::TakeLoans().faults;
    return o;
}

std::string Key(const std::string& java, JniCall call, int skip) {
    return java + ", " + CallName(call) +
           (skip == kEvery ? " every call" : " call " + std::to_string(skip));
}

// Every native is called with each kind of JNI call failing in turn, the first, the second, ...
// until the native makes no more of them; what fails must be exactly the table's rows, each met
// as its row says, once with an OutOfMemoryError pending and once without one.
TEST(JniFailures, EveryFailedJniCallGivesTheFailureValueItsLineAndNothingPending) {
    HealthyDevice();
    std::map<std::string, Staged> expected;
    for (const Staged& row : ExpectedFailures()) expected[Key(row.java, row.call, row.skip)] = row;
    for (bool pending : {true, false}) {
        SCOPED_TRACE(pending ? "with an OutOfMemoryError pending" : "without an exception");
        std::set<std::string> seen;
        for (int i = 0; i < kMethods; ++i) {
            const std::string name = Describe(i);
            const std::string java = name.substr(0, name.find('('));
            const std::string healthy = CallNative(i);
            // A few natives log their result at error priority.
            const std::vector<std::string> healthyErrors = TakeErrors();
            kxtest::Device().TakeCalls();
            for (JniCall call : {JniCall::kStringChars, JniCall::kArrayElements,
                                 JniCall::kNewString, JniCall::kNewIntArray}) {
                // The first call of the kind, the second, ... until the native makes no more;
                // then, for result texts, every call (the fallback text too).
                std::vector<int> skips = {0};
                while (!skips.empty()) {
                    const int skip = skips.back();
                    skips.pop_back();
                    const std::string key = Key(java, call, skip);
                    SCOPED_TRACE(key);
                    const Outcome o = CallFailing(i, call, skip, pending);
                    if (o.met == 0) continue;
                    if (skip != kEvery) skips.push_back(skip + 1);
                    if (skip == 0 && call == JniCall::kNewString)
                        skips.insert(skips.begin(), kEvery);
                    seen.insert(key);
                    auto row = expected.find(key);
                    if (row == expected.end()) {
                        ADD_FAILURE() << "a JNI call that no rule covers; answer " << o.answer;
                    } else {
                        const Staged& x = row->second;
                        EXPECT_EQ(o.answer, x.answer == kHealthy ? healthy : x.answer);
                        EXPECT_EQ(o.errors, std::vector<std::string>{Tagged(x.line)});
                        EXPECT_EQ(o.calls.size(), x.reaches ? 1u : 0u) << "calls of the service";
                        // A record's unread text travels empty, the others whole.
                        if (java.rfind("sendBigData", 0) == 0 && !o.calls.empty()) {
                            const std::string args = o.calls[0].Text();
                            EXPECT_EQ(Count(args, "\"\""), 1u) << args;
                        }
                    }
                    EXPECT_EQ(o.loanFaults, std::vector<std::string>{});
                    EXPECT_EQ(o.warnings.find("WARNING"), std::string::npos) << o.warnings;
                    EXPECT_EQ(CallNative(i), healthy) << "the next call";
                    EXPECT_EQ(TakeErrors(), healthyErrors) << "the next call";
                    kxtest::Device().TakeCalls();
                }
            }
        }
        for (const auto& [key, row] : expected)
            EXPECT_EQ(seen.count(key), 1u) << key << ": this JNI call never came";
    }
}

}  // namespace
}  // namespace reliability
