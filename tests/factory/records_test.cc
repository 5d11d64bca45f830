// Test records: how BigDataValue and BigDataOperation objects reach the factory service.
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/types.h>

#include <map>

#include "factory_fixture.h"

namespace factorytest {
namespace {

using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdEvent;
using ::vendor::tavrin::hardware::kxfactoryinterface::V1_0::FmdMsg;

constexpr const char* kSendValue = "(Lcom/tavrin/mmitest/model/BigDataValue;)I";
constexpr const char* kSendOperation = "(Lcom/tavrin/mmitest/model/BigDataOperation;)I";
constexpr const char* kValueClass = "com/tavrin/mmitest/model/BigDataValue";

// The helpers are global symbols under these exact argument types.
using GetIntFn = int32_t (*)(JNIEnv*, jobject, const char*, const char*);
using GetStringFn = std::string (*)(JNIEnv*, jobject, const char*, const char*);
using InitFn = void (*)(FmdMsg&, int32_t, int32_t, FmdEvent);
constexpr const char* kGetInt = "_Z16GetIntFromObjectP7JNIEnv_P8_jobjectPKcS4_";
constexpr const char* kGetString = "_Z19GetStringFromObjectB5cxx11P7JNIEnv_P8_jobjectPKcS4_";
constexpr const char* kInit =
    "_Z14InitFmdMessageRN6vendor6tavrin8hardware18kxfactoryinterface4V1_06FmdMsgEiiNS3_8FmdEventE";

using Records = FactoryTest;

TEST_F(Records, ValueTravelsInRecordOrderAndNullTextsGoEmpty) {
    for (const char* nullField : {"", "mResult", "mStation"}) {
        SCOPED_TRACE(nullField);
        std::map<std::string, std::string> t = {
            {"mDeviceName", "dev"},  {"mStation", "st"},    {"mTestName", "tn"},
            {"mBsn", "sn-77"},       {"mValue", "3.3"},     {"mThresholdMin", "lo"},
            {"mThresholdMax", "hi"}, {"mResult", "pass"},   {"mTime", "09:41"},
            {"mFirmware", "fw1"},    {"mDescription", "ok"}};
        jobject value = kxtest::NewModel("BigDataValue");
        int32_t number = 2;  // mVersion 2, mDataSource 3, mErrorCode 4, mItemId 5, mCycle 6
        for (const char* f : {"mVersion", "mDataSource", "mErrorCode", "mItemId", "mCycle"}) {
            kxtest::SetIntField(value, f, number++);
        }
        for (auto& [field, text] : t) {
            kxtest::SetStringField(value, field.c_str(),
                                   field == nullField ? nullptr : text.c_str());
            if (field == nullField) text.clear();
        }
        Answer("sendBigDataValue", "41");
        EXPECT_EQ(kxtest::CallInt("sendBigDataValueNative", kSendValue, value), 41);

        std::vector<LogLine> lines;
        if (*nullField) lines.push_back(Error("GetBigDataValueString fail, field object is null"));
        lines.push_back(
            Debug("SendBigDataValue, version: 2; dataSource: 3; errorCode: 4; itemId: "
                  "5; station: " +
                  t["mStation"] +
                  "; cycle: 6; deviceName: dev; "
                  "testName: tn; value: 3.3; minThreshold: lo; maxThreshold: hi; "
                  "result: " +
                  t["mResult"] +
                  "; time: 09:41; firmware: fw1; "
                  "description: ok"));
        EXPECT_EQ(kxtest::TakeLogs(), lines);
        EXPECT_EQ(Calls(), std::vector<std::string>{
                               "factory.sendBigDataValue({version: 2, dataSource: 3, eventCount: "
                               "1, events: [{errorCode: 4, itemId: 5, cycle: 6, result: \"" +
                               t["mResult"] + "\", station: \"" + t["mStation"] +
                               "\", bsn: \"sn-77\", time: \"09:41\", deviceName: \"dev\", "
                               "testName: \"tn\", value: \"3.3\", thresholdMin: \"lo\", "
                               "thresholdMax: \"hi\", firmware: \"fw1\", description: \"ok\"}]})"});
    }
}

TEST_F(Records, OperationTravelsWithCycleBeforeTheTextsAndNoBsnInTheLog) {
    jobject operation = kxtest::NewModel("BigDataOperation");
    kxtest::SetIntField(operation, "mVersion", 1);
    kxtest::SetIntField(operation, "mCommandId", 2);
    kxtest::SetIntField(operation, "mOperation", 3);
    kxtest::SetStringField(operation, "mBsn", "B1");
    kxtest::SetStringField(operation, "mStation", "S1");
    kxtest::SetIntField(operation, "mCycle", 4);
    Answer("sendBigDataOperation", "-9");
    EXPECT_EQ(kxtest::CallInt("sendBigDataOperationNative", kSendOperation, operation), -9);
    EXPECT_EQ(kxtest::TakeLogs(),
              std::vector<LogLine>{Debug("SendBigDataOperation, version: 1; commandId: 2; "
                                         "operation: 3; station: S1; cycle: 4")});
    EXPECT_EQ(Calls(), std::vector<std::string>{
                           "factory.sendBigDataOperation({version: 1, commandId: 2, operation: "
                           "3, cycle: 4, station: \"S1\", bsn: \"B1\"})"});
}

TEST_F(Records, NullModelIsSentWithEveryDefaultInReadingOrder) {
    const LogLine i = Error("GetIntFromObject fail, invalid parameter");
    const LogLine s = Error("GetBigDataValueString fail, invalid parameter");
    EXPECT_EQ(kxtest::CallInt("sendBigDataValueNative", kSendValue, jobject{}), 0);
    std::vector<LogLine> lines(5, i);
    lines.insert(lines.end(), 11, s);
    lines.push_back(
        Debug("SendBigDataValue, version: -1; dataSource: -1; errorCode: -1; itemId: "
              "-1; station: ; cycle: -1; deviceName: ; testName: ; value: ; "
              "minThreshold: ; maxThreshold: ; result: ; time: ; firmware: ; "
              "description: "));
    EXPECT_EQ(kxtest::TakeLogs(), lines);
    EXPECT_EQ(kxtest::Device().TakeCalls().at(0).args.at(0),
              "{version: -1, dataSource: -1, eventCount: 1, events: [{errorCode: -1, itemId: -1, "
              "cycle: -1, result: \"\", station: \"\", bsn: \"\", time: \"\", deviceName: \"\", "
              "testName: \"\", value: \"\", thresholdMin: \"\", thresholdMax: \"\", firmware: "
              "\"\", description: \"\"}]}");

    EXPECT_EQ(kxtest::CallInt("sendBigDataOperationNative", kSendOperation, jobject{}), 0);
    EXPECT_EQ(kxtest::TakeLogs(),
              (std::vector<LogLine>{i, i, i, s, s, i,
                                    Debug("SendBigDataOperation, version: -1; commandId: -1; "
                                          "operation: -1; station: ; cycle: -1")}));
    EXPECT_EQ(Calls(),
              std::vector<std::string>{"factory.sendBigDataOperation({version: -1, commandId: -1, "
                                       "operation: -1, cycle: -1, station: \"\", bsn: \"\"})"});
}

TEST_F(Records, MissingClassOrFieldReadsAsTheDefaultWithoutAPendingException) {
    auto getInt = reinterpret_cast<GetIntFn>(kxtest::LibrarySymbol(kGetInt));
    auto getString = reinterpret_cast<GetStringFn>(kxtest::LibrarySymbol(kGetString));
    ASSERT_NE(getInt, nullptr);
    ASSERT_NE(getString, nullptr);
    JNIEnv* env = kxtest::Env();
    jobject value = kxtest::NewModel("BigDataValue");
    kxtest::SetIntField(value, "mItemId", 143);
    kxtest::SetStringField(value, "mTestName", "gyro");
    const char* kNoClass = "com/tavrin/mmitest/model/NoSuchRecord";
    struct Case {
        bool text;  // read with GetStringFromObject, else GetIntFromObject
        const char* className;
        const char* field;
        std::string result;
        std::string line;  // the one error line, if any
    } cases[] = {
        {false, kValueClass, "mItemId", "143", ""},
        {true, kValueClass, "mTestName", "gyro", ""},
        {false, kValueClass, "mTestName", "-1", "GetIntFromObject fail, field mTestName not found"},
        {true, kValueClass, "mItemId", "", "GetBigDataValueString fail, field mItemId not found"},
        {false, kValueClass, "mNoSuch", "-1", "GetIntFromObject fail, field mNoSuch not found"},
        {false, kNoClass, "mItemId", "-1",
         "GetIntFromObject fail, class com/tavrin/mmitest/model/NoSuchRecord not found"},
        {true, kNoClass, "mTestName", "",
         "GetBigDataValueString fail, class com/tavrin/mmitest/model/NoSuchRecord not found"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.className) + "." + c.field);
        EXPECT_EQ(c.text ? getString(env, value, c.className, c.field)
                         : std::to_string(getInt(env, value, c.className, c.field)),
                  c.result);
        EXPECT_FALSE(env->ExceptionCheck());
        EXPECT_EQ(kxtest::TakeLogs(),
                  c.line.empty() ? std::vector<LogLine>{} : std::vector<LogLine>{Error(c.line)});
    }
}

TEST_F(Records, InitFmdMessageReplacesTheEventsWithOneOwnedCopy) {
    auto init = reinterpret_cast<InitFn>(kxtest::LibrarySymbol(kInit));
    ASSERT_NE(init, nullptr);
    std::string station = "line-3";
    FmdEvent event{};
    event.itemId = 9;
    event.station.setToExternal(station.data(), station.size());
    FmdMsg msg{};
    msg.events.resize(3);
    init(msg, 2, 5, event);
    station.assign("changed after the call");
    EXPECT_EQ(msg.version, 2);
    EXPECT_EQ(msg.dataSource, 5);
    EXPECT_EQ(msg.eventCount, 1);
    ASSERT_EQ(msg.events.size(), 1u);
    EXPECT_EQ(msg.events[0].itemId, 9);
    EXPECT_EQ(std::string(msg.events[0].station), "line-3");
}

}  // namespace
}  // namespace factorytest
