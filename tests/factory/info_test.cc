// Manufacturing data and the commands that share their shapes: arguments in order, answers mapped
// to Java values, and the lines written.
#include "factory_fixture.h"

namespace factorytest {
namespace {

using kxtest::JStr;

constexpr const char* kStr = "()Ljava/lang/String;";

using Info = FactoryTest;

TEST_F(Info, ValueAnswersPassThroughWithArgumentsInOrder) {
    const struct {
        std::function<std::string()> call;
        const char* answer;
        std::string result;
        std::string callText;  // also names the operation to program
        LogLine line;
    } cases[] = {
        {Bool("isFactoryVersionNative", "()Z"), "false", "0", "factory.isFactoryVersion()",
         Debug("IsFactoryVersion: 0")},
        {Int("releaseFactoryHidlResourceNative", "()I"), "-3", "-3",
         "factory.releaseFactoryHidlResource()", Debug("ReleaseFactoryHidlResource, result: -3")},
        {Int("setMmiResultNative", "(II)I", 3, -4), "11", "11", "factory.setMmiTestResult(3, -4)",
         Debug("SetMmiTestResult ret = 11")},
        {Int("getMmiDeviceFeaturesCheckResultNative", "(I)I", 9), "-2", "-2",
         "factory.getMmiDeviceFeaturesCheckResult(9)",
         Debug("GetMmiDeviceFeaturesCheckResult, result: -2")},
        {Int("disableMmiAutoStartNative", "(Ljava/lang/String;)I", JStr("off")), "4", "4",
         "factory.setFactoryInfo(5, \"off\")", Debug("SetMMIAutoStartFlag, result: 4")},
        {Int("getManufactureModeNative", "()I"), "2", "2", "factory.getManufactureMode()",
         Debug("GetManufactureMode, result: 2")},
        {Int("setMockCardTestModeNative", "(Ljava/lang/String;)I", JStr("sd-fast")), "6", "6",
         "factory.setFactoryInfo(14, \"sd-fast\")", Debug("SetZqCardTestMode, ret: 6")},
        // The result info is only logged, and at error priority even on success.
        {Int("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I",
             JStr("scene"), JStr("params")),
         "0,\"cooled\"", "0", "factory.executeHighTemperInterceptCmd(\"scene\", \"params\")",
         Error("ExecuteHighTemperInterceptCmd, resultCode: 0, resultInfo: cooled, testScene: "
               "scene, parameters: params")},
        {Int("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I",
             JStr("scene"), JStr("params")),
         "nocallback", "-1", "factory.executeHighTemperInterceptCmd(\"scene\", \"params\")",
         Error("ExecuteHighTemperInterceptCmd, resultCode: -1, resultInfo: , testScene: scene, "
               "parameters: params")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.callText + " answering " + c.answer);
        Answer(OperationOf(c.callText).c_str(), c.answer);
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(kxtest::TakeLogs(), std::vector{c.line});
        EXPECT_EQ(Calls(), std::vector<std::string>{c.callText});
    }
}

// "{C}" and "{T}" in a line stand for the service's code and text.
std::string Fill(std::string line, const std::string& code, const std::string& text) {
    if (size_t c = line.find("{C}"); c != std::string::npos) line.replace(c, 3, code);
    if (size_t t = line.find("{T}"); t != std::string::npos) line.replace(t, 3, text);
    return line;
}

TEST_F(Info, CallbackTextsAreMappedPerMethod) {
    struct Method {
        std::function<std::string()> call;
        std::string callText;  // also names the operation to program
        const char* line;      // debug line after every call, if any
        const char* failLine;  // error line on a non-zero code, if any
        const char* failText;  // the Java result on a non-zero code; null: the service's text
    } methods[] = {
        {Str("getManufactureFileNameNative", kStr), "factory.getManufactureFileName()",
         "GetManufactureFileName, ret: {C}, fileName: {T}", nullptr, nullptr},
        {Str("getBsnNative", kStr), "factory.getFactoryInfo(0)", "GetBsn, ret: {C}", nullptr,
         nullptr},
        {Str("getMmiAutoStartFlagNative", kStr), "factory.getFactoryInfo(5)",
         "GetMmiAutoStartFlag, ret: {C}, flag: {T}", "getMMIAutoStart failed", "Error"},
        {Str("getManufactureStationFlagNative", "(I)Ljava/lang/String;", 12),
         "factory.getManufactureStationFlag(12)",
         "GetManufactureStationFlag, station id: 12, result: {C}, stationFlag: {T}", nullptr,
         nullptr},
        {Str("getOeminfoNative", "(III)Ljava/lang/String;", 1, 2, 3),
         "factory.readOeminfo(1, 2, 3)", nullptr, "GetOeminfo fail, read failed result: {C} ", ""},
        {Str("getMockCardTestResultNative", kStr), "factory.getFactoryInfo(14)",
         "GetZqCardTestResult, ret: {C}, testResultArray = {T}", nullptr, nullptr},
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
            Answer(OperationOf(m.callText).c_str(), a.answer);
            bool failed = a.code != "0";
            std::vector<LogLine> lines;
            if (m.line) lines.push_back(Debug(Fill(m.line, a.code, a.text)));
            if (failed && m.failLine) lines.push_back(Error(Fill(m.failLine, a.code, a.text)));
            EXPECT_EQ(m.call(), failed && m.failText ? m.failText : a.text);
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
