// Hostile input from Java: null Strings, arrays and model objects for every native that takes
// one; empty and very large arrays; strings with embedded NUL characters and characters outside
// the Basic Multilingual Plane, which must reach the services with exactly the bytes JNI gives.
// The harness fails any call that leaves a Java exception pending.
#include <gtest/gtest.h>
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/types.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "workload.h"

namespace reliability {
namespace {

using kxtest::CallInt;
using kxtest::CallString;
using kxtest::JStr;
using simdevice::Service;

constexpr const char* kSendValue = "(Lcom/tavrin/mmitest/model/BigDataValue;)I";
constexpr const char* kSendOperation = "(Lcom/tavrin/mmitest/model/BigDataOperation;)I";
constexpr const char* kValueTexts[] = {"mDeviceName", "mStation",      "mTestName",     "mBsn",
                                       "mValue",      "mThresholdMin", "mThresholdMax", "mResult",
                                       "mTime",       "mFirmware",     "mDescription"};

// U+0000 and U+1F600 between ASCII letters, and the modified UTF-8 JNI gives for them: the NUL
// as C0 80, the supplementary character as its two surrogates of three bytes each.
jstring Hostile() {
    const jchar units[] = {'a', 0x0000, 'b', 0xD83D, 0xDE00, 'c'};
    return kxtest::Env()->NewString(units, 6);
}
const std::string kHostileBytes =
    std::string("a") + "\xC0\x80" + "b" + "\xED\xA0\xBD" + "\xED\xB8\x80" + "c";

std::string Quoted(const std::string& bytes) { return "\"" + bytes + "\""; }

void Program(Service service, const char* operation, const char* answer) {
    std::string error;
    ASSERT_TRUE(kxtest::Device().Program(service, operation, answer, &error)) << error;
}

class BadInput : public testing::Test {
  protected:
    void SetUp() override { HealthyDevice(); }
};

struct NullCase {
    const char* what;
    std::function<std::string()> call;
    std::string result;
    std::vector<std::string> errors;  // every error line, in order
};

std::function<std::string()> Int(std::function<jint()> call) {
    return [call] { return std::to_string(call()); };
}

TEST_F(BadInput, NullStringsAndArraysAnswerTheFailureValueWithoutReachingTheService) {
    const char* kStrStr = "(Ljava/lang/String;)Ljava/lang/String;";
    const char* kStrInt = "(Ljava/lang/String;)I";
    const char* kTwoStrInt = "(Ljava/lang/String;Ljava/lang/String;)I";
    const std::vector<NullCase> cases = {
        {"raw pressure data",
         Int([] { return CallInt("setApPressureCalibExternNative", "(II[I)I", 1, 10, nullptr); }),
         "-1",
         {Tagged("SetApPressureCalibrationExtern fail, rawData is null")}},
        {"power query",
         [=] { return CallString("getPowerStateNative", kStrStr, nullptr).value_or("<null>"); },
         "",
         {Tagged("GetPowerState fail, query is null")}},
        {"usb scene",
         Int([=] { return CallInt("checkUsbSpeedNative", kStrInt, nullptr); }),
         "-1",
         {Tagged("CheckUsbSpeed fail, scene is null")}},
        {"auto-start flag",
         Int([=] { return CallInt("disableMmiAutoStartNative", kStrInt, nullptr); }),
         "-1",
         {Tagged("SetMMIAutoStartFlag fail, flag is null")}},
        {"power test scene",
         Int([=] { return CallInt("setPowerStateNative", kTwoStrInt, nullptr, JStr("p")); }),
         "-1",
         {Tagged("SetPowerState fail, testScene is null")}},
        {"power parameter",
         Int([=] { return CallInt("setPowerStateNative", kTwoStrInt, JStr("s"), nullptr); }),
         "-1",
         {Tagged("SetPowerState fail, para is null")}},
        {"touch feature config",
         Int([] {
             return CallInt("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 1,
                            nullptr);
         }),
         "-1",
         {Tagged("SetTouchScreenFeatureConfig fail, config is null")}},
        {"signature bytes",
         Int([] { return CallInt("getVerifySignatureResultNative", "([B)I", nullptr); }),
         "-1",
         {Tagged("GetVerifySignatureResult fail, data is null")}},
        {"memory-card mode",
         Int([=] { return CallInt("setMockCardTestModeNative", kStrInt, nullptr); }),
         "-1",
         {Tagged("SetZqCardTestMode fail, mode is null")}},
        {"high-temperature scene",
         Int([=] {
             return CallInt("executeHighTemperInterceptCmdNative", kTwoStrInt, nullptr, JStr("p"));
         }),
         "-1",
         {Tagged("ExecuteHighTemperInterceptCmd fail, testScene is null")}},
        {"high-temperature parameters",
         Int([=] {
             return CallInt("executeHighTemperInterceptCmdNative", kTwoStrInt, JStr("s"), nullptr);
         }),
         "-1",
         {Tagged("ExecuteHighTemperInterceptCmd fail, parameters is null")}},
    };
    for (const NullCase& c : cases) {
        SCOPED_TRACE(c.what);
        LocalFrame frame;
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(LinesAt(kxtest::TakeLogs(), kError), c.errors);
        EXPECT_TRUE(kxtest::Device().TakeCalls().empty());
    }
}

// A null model object is read as all defaults and still sent: every integer -1, every text empty.
TEST_F(BadInput, NullModelObjectsAreSentWithDefaults) {
    Program(Service::kFactory, "sendBigDataValue", "29");
    Program(Service::kFactory, "sendBigDataOperation", "31");
    const std::string intLine = Tagged("GetIntFromObject fail, invalid parameter");
    const std::string textLine = Tagged("GetBigDataValueString fail, invalid parameter");

    EXPECT_EQ(CallInt("sendBigDataValueNative", kSendValue, nullptr), 29);
    std::vector<std::string> expected(5, intLine);
    expected.insert(expected.end(), 11, textLine);
    EXPECT_EQ(LinesAt(kxtest::TakeLogs(), kError), expected);
    auto msg = kxtest::Device().LastFmdMsg();
    ASSERT_TRUE(msg && msg->events.size() == 1);
    EXPECT_EQ(msg->version, -1);
    EXPECT_EQ(msg->dataSource, -1);
    const auto& e = msg->events[0];
    EXPECT_EQ(std::vector<int32_t>({e.errorCode, e.itemId, e.cycle}),
              std::vector<int32_t>({-1, -1, -1}));
    for (const auto* text :
         {&e.result, &e.station, &e.bsn, &e.time, &e.deviceName, &e.testName, &e.value,
          &e.thresholdMin, &e.thresholdMax, &e.firmware, &e.description}) {
        EXPECT_EQ(text->size(), 0u);
    }

    EXPECT_EQ(CallInt("sendBigDataOperationNative", kSendOperation, nullptr), 31);
    EXPECT_EQ(LinesAt(kxtest::TakeLogs(), kError),
              std::vector<std::string>({intLine, intLine, intLine, textLine, textLine, intLine}));
    auto op = kxtest::Device().LastFmdOperation();
    ASSERT_TRUE(op);
    EXPECT_EQ(std::vector<int32_t>({op->version, op->commandId, op->operation, op->cycle}),
              std::vector<int32_t>({-1, -1, -1, -1}));
    EXPECT_EQ(op->station.size() + op->bsn.size(), 0u);
}

struct StringArgument {
    const char* what;
    std::function<void(jstring)> call;  // passes the string in the argument under test
    Service service;
    const char* operation;
    size_t position;  // of the argument in the operation's call
};

TEST_F(BadInput, NulAndSupplementaryCharactersReachTheServiceAsModifiedUtf8) {
    const char* kStrInt = "(Ljava/lang/String;)I";
    const char* kTwoStrInt = "(Ljava/lang/String;Ljava/lang/String;)I";
    const Service F = Service::kFactory;
    const Service P = Service::kPower;
    const std::vector<StringArgument> arguments = {
        {"power query",
         [](jstring s) {
             CallString("getPowerStateNative", "(Ljava/lang/String;)Ljava/lang/String;", s);
         },
         P, "getPowerState", 0},
        {"power test scene",
         [=](jstring s) { CallInt("setPowerStateNative", kTwoStrInt, s, JStr("p")); }, P,
         "setPowerState", 0},
        {"power parameter",
         [=](jstring s) { CallInt("setPowerStateNative", kTwoStrInt, JStr("s"), s); }, P,
         "setPowerState", 1},
        {"usb scene", [=](jstring s) { CallInt("checkUsbSpeedNative", kStrInt, s); }, P,
         "checkUsbSpeed", 0},
        {"auto-start flag", [=](jstring s) { CallInt("disableMmiAutoStartNative", kStrInt, s); }, F,
         "setFactoryInfo", 1},
        {"touch feature config",
         [](jstring s) {
             CallInt("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 1, s);
         },
         Service::kTouchscreen, "setTouchScreenFeatureConfig", 1},
        {"memory-card mode", [=](jstring s) { CallInt("setMockCardTestModeNative", kStrInt, s); },
         F, "setFactoryInfo", 1},
        {"high-temperature scene",
         [=](jstring s) {
             CallInt("executeHighTemperInterceptCmdNative", kTwoStrInt, s, JStr("p"));
         },
         F, "executeHighTemperInterceptCmd", 0},
        {"high-temperature parameters",
         [=](jstring s) {
             CallInt("executeHighTemperInterceptCmdNative", kTwoStrInt, JStr("s"), s);
         },
         F, "executeHighTemperInterceptCmd", 1},
    };
    for (const StringArgument& a : arguments) {
        SCOPED_TRACE(a.what);
        LocalFrame frame;
        a.call(Hostile());
        std::vector<simdevice::Call> calls = kxtest::Device().TakeCalls();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].service, a.service);
        EXPECT_EQ(calls[0].operation, a.operation);
        ASSERT_GT(calls[0].args.size(), a.position);
        EXPECT_EQ(calls[0].args[a.position], Quoted(kHostileBytes));
    }
}

TEST_F(BadInput, NulAndSupplementaryCharactersInModelTextsReachTheRecords) {
    jobject value = kxtest::NewModel("BigDataValue");
    JNIEnv* env = kxtest::Env();
    jclass valueClass = env->GetObjectClass(value);
    for (const char* field : kValueTexts) {
        env->SetObjectField(value, env->GetFieldID(valueClass, field, "Ljava/lang/String;"),
                            Hostile());
    }
    CallInt("sendBigDataValueNative", kSendValue, value);
    auto msg = kxtest::Device().LastFmdMsg();
    ASSERT_TRUE(msg && msg->events.size() == 1);
    const auto& e = msg->events[0];
    for (const auto* text :
         {&e.result, &e.station, &e.bsn, &e.time, &e.deviceName, &e.testName, &e.value,
          &e.thresholdMin, &e.thresholdMax, &e.firmware, &e.description}) {
        EXPECT_EQ(std::string(text->c_str(), text->size()), kHostileBytes);
    }

    jobject operation = kxtest::NewModel("BigDataOperation");
    jclass operationClass = env->GetObjectClass(operation);
    for (const char* field : {"mBsn", "mStation"}) {
        env->SetObjectField(operation, env->GetFieldID(operationClass, field, "Ljava/lang/String;"),
                            Hostile());
    }
    CallInt("sendBigDataOperationNative", kSendOperation, operation);
    auto op = kxtest::Device().LastFmdOperation();
    ASSERT_TRUE(op);
    EXPECT_EQ(std::string(op->bsn.c_str(), op->bsn.size()), kHostileBytes);
    EXPECT_EQ(std::string(op->station.c_str(), op->station.size()), kHostileBytes);
}

std::string Hex(const std::vector<uint8_t>& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(2 * bytes.size());
    for (uint8_t b : bytes) {
        hex += kDigits[b >> 4];
        hex += kDigits[b & 15];
    }
    return hex;
}

TEST_F(BadInput, EmptyAndMillionElementArraysReachTheServiceWhole) {
    Program(Service::kSensors, "setApPressureCalibrationExtern", "23");
    Program(Service::kFactory, "setFactoryInfo", "24");
    constexpr size_t kMillion = 1000000;
    for (size_t n : {size_t{0}, kMillion}) {
        SCOPED_TRACE(n);
        LocalFrame frame;
        std::vector<int32_t> ints(n);
        for (size_t i = 0; i < n; ++i) ints[i] = static_cast<int32_t>(i * 2654435761u);
        EXPECT_EQ(CallInt("setApPressureCalibExternNative", "(II[I)I", 1, 10, kxtest::JInts(ints)),
                  23);
        EXPECT_TRUE(kxtest::Device().LastVector(Service::kSensors,
                                                "setApPressureCalibrationExtern") == ints)
            << "the values differ";
        std::vector<std::string> debug = LinesAt(kxtest::TakeLogs(), kDebug);
        ASSERT_FALSE(debug.empty());
        EXPECT_EQ(debug[0],
                  Tagged("SetApPressureCalibrationExtern rawDataLength: " + std::to_string(n)));
        kxtest::Device().TakeCalls();
    }

    // A million bytes go out as two million hexadecimal characters.
    std::vector<uint8_t> bytes(kMillion);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 131 + 7);
    {
        LocalFrame frame;
        EXPECT_EQ(CallInt("getVerifySignatureResultNative", "([B)I", kxtest::JBytes(bytes)), 24);
    }
    std::vector<simdevice::Call> calls = kxtest::Device().TakeCalls();
    ASSERT_EQ(calls.size(), 1u);
    ASSERT_EQ(calls[0].args.size(), 2u);
    EXPECT_EQ(calls[0].args[0], "11");
    EXPECT_TRUE(calls[0].args[1] == Quoted(Hex(bytes))) << "the hexadecimal text differs";

