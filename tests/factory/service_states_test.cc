// All eighteen factory methods against a healthy device, a service that fails mid-call, a service
// that offers only version 1.0, and no service at all.
#include <map>

#include "factory_fixture.h"

namespace factorytest {
namespace {

using kxtest::JStr;
using simdevice::Service;

struct Method {
    const char* function;   // as its lines name it
    const char* operation;  // the service operation it reaches
    std::function<std::string()> call;
    std::string healthy;  // on the simulated device's defaults
    std::string failure;
};

std::vector<Method> Methods() {
    const char* kStr = "()Ljava/lang/String;";
    jobject value = kxtest::NewModel("BigDataValue");
    jobject operation = kxtest::NewModel("BigDataOperation");
    return {
        {"IsFactoryVersion", "isFactoryVersion", Bool("isFactoryVersionNative", "()Z"), "1", "0"},
        {"GetManufactureFileName", "getManufactureFileName",
         Str("getManufactureFileNameNative", kStr), "mmi_manufacture_2611.xml", ""},
        {"ReleaseFactoryHidlResource", "releaseFactoryHidlResource",
         Int("releaseFactoryHidlResourceNative", "()I"), "0", "-1"},
        {"SetMmiTestResult", "setMmiTestResult", Int("setMmiResultNative", "(II)I", 1, 2), "0",
         "-1"},
        {"GetBsn", "getFactoryInfo", Str("getBsnNative", kStr), "KX2611220001A7", ""},
        {"GetMmiAutoStartFlag", "getFactoryInfo", Str("getMmiAutoStartFlagNative", kStr), "1", ""},
        {"SetMMIAutoStartFlag", "setFactoryInfo",
         Int("disableMmiAutoStartNative", "(Ljava/lang/String;)I", JStr("0")), "0", "-1"},
        {"GetManufactureStationFlag", "getManufactureStationFlag",
         Str("getManufactureStationFlagNative", "(I)Ljava/lang/String;", 3), "PASS", ""},
        {"SetTestCycle", "writeOeminfo", Int("setTestCycleNative", "(II)I", 7, 3), "0", "-1"},
        {"GetManufactureMode", "getManufactureMode", Int("getManufactureModeNative", "()I"), "1",
         "-1"},
        {"GetMmiDeviceFeaturesCheckResult", "getMmiDeviceFeaturesCheckResult",
         Int("getMmiDeviceFeaturesCheckResultNative", "(I)I", 1), "0", "-1"},
        {"GetOeminfo", "readOeminfo", Str("getOeminfoNative", "(III)Ljava/lang/String;", 1, 2, 3),
         "0703", ""},
        {"SendBigDataValue", "sendBigDataValue",
         Int("sendBigDataValueNative", "(Lcom/tavrin/mmitest/model/BigDataValue;)I", value), "0",
         "-1"},
        {"SendBigDataOperation", "sendBigDataOperation",
         Int("sendBigDataOperationNative", "(Lcom/tavrin/mmitest/model/BigDataOperation;)I",
             operation),
         "0", "-1"},
        {"GetVerifySignatureResult", "setFactoryInfo",
         Int("getVerifySignatureResultNative", "([B)I", kxtest::JBytes({1, 2})), "0", "-1"},
        {"SetZqCardTestMode", "setFactoryInfo",
         Int("setMockCardTestModeNative", "(Ljava/lang/String;)I", JStr("1")), "0", "-1"},
        {"GetZqCardTestResult", "getFactoryInfo", Str("getMockCardTestResultNative", kStr), "pass",
         ""},
        {"ExecuteHighTemperInterceptCmd", "executeHighTemperInterceptCmd",
         Int("executeHighTemperInterceptCmdNative", "(Ljava/lang/String;Ljava/lang/String;)I",
             JStr("scene"), JStr("p")),
         "0", "-1"},
    };
}

using ServiceStates = FactoryTest;

TEST_F(ServiceStates, HealthyDefaultsGiveRealAnswers) {
    for (const Method& m : Methods()) {
        SCOPED_TRACE(m.function);
        EXPECT_EQ(m.call(), m.healthy);
    }
}

TEST_F(ServiceStates, TransportFailureMidCallEndsInTheFailureValueAndOneErrorLine) {
    for (const Method& m : Methods()) {
        SCOPED_TRACE(m.function);
        kxtest::Device().ResetAnswers();
        Answer(m.operation, "transport-error");
        EXPECT_EQ(m.call(), m.failure);
        std::vector<LogLine> lines = kxtest::TakeLogs();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back().priority, E);
        EXPECT_EQ(lines.back().text.rfind(
                      std::string("KxMMITest_jni: ") + m.function + " fail, transport error: ", 0),
                  0u)
            << lines.back().text;
        for (size_t i = 0; i + 1 < lines.size(); ++i) EXPECT_EQ(lines[i].priority, D);
    }
}

TEST_F(ServiceStates, OnlyVersion10FailsTheThreeNewerMethods) {
    std::map<std::string, std::vector<LogLine>> castLines = {
        {"SetTestCycle",
         {Debug("SetTestCycle, stationID: 7, cycle: 3"),
          Error("SetTestCycle fail, kxFactoryNew is null")}},
        {"GetManufactureMode", {Error("GetManufactureMode, kxFactoryNew is null")}},
        {"GetOeminfo", {Error("GetOeminfo fail, kxFactoryNew is null")}},
    };
    ASSERT_TRUE(kxtest::Device().Kill(Service::kFactory));
    ASSERT_TRUE(kxtest::Device().SetOnlyV10(Service::kFactory, true));
    ASSERT_TRUE(kxtest::Device().Revive(Service::kFactory));
    kxtest::WaitIdle();
    kxtest::TakeLogs();
    for (const Method& m : Methods()) {
        SCOPED_TRACE(m.function);
        kxtest::TakeLogs();
        kxtest::Device().TakeCalls();
        bool newer = castLines.count(m.function) != 0;
        EXPECT_EQ(m.call(), newer ? m.failure : m.healthy);
        if (!newer) continue;
        EXPECT_EQ(kxtest::TakeLogs(), castLines[m.function]);
        for (const simdevice::Call& c : kxtest::Device().TakeCalls()) {
            EXPECT_NE(c.operation, m.operation);
        }
    }
}

TEST_F(ServiceStates, WithoutTheServiceNothingIsReadBeforeTheHandleCheck) {
    ASSERT_TRUE(kxtest::Device().Kill(Service::kFactory));
    kxtest::WaitIdle();
    kxtest::TakeLogs();
    EXPECT_EQ(kxtest::CallInt("sendBigDataValueNative",
                              "(Lcom/tavrin/mmitest/model/BigDataValue;)I", jobject{}),
              -1);
    EXPECT_EQ(kxtest::CallInt("sendBigDataOperationNative",
                              "(Lcom/tavrin/mmitest/model/BigDataOperation;)I", jobject{}),
              -1);
    // The memory-card mode is the one method that takes its text before the handle check.
    EXPECT_EQ(kxtest::CallInt("setMockCardTestModeNative", "(Ljava/lang/String;)I", JStr(nullptr)),
              -1);
    EXPECT_EQ(kxtest::TakeLogs(),
              (std::vector{Error("SendBigDataValue fail, env or g_kxFactoryInterface is null"),
                           Error("SendBigDataOperation fail, env or g_kxFactoryInterface is null"),
                           Error("SetZqCardTestMode fail, mode is null")}));
}

}  // namespace
}  // namespace factorytest
