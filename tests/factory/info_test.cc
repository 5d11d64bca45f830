// Manufacturing data and the commands that share their shapes: arguments in order, answers mapped
// to Java values, and the lines written.
#include "factory_fixture.h"

namespace factorytest {
namespace {

using kxtest::JStr;

constexpr const char* kStr = "()Ljava/lang/String;";

using Info = FactoryTest;

TEST_F(Info, ValueAnswersPassThroughWithArgumentsInOrder) {
    struct Case {
        std::function<std::string()> call;
        const char* operation;
        const char* answer;
        std::string result;
        std::string callText;
        std::vector<LogLine> lines;
    } cases[] = {
        {[] { return std::string(kxtest::CallBool("isFactoryVersionNative", "()Z") ? "1" : "0"); },
         "isFactoryVersion",
         "false",
         "0",
         "factory.isFactoryVersion()",
         {Debug("IsFactoryVersion: 0")}},
        {[] { return std::string(kxtest::CallBool("isFactoryVersionNative", "()Z") ? "1" : "0"); },
         "isFactoryVersion",
         "true",
         "1",
         "factory.isFactoryVersion()",
         {Debug("IsFactoryVersion: 1")}},
        {Int("releaseFactoryHidlResourceNative", "()I"),
         "releaseFactoryHidlResource",
         "-3",
         "-3",
         "factory.releaseFactoryHidlResource()",
         {Debug("ReleaseFactoryHidlResource, result: -3")}},
        {Int("setMmiResultNative", "(II)I", 3, -4),
         "setMmiTestResult",
         "11",
         "11",
         "factory.setMmiTestResult(3, -4)",
         {Debug("SetMmiTestResult ret = 11")}},
        {Int("getMmiDeviceFeaturesCheckResultNative", "(I)I", 9),
         "getMmiDeviceFeaturesCheckResult",
         "-2",
         "-2",
         "factory.getMmiDeviceFeaturesCheckResult(9)",
         {Debug("GetMmiDeviceFeaturesCheckResult, result: -2")}},
        {Int("disableMmiAutoStartNative", "(Ljava/lang/String;)I", JStr("off")),
         "setFactoryInfo",
         "4",
         "4",
         "factory.setFactoryInfo(5, \"off\")",
         {Debug("SetMMIAutoStartFlag, result: 4")}},
        {Int("getManufactureModeNative", "()I"),
         "getManufactureMode",
         "2",
         "2",
         "factory.getManufactureMode()",
         {Debug("GetManufactureMode, result: 2")}},
        {Int("setMockCardTestModeNative", "(Ljava/lang/String;)I", JStr("sd-fast")),
         "setFactoryInfo",
         "6",
         "6",
         "factory.setFactoryInfo(14, \"sd-fast\")",
         {Debug("SetZqCardTestMode, ret: 6")}},
        // The result info is only logged, and at error priority even on success.
        {Int("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I",
             JStr("scene"), JStr("params")),
         "executeHighTemperInterceptCmd",
         "0,\"cooled\"",
         "0",
         "factory.executeHighTemperInterceptCmd(\"scene\", \"params\")",
         {Error("ExecuteHighTemperInterceptCmd, resultCode: 0, resultInfo: cooled, testScene: "
                "scene, parameters: params")}},
        {Int("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I",
             JStr("scene"), JStr("params")),
         "executeHighTemperInterceptCmd",
         "nocallback",
         "-1",
         "factory.executeHighTemperInterceptCmd(\"scene\", \"params\")",
         {Error("ExecuteHighTemperInterceptCmd, resultCode: -1, resultInfo: , testScene: scene, "
                "parameters: params")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.callText + " answering " + c.answer);
        Answer(c.operation, c.answer);
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(kxtest::TakeLogs(), c.lines);
        EXPECT_EQ(Calls(), std::vector<std::string>{c.callText});
    }
}

TEST_F(Info, CallbackTextsAreMappedPerMethod) {
    using Expect = std::function<std::pair<std::string, std::vector<LogLine>>(
        const std::string& code, const std::string& text)>;
    struct Method {
        std::function<std::string()> call;
        const char* operation;
        std::string callText;
        Expect expect;  // the Java result and the lines for the service's code and text
    } methods[] = {
        {Str("getManufactureFileNameNative", kStr), "getManufactureFileName",
         "factory.getManufactureFileName()",
         [](auto& code, auto& text) {
             return std::make_pair(text, std::vector{Debug("GetManufactureFileName, ret: " + code +
                                                           ", fileName: " + text)});
         }},
        {Str("getBsnNative", kStr), "getFactoryInfo", "factory.getFactoryInfo(0)",
         [](auto& code, auto& text) {
             return std::make_pair(text, std::vector{Debug("GetBsn, ret: " + code)});
         }},
        {Str("getMmiAutoStartFlagNative", kStr), "getFactoryInfo", "factory.getFactoryInfo(5)",
         [](auto& code, auto& text) {
             std::vector lines{Debug("GetMmiAutoStartFlag, ret: " + code + ", flag: " + text)};
             if (code != "0") lines.push_back(Error("getMMIAutoStart failed"));
             return std::make_pair(code == "0" ? text : "Error", lines);
         }},
        {Str("getManufactureStationFlagNative", "(I)Ljava/lang/String;", 12),
         "getManufactureStationFlag", "factory.getManufactureStationFlag(12)",
         [](auto& code, auto& text) {
             return std::make_pair(
                 text, std::vector{Debug("GetManufactureStationFlag, station id: 12, result: " +
                                         code + ", stationFlag: " + text)});
         }},
        {Str("getOeminfoNative", "(III)Ljava/lang/String;", 1, 2, 3), "readOeminfo",
         "factory.readOeminfo(1, 2, 3)",
         [](auto& code, auto& text) {
             if (code == "0") return std::make_pair(text, std::vector<LogLine>{});
             return std::make_pair(
                 std::string(),
                 std::vector{Error("GetOeminfo fail, read failed result: " + code + " ")});
         }},
        {Str("getMockCardTestResultNative", kStr), "getFactoryInfo", "factory.getFactoryInfo(14)",
         [](auto& code, auto& text) {
             return std::make_pair(text, std::vector{Debug("GetZqCardTestResult, ret: " + code +
                                                           ", testResultArray = " + text)});
         }},
    };
    const struct {
        const char* answer;
        std::string code;
        std::string text;
    } answers[] = {
        {"0,\"alpha\"", "0", "alpha"}, {"7,\"beta\"", "7", "beta"}, {"nocallback", "-1", ""}};
    for (const Method& m : methods) {
        for (const auto& a : answers) {
            SCOPED_TRACE(m.callText + " answering " + a.answer);
            Answer(m.operation, a.answer);
            auto [result, lines] = m.expect(a.code, a.text);
            EXPECT_EQ(m.call(), result);
            EXPECT_EQ(kxtest::TakeLogs(), lines);
            EXPECT_EQ(Calls(), std::vector<std::string>{m.callText});
        }
    }
}

TEST_F(Info, SetTestCycleWritesFourCharactersOfItem143) {
    const struct {
        int station;
        int cycle;
        const char* qrcode;  // null: no qrcode line and an empty record
    } cases[] = {{7, 3, "0703"},     {123, 4, "1204"},    {0, 0, "0000"},
                 {-5, 1000, "-510"}, {42, -100, nullptr}, {-100, 7, "-107"}};
    Answer("writeOeminfo", "5");
    for (const auto& c : cases) {
        std::string args = std::to_string(c.station) + ", cycle: " + std::to_string(c.cycle);
        SCOPED_TRACE(args);
        EXPECT_EQ(kxtest::CallInt("setTestCycleNative", "(II)I", c.station, c.cycle), 5);
        std::vector lines{Debug("SetTestCycle, stationID: " + args)};
        if (c.qrcode) lines.push_back(Debug(std::string("SetTestCycle, qrcodeInfo: ") + c.qrcode));
        lines.push_back(Debug("SetTestCycle, result: 5"));
        EXPECT_EQ(kxtest::TakeLogs(), lines);
        EXPECT_EQ(Calls(), std::vector<std::string>{"factory.writeOeminfo(143, 64, \"" +
                                                    std::string(c.qrcode ? c.qrcode : "") + "\")"});
    }
}

}  // namespace
}  // namespace factorytest