    // An empty one cannot be encoded: nothing is sent.
    kxtest::TakeLogs();
    {
        LocalFrame frame;
        EXPECT_EQ(CallInt("getVerifySignatureResultNative", "([B)I", kxtest::JBytes({})), -1);
    }
    EXPECT_EQ(LinesAt(kxtest::TakeLogs(), kError),
              std::vector<std::string>(
                  {Tagged("ConvertBinToString fail, parameter is invalid, numLen: 0, strLen: 0"),
                   Tagged("GetVerifySignatureResult, convertBinToString fail")}));
    EXPECT_TRUE(kxtest::Device().TakeCalls().empty());
}

TEST_F(BadInput, MillionCharacterStringReachesTheServiceWhole) {
    std::string text(1000000, 'x');
    for (size_t i = 0; i < text.size(); i += 97) text[i] = static_cast<char>('a' + i % 26);
    {
        LocalFrame frame;
        EXPECT_EQ(CallInt("setTouchScreenFeatureConfigNative", "(ILjava/lang/String;)I", 1,
                          JStr(text.c_str())),
                  0);
    }
    std::vector<simdevice::Call> calls = kxtest::Device().TakeCalls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_TRUE(calls[0].args.at(1) == Quoted(text)) << "the text differs";
}

struct Extremes {
    const char* what;
    int32_t code;  // of callback answers: 0 lets the methods use the rest of the answer
    int32_t int32;
    int64_t int64;
    std::string text;
    std::vector<int32_t> values;
};

