// The factory-interface family: test records, manufacturing data and the factory commands, with
// arguments in order, answers mapped to Java values and the lines written. The tests that reach the
// service run against the full service and against one that offers only version 1.0.
#include <vendor/tavrin/hardware/kxfactoryinterface/1.0/types.h>

#include <map>
#include <tuple>

#include "device_test.h"

namespace kxtest {
namespace {

class Factory : public DeviceTest, public testing::WithParamInterface<bool> {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        if (!OnlyV10()) return;
        ASSERT_TRUE(Device().Kill(simdevice::Service::kFactory));
        ASSERT_TRUE(Device().SetOnlyV10(simdevice::Service::kFactory, true));
        ASSERT_TRUE(Device().Revive(simdevice::Service::kFactory));
        WaitIdle();
        Forget();
    }
    static bool OnlyV10() { return GetParam(); }
    // A call that needs version 1.1 of a service without it fails with one line instead.
    static void Check(const Native& call, const char* answer, const std::string& callText,
                      const std::string& result, const Lines& lines) {
        static const std::map<std::string, std::pair<std::string, std::string>> kNewer = {
            {"factory.getManufactureMode()", {"-1", "GetManufactureMode, kxFactoryNew is null"}},
            {"factory.readOeminfo(1, 2, 3)", {"", "GetOeminfo fail, kxFactoryNew is null"}}};
        auto newer = kNewer.find(callText);
        if (!OnlyV10() || newer == kNewer.end()) {
            return DeviceTest::Check(call, answer, callText, result, lines);
        }
        EXPECT_EQ(call(), newer->second.first) << callText;
        EXPECT_EQ(TakeLogs(), Lines{Line(E, newer->second.second)});
        EXPECT_EQ(Calls(), Texts{});
    }
};
INSTANTIATE_TEST_SUITE_P(Versions, Factory, testing::Bool(),
                         [](const auto& version) { return version.param ? "OnlyV10" : "Full"; });

TEST_P(Factory, ValueAnswersPassThroughWithArgumentsInOrder) {
    const char* kTwo = "(Ljava/lang/String;Ljava/lang/String;)I";
    Check(Bind("isFactoryVersionNative", "()Z"), "false", "factory.isFactoryVersion()", "false",
          {Line(D, "IsFactoryVersion: 0")});
    Check(Bind("releaseFactoryHidlResourceNative", "()I"), "-3",
          "factory.releaseFactoryHidlResource()", "-3",
          {Line(D, "ReleaseFactoryHidlResource, result: -3")});
    Check(Bind("setMmiResultNative", "(II)I", 3, -4), "11", "factory.setMmiTestResult(3, -4)", "11",
          {Line(D, "SetMmiTestResult ret = 11")});
    Check(Bind("getMmiDeviceFeaturesCheckResultNative", "(I)I", 9), "-2",
          "factory.getMmiDeviceFeaturesCheckResult(9)", "-2",
          {Line(D, "GetMmiDeviceFeaturesCheckResult, result: -2")});
    Check(Bind("disableMmiAutoStartNative", "(Ljava/lang/String;)I", JStr("off")), "4",
          "factory.setFactoryInfo(5, \"off\")", "4", {Line(D, "SetMMIAutoStartFlag, result: 4")});
    Check(Bind("getManufactureModeNative", "()I"), "2", "factory.getManufactureMode()", "2",
          {Line(D, "GetManufactureMode, result: 2")});
    Check(Bind("setMockCardTestModeNative", "(Ljava/lang/String;)I", JStr("sd-fast")), "6",
          "factory.setFactoryInfo(14, \"sd-fast\")", "6", {Line(D, "SetZqCardTestMode, ret: 6")});
    // The result info is only logged, and at error priority even on success.
    Check(Bind("executeHighTemperInterceptCmdNative", kTwo, JStr("s"), JStr("p")), "0,\"cooled\"",
          "factory.executeHighTemperInterceptCmd(\"s\", \"p\")", "0",
          {Line(E,
                "ExecuteHighTemperInterceptCmd, resultCode: 0, resultInfo: cooled, testScene: "
                "s, parameters: p")});
}

// "{C}" and "{T}" in a line stand for the service's code and text.
std::string Fill(std::string line, const std::string& code, const std::string& text) {
    if (size_t c = line.find("{C}"); c != std::string::npos) line.replace(c, 3, code);
    if (size_t t = line.find("{T}"); t != std::string::npos) line.replace(t, 3, text);
    return line;
}

TEST_P(Factory, CallbackTextsAreMappedPerMethod) {
    const char* kStr = "()Ljava/lang/String;";
    const struct {
        Native call;
        std::string callText;
        const char* line;      // debug line after every call, if any
        const char* failLine;  // error line on a non-zero code, if any
        const char* failText;  // the Java result on a non-zero code; null: the service's text
    } methods[] = {
        {Bind("getManufactureFileNameNative", kStr), "factory.getManufactureFileName()",
         "GetManufactureFileName, ret: {C}, fileName: {T}", nullptr, nullptr},
        {Bind("getBsnNative", kStr), "factory.getFactoryInfo(0)", "GetBsn, ret: {C}", nullptr,
         nullptr},
        {Bind("getMmiAutoStartFlagNative", kStr), "factory.getFactoryInfo(5)",
         "GetMmiAutoStartFlag, ret: {C}, flag: {T}", "getMMIAutoStart failed", "Error"},
        {Bind("getManufactureStationFlagNative", "(I)Ljava/lang/String;", 12),
         "factory.getManufactureStationFlag(12)",
         "GetManufactureStationFlag, station id: 12, result: {C}, stationFlag: {T}", nullptr,
         nullptr},
        {Bind("getOeminfoNative", "(III)Ljava/lang/String;", 1, 2, 3),
         "factory.readOeminfo(1, 2, 3)", nullptr, "GetOeminfo fail, read failed result: {C} ", ""},
        {Bind("getMockCardTestResultNative", kStr), "factory.getFactoryInfo(14)",
         "GetZqCardTestResult, ret: {C}, testResultArray = {T}", nullptr, nullptr},
    };
    const std::pair<const char*, std::string> answers[] = {
        {"0,\"alpha\"", "0"}, {"7,\"beta\"", "7"}, {"nocallback", "-1"}};
    for (const auto& m : methods) {
        for (const auto& [answer, code] : answers) {
            std::string text = code == "0" ? "alpha" : code == "7" ? "beta" : "";
            bool failed = code != "0";
            Lines lines;
            if (m.line) lines.push_back(Line(D, Fill(m.line, code, text)));
            if (failed && m.failLine) lines.push_back(Line(E, Fill(m.failLine, code, text)));
            Check(m.call, answer, m.callText, failed && m.failText ? m.failText : text, lines);
        }
    }
}

TEST_P(Factory, SetTestCycleWritesFourCharactersOfItem143) {
    // station, cycle, qrcode text (null: no qrcode line and an empty record)
    const std::tuple<int, int, const char*> cases[] = {
        {7, 3, "0703"}, {123, 4, "1204"}, {-5, 1000, "-510"}, {42, -100, nullptr}};
    Answer(simdevice::Service::kFactory, "writeOeminfo", "5");
    for (const auto& [station, cycle, qrcode] : cases) {
        std::string args = std::to_string(station) + ", cycle: " + std::to_string(cycle);
        SCOPED_TRACE(args);
        EXPECT_EQ(CallInt("setTestCycleNative", "(II)I", station, cycle), OnlyV10() ? -1 : 5);
        Lines lines{Line(D, "SetTestCycle, stationID: " + args)};
        if (OnlyV10()) lines.push_back(Line(E, "SetTestCycle fail, kxFactoryNew is null"));
        if (!OnlyV10() && qrcode)
            lines.push_back(Line(D, "SetTestCycle, qrcodeInfo: " + std::string(qrcode)));
        if (!OnlyV10()) lines.push_back(Line(D, "SetTestCycle, result: 5"));
        EXPECT_EQ(TakeLogs(), lines);
        EXPECT_EQ(Calls(), OnlyV10() ? Texts{}
                                     : Texts{"factory.writeOeminfo(143, 64, \"" +
                                             std::string(qrcode ? qrcode : "") + "\")"});
    }
}

TEST_P(Factory, SignatureDataReachesTheServiceAsLowerCaseHexOfKind11) {
    // every digit in both places, and bytes above 0x7f that a signed char would widen
    const std::vector<uint8_t> bytes = {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef,
                                        0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10};
    Check(Bind("getVerifySignatureResultNative", "([B)I", JBytes(bytes)), "3",
          "factory.setFactoryInfo(11, \"0123456789abcdeffedcba9876543210\")", "3",
          {Line(D, "GetVerifySignatureResult, ret: 3")});
    EXPECT_EQ(CallInt("getVerifySignatureResultNative", "([B)I", JBytes({})), -1);
    EXPECT_EQ(TakeLogs(),
              (Lines{Line(E, "ConvertBinToString fail, parameter is invalid, numLen: 0, strLen: 0"),
                     Line(E, "GetVerifySignatureResult, convertBinToString fail")}));
    EXPECT_EQ(Calls(), Texts{});
}

class Direct : public DeviceTest {};  // library functions called directly

// Records travel field by field in reading order, and the log leaves out the bsn. A null record, or
// a field holding null, reads as its default after an error line.
TEST_P(Factory, RecordsTravelInReadingOrderWithoutTheBsnInTheLog) {
    const char* kSendValue = "(Lcom/tavrin/mmitest/model/BigDataValue;)I";
    const char* kSendOperation = "(Lcom/tavrin/mmitest/model/BigDataOperation;)I";
    jobject value = NewModel("BigDataValue");
    int32_t number = 2;  // mVersion 2, mDataSource 3, mErrorCode 4, mItemId 5, mCycle 6
    for (const char* f : {"mVersion", "mDataSource", "mErrorCode", "mItemId", "mCycle"})
        SetIntField(value, f, number++);
    const std::pair<const char*, const char*> texts[] = {
        {"mDeviceName", "dev"},  {"mStation", "st"},    {"mTestName", "tn"},
        {"mBsn", "sn-77"},       {"mValue", "3.3"},     {"mThresholdMin", "lo"},
        {"mThresholdMax", "hi"}, {"mResult", nullptr},  {"mTime", "09:41"},
        {"mFirmware", "fw1"},    {"mDescription", "ok"}};
    for (const auto& [field, text] : texts) SetStringField(value, field, text);
    Check(
        Bind("sendBigDataValueNative", kSendValue, value), "41",
        "factory.sendBigDataValue({version: 2, dataSource: 3, eventCount: 1, events: [{errorCode: "
        "4, itemId: 5, cycle: 6, result: \"\", station: \"st\", bsn: \"sn-77\", time: "
        "\"09:41\", deviceName: \"dev\", testName: \"tn\", value: \"3.3\", thresholdMin: "
        "\"lo\", thresholdMax: \"hi\", firmware: \"fw1\", description: \"ok\"}]})",
        "41",
        {Line(E, "GetBigDataValueString fail, field object is null"),
         Line(D,
              "SendBigDataValue, version: 2; dataSource: 3; errorCode: 4; itemId: 5; station: "
              "st; cycle: 6; deviceName: dev; testName: tn; value: 3.3; minThreshold: lo; "
              "maxThreshold: hi; result: ; time: 09:41; firmware: fw1; description: ok")});

    jobject operation = NewModel("BigDataOperation");
    SetIntField(operation, "mVersion", 1);
    SetIntField(operation, "mCommandId", 2);
    SetIntField(operation, "mOperation", 3);
    SetStringField(operation, "mBsn", "B1");
    SetStringField(operation, "mStation", "S1");
    SetIntField(operation, "mCycle", 4);
    Check(Bind("sendBigDataOperationNative", kSendOperation, operation), "-9",
          "factory.sendBigDataOperation({version: 1, commandId: 2, operation: 3, cycle: 4, "
          "station: \"S1\", bsn: \"B1\"})",
          "-9",
          {Line(D,
                "SendBigDataOperation, version: 1; commandId: 2; operation: 3; station: S1; "
                "cycle: 4")});

    const LogLine i = Line(E, "GetIntFromObject fail, invalid parameter");
    const LogLine s = Line(E, "GetBigDataValueString fail, invalid parameter");
    Lines lines(5, i);
    lines.insert(lines.end(), 11, s);
    lines.push_back(Line(D,
                         "SendBigDataValue, version: -1; dataSource: -1; errorCode: -1; itemId: "
                         "-1; station: ; cycle: -1; deviceName: ; testName: ; value: ; "
                         "minThreshold: ; maxThreshold: ; result: ; time: ; firmware: ; "
                         "description: "));
    Check(Bind("sendBigDataValueNative", kSendValue, jobject{}), "7",
          "factory.sendBigDataValue({version: -1, dataSource: -1, eventCount: 1, events: "
          "[{errorCode: -1, itemId: -1, cycle: -1, result: \"\", station: \"\", bsn: \"\", time: "
          "\"\", deviceName: \"\", testName: \"\", value: \"\", thresholdMin: \"\", "
          "thresholdMax: \"\", firmware: \"\", description: \"\"}]})",
          "7", lines);
    Check(Bind("sendBigDataOperationNative", kSendOperation, jobject{}), "8",
          "factory.sendBigDataOperation({version: -1, commandId: -1, operation: -1, cycle: -1, "
          "station: \"\", bsn: \"\"})",
          "8",
          {i, i, i, s, s, i,
           Line(D,
                "SendBigDataOperation, version: -1; commandId: -1; operation: -1; station: ; "
                "cycle: -1")});
}

TEST_F(Direct, MissingClassOrFieldReadsAsTheDefaultWithoutAPendingException) {
    using GetIntFn = int32_t (*)(JNIEnv*, jobject, const char*, const char*);
    using GetStringFn = std::string (*)(JNIEnv*, jobject, const char*, const char*);
    auto getInt =
        reinterpret_cast<GetIntFn>(LibrarySymbol("_Z16GetIntFromObjectP7JNIEnv_P8_jobjectPKcS4_"));
    auto getString = reinterpret_cast<GetStringFn>(
        LibrarySymbol("_Z19GetStringFromObjectB5cxx11P7JNIEnv_P8_jobjectPKcS4_"));
    ASSERT_TRUE(getInt && getString);
    JNIEnv* env = Env();
    jobject value = NewModel("BigDataValue");
    const char* kValue = "com/tavrin/mmitest/model/BigDataValue";
    const char* kNoClass = "com/tavrin/mmitest/model/NoSuchRecord";
    EXPECT_EQ(getInt(env, value, kValue, "mTestName"), -1);  // a String field, not an int
    EXPECT_EQ(getString(env, value, kValue, "mItemId"), "");
    EXPECT_EQ(getInt(env, value, kNoClass, "mItemId"), -1);
    EXPECT_EQ(getString(env, value, kNoClass, "mTestName"), "");
    EXPECT_FALSE(env->ExceptionCheck());
    const std::string noClass = " fail, class com/tavrin/mmitest/model/NoSuchRecord not found";
    EXPECT_EQ(TakeLogs(), (Lines{Line(E, "GetIntFromObject fail, field mTestName not found"),
                                 Line(E, "GetBigDataValueString fail, field mItemId not found"),
                                 Line(E, "GetIntFromObject" + noClass),
                                 Line(E, "GetBigDataValueString" + noClass)}));
}

TEST_F(Direct, ConvertBinToStringWritesExactlyTwiceTheCountWithoutTerminator) {
    using ConvertFn = int32_t (*)(const unsigned char*, uint32_t, char*, uint32_t);
    auto convert = reinterpret_cast<ConvertFn>(LibrarySymbol("_Z18ConvertBinToStringPKhjPcj"));
    ASSERT_NE(convert, nullptr);
    const unsigned char bytes[] = {0x00, 0x7f, 0xa5, 0xff};
    const std::string untouched(12, '#');
    // null pointer (1: the bytes, 2: the buffer), numLen, strLen, the buffer filled with '#' after;
    // the last doubles to 0 in 32 bits
    const std::tuple<int, uint32_t, uint32_t, std::string> cases[] = {
        {0, 4, 8, "007fa5ff####"}, {0, 4, 7, untouched},  {0, 0, 12, untouched},
        {1, 4, 12, untouched},     {2, 4, 12, untouched}, {0, 0x80000000u, 0, untouched}};
    for (const auto& [null, numLen, strLen, out] : cases) {
        std::string lengths =
            "numLen: " + std::to_string(numLen) + ", strLen: " + std::to_string(strLen);
        SCOPED_TRACE(lengths);
        char buffer[12];
        std::fill(std::begin(buffer), std::end(buffer), '#');
        bool fails = out == untouched;
        EXPECT_EQ(
            convert(null == 1 ? nullptr : bytes, numLen, null == 2 ? nullptr : buffer, strLen),
            fails ? -1 : 0);
        EXPECT_EQ(std::string(buffer, sizeof buffer), out);
        EXPECT_EQ(TakeLogs(),
                  fails
                      ? Lines{Line(E, "ConvertBinToString fail, parameter is invalid, " + lengths)}
                      : Lines{});
    }
}

}  // namespace
}  // namespace kxtest
