// The operations the native library calls, per service: name, interface version, position, the
// answer of a healthy device, arguments and answer shape. Positions are the interfaces' own: the
// transport reports them with each call.
#include <cstdio>
#include <cstdlib>

#include "internal.h"

namespace simdevice {

namespace {

constexpr Type I32 = Type::kInt32;
constexpr Type I64 = Type::kInt64;
constexpr Type BOOL = Type::kBool;
constexpr Type STR = Type::kString;
constexpr Type VEC = Type::kInt32Vector;

// A healthy answer that does not fit its own operation is a defect of this file; stop at once.
Answer Checked(const OperationInfo& info, const char* text) {
    std::string error;
    std::optional<Answer> parsed = Answer::Parse(text, &error);
    std::optional<Answer> fitted;
    if (parsed) fitted = internal::FitAnswer(info, *parsed, &error);
    if (!fitted) {
        std::fprintf(stderr, "simdevice: bad healthy answer for %s: %s\n", info.name,
                     error.c_str());
        std::abort();
    }
    return *fitted;
}

OperationInfo Value(const char* name, const char* version, uint32_t position, const char* healthy,
                    std::vector<Field> args, Field answer) {
    OperationInfo info{name,  version,  position,           std::move(args),
                       false, {answer}, Answer::Values({}), {}};
    info.healthy = Checked(info, healthy);
    return info;
}

OperationInfo Callback(const char* name, const char* version, uint32_t position,
                       const char* healthy, std::vector<Field> args, std::vector<Field> answers) {
    OperationInfo info{
        name, version, position, std::move(args), true, std::move(answers), Answer::Values({}), {}};
    info.healthy = Checked(info, healthy);
    return info;
}

OperationInfo& Named(std::vector<OperationInfo>& ops, std::string_view name) {
    for (OperationInfo& info : ops) {
        if (name == info.name) return info;
    }
    std::abort();
}

// 256 samples of a light source flickering at 100 Hz, taken at 1000 samples per second: on for
// five samples, off for five.
std::vector<int32_t> FlickerSamples() {
    std::vector<int32_t> samples(256);
    for (size_t n = 0; n < samples.size(); ++n) samples[n] = n % 10 < 5 ? 1000 : 0;
    return samples;
}

std::vector<OperationInfo> FactoryOperations() {
    std::vector<OperationInfo> ops = {
        Value("isFactoryVersion", "1.0", 1, "true", {}, {BOOL, "isFactory"}),
        Callback("getManufactureFileName", "1.0", 2, R"(0,"mmi_manufacture_2611.xml")", {},
                 {{I32, "code"}, {STR, "fileName"}}),
        Value("setMmiTestResult", "1.0", 3, "0", {{I32, "first"}, {I32, "second"}},
              {I32, "result"}),
        Callback("getFactoryInfo", "1.0", 4, R"(0,"")", {{I32, "infoKind"}},
                 {{I32, "code"}, {STR, "value"}}),
        Value("setFactoryInfo", "1.0", 5, "0", {{I32, "infoKind"}, {STR, "value"}},
              {I32, "result"}),
        Callback("getManufactureStationFlag", "1.0", 6, R"(0,"PASS")", {{I32, "stationId"}},
                 {{I32, "code"}, {STR, "stationFlag"}}),
        Value("getMmiDeviceFeaturesCheckResult", "1.0", 20, "0", {{I32, "feature"}},
              {I32, "result"}),
        Callback("executeHighTemperInterceptCmd", "1.0", 27, R"(0,"intercept ok")",
                 {{STR, "testScene"}, {STR, "parameters"}},
                 {{I32, "resultCode"}, {STR, "resultInfo"}}),
        Value("sendBigDataOperation", "1.0", 47, "0", {{Type::kFmdOperation, "operation"}},
              {I32, "result"}),
        Value("sendBigDataValue", "1.0", 48, "0", {{Type::kFmdMsg, "msg"}}, {I32, "result"}),
        Value("releaseFactoryHidlResource", "1.0", 50, "0", {}, {I32, "result"}),
        Callback("readOeminfo", "1.1", 53, R"(0,"0703")", {{I32, "a"}, {I32, "b"}, {I32, "c"}},
                 {{I32, "code"}, {STR, "data"}}),
        Value("writeOeminfo", "1.1", 57, "0", {{I32, "itemId"}, {I32, "size"}, {STR, "data"}},
              {I32, "result"}),
        Value("getManufactureMode", "1.1", 64, "1", {}, {I32, "mode"}),
    };
    // By info kind: the BSN, the MMI auto-start flag, the memory-card test result.
    OperationInfo& info = Named(ops, "getFactoryInfo");
    for (auto [kind, text] : {std::pair<int32_t, const char*>{0, R"(0,"KX2611220001A7")"},
                              {5, R"(0,"1")"},
                              {14, R"(0,"pass")"}}) {
        info.healthy_by_key.emplace_back(kind, Checked(info, text));
    }
    return ops;
}

std::vector<OperationInfo> DisplayOperations() {
    return {
        Value("setDisplayFps", "1.1", 23, "0", {{I32, "freqIndex"}}, {I32, "result"}),
        Callback("getDisplayFpsConfig", "1.1", 24, R"(0,"60,90,120")", {},
                 {{Type::kDisplayRet, "result"}, {STR, "config"}}),
    };
}

std::vector<OperationInfo> TouchscreenOperations() {
    return {
        Callback("getRotateCrownTestResult", "1.0", 6, R"(true,"crown rotation 360 ok")", {},
                 {{BOOL, "passed"}, {STR, "info"}}),
        Callback("getCapacitanceTestResult", "1.0", 11, R"(0,"")", {},
                 {{I32, "ret"}, {STR, "failInfo"}}),
        Callback("getCapacitanceCalibrateResult", "1.0", 13, R"(0,"calibrated")", {{I32, "value"}},
                 {{I32, "ret"}, {STR, "info"}}),
        Value("getTpPressureWaitingTime", "1.0", 16, "5000", {}, {I64, "waitingTime"}),
        Value("isTpPressureSupported", "1.0", 17, "true", {}, {BOOL, "supported"}),
        Value("getTpPressureStatus", "1.0", 20, "0", {}, {I32, "status"}),
        Value("getTpPressureVerifyResult", "1.0", 25, "0", {{I32, "value"}}, {I32, "result"}),
        Value("controlTpPressureCalibMode0", "1.0", 26, "true", {}, {BOOL, "success"}),
        Value("controlTpPressureCalibMode1", "1.0", 27, "true", {}, {BOOL, "success"}),
        Value("setTpPressureCalibration0", "1.0", 28, "true", {{I32, "index"}}, {BOOL, "success"}),
        Value("setTpPressureCalibration1", "1.0", 29, "true", {{I32, "index"}}, {BOOL, "success"}),
        Value("setTpPressureVerification0", "1.0", 30, "true", {{I32, "index"}}, {BOOL, "success"}),
        Value("setTpPressureVerification1", "1.0", 31, "true", {{I32, "index"}}, {BOOL, "success"}),
        Value("checkTpPressureCalibPosition", "1.0", 33, "0", {{I32, "x"}, {I32, "y"}, {I32, "z"}},
              {I32, "result"}),
        Value("setTouchScreenFeatureConfig", "1.0", 39, "0", {{I32, "feature"}, {STR, "config"}},
              {I32, "result"}),
    };
}

std::vector<OperationInfo> SensorsOperations() {
    std::vector<OperationInfo> ops = {
        Value("getSensorCalibrateDelayTime", "1.0", 11, "3000", {{I32, "sensorId"}},
              {I32, "delayTime"}),
        Value("getSensorSelfTestDelayTime", "1.0", 12, "3000", {{I32, "sensorId"}},
              {I32, "delayTime"}),
        Value("startSensorCalibrate", "1.0", 13, "0", {{I32, "sensorId"}, {I32, "command"}},
              {I32, "result"}),
        Value("getSensorCalibrateResult", "1.0", 14, "0", {{I32, "sensorId"}}, {I32, "result"}),
        Value("startSensorSelfTest", "1.0", 15, "0", {{I32, "sensorId"}, {I32, "command"}},
              {I32, "result"}),
        Value("getSensorSelfTestResult", "1.0", 16, "0", {{I32, "sensorId"}}, {I32, "result"}),
        Callback("getSensorCalibrateType", "1.0", 17, R"(0,"offset")",
                 {{I32, "sensorId"}, {I32, "flag"}}, {{I32, "resultCode"}, {STR, "calibType"}}),
        Value("getCompassRawValueLimit", "1.0", 20, "2000", {}, {I32, "limit"}),
        Value("setApPressureCalibrationExtern", "1.0", 21, "0",
              {{I32, "sensorId"}, {I32, "testCtrl"}, {VEC, "rawData"}}, {I32, "result"}),
        Callback("getFlickerRawData", "1.0", 24, "0", {{I32, "value"}},
                 {{I32, "resultCode"}, {VEC, "samples"}}),
        Value("setPsExternalIrMode", "1.0", 25, "0", {{I32, "mode"}}, {I32, "result"}),
        Value("sensorActivate", "1.0", 28, "0",
              {{I32, "sensorType"}, {BOOL, "enable"}, {I64, "samplingRate"}},
              {I32, "activeResult"}),
        Callback("handleSensorParameter", "1.1", 29,
                 R"(0,"als calibration ok",[412,398,405,401,1000,64,3,1])",
                 {{I32, "sensorId"}, {I32, "mainCmd"}, {I32, "subCmd"}, {I32, "length"}},
                 {{I32, "ret"}, {STR, "info"}, {VEC, "values"}}),
    };
    Named(ops, "getFlickerRawData").healthy = Answer::Values({int64_t{0}, FlickerSamples()});
    return ops;
}

std::vector<OperationInfo> PowerOperations() {
    return {
        Callback("getPowerState", "1.0", 5, R"(0,"capacity=85,status=charging")", {{STR, "query"}},
                 {{I32, "code"}, {STR, "info"}}),
        Value("setPowerState", "1.0", 6, "0", {{STR, "testScene"}, {STR, "para"}}, {I32, "result"}),
        Callback("checkUsbSpeed", "1.0", 9, R"(0,"USB3.0 5Gbps")",
                 {{STR, "scene"}, {STR, "arg1"}, {STR, "arg2"}, {STR, "arg3"}},
                 {{I32, "code"}, {STR, "info"}}),
    };
}

std::vector<OperationInfo> LightOperations() {
    return {
        Value("setLightBrightness", "2.0", 5, "0", {{I32, "lightId"}, {I32, "brightness"}},
              {I32, "result"}),
    };
}

std::vector<OperationInfo> OtherdevicesOperations() {
    return {
        Callback("getTouchkeyCapacitanceTestResult", "1.0", 1, R"(0,"")", {{I32, "value"}},
                 {{I32, "ret"}, {STR, "failInfo"}}),
        Value("getTouchKeySupportState", "1.0", 2, "1", {{I32, "value"}}, {I32, "state"}),
    };
}

}  // namespace

const std::vector<OperationInfo>& SimDevice::Operations(Service service) {
    // In the order of Service.
    static const std::vector<OperationInfo> kTables[] = {
        FactoryOperations(), DisplayOperations(), TouchscreenOperations(), SensorsOperations(),
        PowerOperations(),   LightOperations(),   OtherdevicesOperations()};
    return kTables[static_cast<size_t>(service)];
}

const OperationInfo* SimDevice::FindOperation(Service service, std::string_view operation) {
    for (const OperationInfo& info : Operations(service)) {
        if (operation == info.name) return &info;
    }
    return nullptr;
}

namespace internal {

const Answer& HealthyAnswer(const OperationInfo& info, std::optional<int64_t> key) {
    if (key) {
        for (const auto& [k, answer] : info.healthy_by_key) {
            if (k == *key) return answer;
        }
    }
    return info.healthy;
}

}  // namespace internal
}  // namespace simdevice