// Programs every operation of every service with the profile's values, whatever they mean.
void ProgramAll(const Extremes& x) {
    for (Service service : simdevice::kAllServices) {
        for (const simdevice::OperationInfo& op : simdevice::SimDevice::Operations(service)) {
            std::vector<simdevice::Answer::Value> values;
            for (const simdevice::Field& f : op.answers) {
                if (op.callback && values.empty() && f.type != simdevice::Type::kBool) {
                    values.emplace_back(std::in_place_type<int64_t>, x.code);
                    continue;
                }
                switch (f.type) {
                    case simdevice::Type::kInt64:
                        values.emplace_back(std::in_place_type<int64_t>, x.int64);
                        break;
                    case simdevice::Type::kBool:
                        values.emplace_back(std::in_place_type<bool>, x.int32 != 0);
                        break;
                    case simdevice::Type::kString:
                        values.emplace_back(std::in_place_type<std::string>, x.text);
                        break;
                    case simdevice::Type::kInt32Vector:
                        values.emplace_back(std::in_place_type<std::vector<int32_t>>, x.values);
                        break;
                    default:
                        values.emplace_back(std::in_place_type<int64_t>, x.int32);
                }
            }
            std::string error;
            ASSERT_TRUE(kxtest::Device().Program(service, op.name,
                                                 simdevice::Answer::Values(values), &error))
                << op.name << ": " << error;
        }
    }
}

// The services may answer anything: boundary integers, texts that are huge, hold NULs or are not
// UTF-8 at all, vectors of a million values or none. No call may break, and the few answers the
// library shapes itself keep their shape.
TEST_F(BadInput, ExtremeServiceAnswersNeverBreakACall) {
    // A megabyte that is not UTF-8: a four-byte sequence, a cut-off one, then bytes never valid.
    std::string huge(1 << 20, '\xff');
    huge.replace(0, 5, "\xF0\x9F\x98\x80\xC0");
    const std::vector<Extremes> profiles = {
        {"largest", 0, INT32_MAX, INT64_MAX, huge, std::vector<int32_t>(1000000, INT32_MAX)},
        {"smallest", INT32_MIN, INT32_MIN, INT64_MIN, std::string("\0", 1), {INT32_MIN}},
        {"nothing", 0, 0, 0, "", {}},
    };
    for (const Extremes& x : profiles) {
        SCOPED_TRACE(x.what);
        HealthyDevice();
        ProgramAll(x);
        std::vector<std::string> answers = AnswersOfAll();  // fails the test on a Java exception
        ASSERT_EQ(answers.size(), static_cast<size_t>(kMethods));
        // The waiting time is reduced below 144000; the ambient-light answer always has 64 values.
        EXPECT_LT(std::llabs(std::stoll(answers[7])), 144000);
        EXPECT_EQ(std::count(answers[43].begin(), answers[43].end(), ','), 63) << answers[43];
        const int flicker = std::stoi(answers[41]);
        EXPECT_TRUE(flicker == -1 || (flicker >= 0 && flicker <= 486)) << flicker;
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
    }
}

}  // namespace
}  // namespace reliability
