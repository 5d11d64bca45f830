// The operations the native library calls, per service, with their shapes and the answers of a
// healthy device. Positions are the interfaces' own: the transport reports them with each call.
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

OperationInfo Value(const char* name, const char* version, std::vector<Field> args, Field answer) {
    return OperationInfo{name, version, std::move(args), false, {answer}};
}

OperationInfo Callback(const char* name, const char* version, std::vector<Field> args,
                       std::vector<Field> answers) {
    return OperationInfo{name, version, std::move(args), true, std::move(answers)};
}

std::vector<OperationInfo> FactoryOperations() {
    return {
        Value("isFactoryVersion", "1.0", {}, {BOOL, "isFactory"}),
        Callback("getManufactureFileName", "1.0", {}, {{I32, "code"}, {STR, "fileName"}}),
        Value("setMmiTestResult", "1.0", {{I32, "first"}, {I32, "second"}}, {I32, "result"}),
        Callback("getFactoryInfo", "1.0", {{I32, "infoKind"}}, {{I32, "code"}, {STR, "value"}}),
        Value("setFactoryInfo", "1.0", {{I32, "infoKind"}, {STR, "value"}}, {I32, "result"}),
        Callback("getManufactureStationFlag", "1.0", {{I32, "stationId"}},
                 {{I32, "code"}, {STR, "stationFlag"}}),
        Value("getMmiDeviceFeaturesCheckResult", "1.0", {{I32, "feature"}}, {I32, "result"}),
        Callback("executeHighTemperInterceptCmd", "1.0", {{STR, "testScene"}, {STR, "parameters"}},
                 {{I32, "resultCode"}, {STR, "resultInfo"}}),
        Value("sendBigDataOperation", "1.0", {{Type::kFmdOperation, "operation"}}, {I32, "result"}),
        Value("sendBigDataValue", "1.0", {{Type::kFmdMsg, "msg"}}, {I32, "result"}),
        Value("releaseFactoryHidlResource", "1.0", {}, {I32, "result"}),
        Callback("readOeminfo", "1.1", {{I32, "a"}, {I32, "b"}, {I32, "c"}},
                 {{I32, "code"}, {STR, "data"}}),
        Value("writeOeminfo", "1.1", {{I32, "itemId"}, {I32, "size"}, {STR, "data"}},
              {I32, "result"}),
        Value("getManufactureMode", "1.1", {}, {I32, "mode"}),
    };
}

std::vector<OperationInfo> DisplayOperations() {
    return {
        Value("setDisplayFps", "1.1", {{I32, "freqIndex"}}, {I32, "result"}),
        Callback("getDisplayFpsConfig", "1.1", {},
                 {{Type::kDisplayRet, "result"}, {STR, "config"}}),
    };
}

std::vector<OperationInfo> TouchscreenOperations() {
    return {
        Callback("getRotateCrownTestResult", "1.0", {}, {{BOOL, "passed"}, {STR, "info"}}),
        Callback("getCapacitanceTestResult", "1.0", {}, {{I32, "ret"}, {STR, "failInfo"}}),
        Callback("getCapacitanceCalibrateResult", "1.0", {{I32, "value"}},
                 {{I32, "ret"}, {STR, "info"}}),
        Value("getTpPressureWaitingTime", "1.0", {}, {I64, "waitingTime"}),
        Value("isTpPressureSupported", "1.0", {}, {BOOL, "supported"}),
        Value("getTpPressureStatus", "1.0", {}, {I32, "status"}),
        Value("getTpPressureVerifyResult", "1.0", {{I32, "value"}}, {I32, "result"}),
        Value("controlTpPressureCalibMode0", "1.0", {}, {BOOL, "success"}),
        Value("controlTpPressureCalibMode1", "1.0", {}, {BOOL, "success"}),
        Value("setTpPressureCalibration0", "1.0", {{I32, "index"}}, {BOOL, "success"}),
        Value("setTpPressureCalibration1", "1.0", {{I32, "index"}}, {BOOL, "success"}),
        Value("setTpPressureVerification0", "1.0", {{I32, "index"}}, {BOOL, "success"}),
        Value("setTpPressureVerification1", "1.0", {{I32, "index"}}, {BOOL, "success"}),
        Value("checkTpPressureCalibPosition", "1.0", {{I32, "x"}, {I32, "y"}, {I32, "z"}},
              {I32, "result"}),
        Value("setTouchScreenFeatureConfig", "1.0", {{I32, "feature"}, {STR, "config"}},
              {I32, "result"}),
    };
}

std::vector<OperationInfo> SensorsOperations() {
    return {
        Value("getSensorCalibrateDelayTime", "1.0", {{I32, "sensorId"}}, {I32, "delayTime"}),
        Value("getSensorSelfTestDelayTime", "1.0", {{I32, "sensorId"}}, {I32, "delayTime"}),
        Value("startSensorCalibrate", "1.0", {{I32, "sensorId"}, {I32, "command"}},
              {I32, "result"}),
        Value("getSensorCalibrateResult", "1.0", {{I32, "sensorId"}}, {I32, "result"}),
        Value("startSensorSelfTest", "1.0", {{I32, "sensorId"}, {I32, "command"}}, {I32, "result"}),
        Value("getSensorSelfTestResult", "1.0", {{I32, "sensorId"}}, {I32, "result"}),
        Callback("getSensorCalibrateType", "1.0", {{I32, "sensorId"}, {I32, "flag"}},
                 {{I32, "resultCode"}, {STR, "calibType"}}),
        Value("getCompassRawValueLimit", "1.0", {}, {I32, "limit"}),
        Value("setApPressureCalibrationExtern", "1.0",
              {{I32, "sensorId"}, {I32, "testCtrl"}, {VEC, "rawData"}}, {I32, "result"}),
        Callback("getFlickerRawData", "1.0", {{I32, "value"}},
                 {{I32, "resultCode"}, {VEC, "samples"}}),
        Value("setPsExternalIrMode", "1.0", {{I32, "mode"}}, {I32, "result"}),
        Value("sensorActivate", "1.0",
              {{I32, "sensorType"}, {BOOL, "enable"}, {I64, "samplingRate"}},
              {I32, "activeResult"}),
        Callback("handleSensorParameter", "1.1",
                 {{I32, "sensorId"}, {I32, "mainCmd"}, {I32, "subCmd"}, {I32, "length"}},
                 {{I32, "ret"}, {STR, "info"}, {VEC, "values"}}),
    };
}

std::vector<OperationInfo> PowerOperations() {
    return {
        Callback("getPowerState", "1.0", {{STR, "query"}}, {{I32, "code"}, {STR, "info"}}),
        Value("setPowerState", "1.0", {{STR, "testScene"}, {STR, "para"}}, {I32, "result"}),
        Callback("checkUsbSpeed", "1.0",
                 {{STR, "scene"}, {STR, "arg1"}, {STR, "arg2"}, {STR, "arg3"}},
                 {{I32, "code"}, {STR, "info"}}),
    };
}

std::vector<OperationInfo> LightOperations() {
    return {
        Value("setLightBrightness", "2.0", {{I32, "lightId"}, {I32, "brightness"}},
              {I32, "result"}),
    };
}

std::vector<OperationInfo> OtherdevicesOperations() {
    return {
        Callback("getTouchkeyCapacitanceTestResult", "1.0", {{I32, "value"}},
                 {{I32, "ret"}, {STR, "failInfo"}}),
        Value("getTouchKeySupportState", "1.0", {{I32, "value"}}, {I32, "state"}),
    };
}

struct DefaultText {
    Service service;
    const char* operation;
    const char* answer;
};

// A healthy device, so that a console shows real answers.
constexpr DefaultText kDefaults[] = {
    {Service::kFactory, "isFactoryVersion", "true"},
    {Service::kFactory, "getManufactureFileName", R"(0,"mmi_manufacture_2611.xml")"},
    {Service::kFactory, "setMmiTestResult", "0"},
    {Service::kFactory, "getFactoryInfo", R"(0,"")"},  // per info kind: kFactoryInfoDefaults
    {Service::kFactory, "setFactoryInfo", "0"},
    {Service::kFactory, "getManufactureStationFlag", R"(0,"PASS")"},
    {Service::kFactory, "getMmiDeviceFeaturesCheckResult", "0"},
    {Service::kFactory, "executeHighTemperInterceptCmd", R"(0,"intercept ok")"},
    {Service::kFactory, "sendBigDataOperation", "0"},
    {Service::kFactory, "sendBigDataValue", "0"},
    {Service::kFactory, "releaseFactoryHidlResource", "0"},
    {Service::kFactory, "readOeminfo", R"(0,"0703")"},
    {Service::kFactory, "writeOeminfo", "0"},
    {Service::kFactory, "getManufactureMode", "1"},
    {Service::kDisplay, "setDisplayFps", "0"},
    {Service::kDisplay, "getDisplayFpsConfig", R"(0,"60,90,120")"},
    {Service::kTouchscreen, "getRotateCrownTestResult", R"(true,"crown rotation 360 ok")"},
    {Service::kTouchscreen, "getCapacitanceTestResult", R"(0,"")"},
    {Service::kTouchscreen, "getCapacitanceCalibrateResult", R"(0,"calibrated")"},
    {Service::kTouchscreen, "getTpPressureWaitingTime", "5000"},
    {Service::kTouchscreen, "isTpPressureSupported", "true"},
    {Service::kTouchscreen, "getTpPressureStatus", "0"},
    {Service::kTouchscreen, "getTpPressureVerifyResult", "0"},
    {Service::kTouchscreen, "controlTpPressureCalibMode0", "true"},
    {Service::kTouchscreen, "controlTpPressureCalibMode1", "true"},
    {Service::kTouchscreen, "setTpPressureCalibration0", "true"},
    {Service::kTouchscreen, "setTpPressureCalibration1", "true"},
    {Service::kTouchscreen, "setTpPressureVerification0", "true"},
    {Service::kTouchscreen, "setTpPressureVerification1", "true"},
    {Service::kTouchscreen, "checkTpPressureCalibPosition", "0"},
    {Service::kTouchscreen, "setTouchScreenFeatureConfig", "0"},
    {Service::kSensors, "getSensorCalibrateDelayTime", "3000"},
    {Service::kSensors, "getSensorSelfTestDelayTime", "3000"},
    {Service::kSensors, "startSensorCalibrate", "0"},
    {Service::kSensors, "getSensorCalibrateResult", "0"},
    {Service::kSensors, "startSensorSelfTest", "0"},
    {Service::kSensors, "getSensorSelfTestResult", "0"},
    {Service::kSensors, "getSensorCalibrateType", R"(0,"offset")"},
    {Service::kSensors, "getCompassRawValueLimit", "2000"},
    {Service::kSensors, "setApPressureCalibrationExtern", "0"},
    {Service::kSensors, "getFlickerRawData", "0"},  // samples: FlickerSamples()
    {Service::kSensors, "setPsExternalIrMode", "0"},
    {Service::kSensors, "sensorActivate", "0"},
    {Service::kSensors, "handleSensorParameter",
     R"(0,"als calibration ok",[412,398,405,401,1000,64,3,1])"},
    {Service::kPower, "getPowerState", R"(0,"capacity=85,status=charging")"},
    {Service::kPower, "setPowerState", "0"},
    {Service::kPower, "checkUsbSpeed", R"(0,"USB3.0 5Gbps")"},
    {Service::kLight, "setLightBrightness", "0"},
    {Service::kOtherdevices, "getTouchkeyCapacitanceTestResult", R"(0,"")"},
    {Service::kOtherdevices, "getTouchKeySupportState", "1"},
};

// getFactoryInfo by info kind: the BSN, the MMI auto-start flag, the memory-card test result.
constexpr struct {
    int32_t kind;
    const char* answer;
} kFactoryInfoDefaults[] = {
    {0, R"(0,"KX2611220001A7")"},
    {5, R"(0,"1")"},
    {14, R"(0,"pass")"},
};

// 256 samples of a light source flickering at 100 Hz, taken at 1000 samples per second: on for
// five samples, off for five.
std::vector<int32_t> FlickerSamples() {
    std::vector<int32_t> samples(256);
    for (size_t n = 0; n < samples.size(); ++n) samples[n] = n % 10 < 5 ? 1000 : 0;
    return samples;
}

// A default that does not fit its own operation is a defect of this file; stop at once.
Answer CheckedDefault(Service service, const char* operation, const char* text) {
    const OperationInfo* info = SimDevice::FindOperation(service, operation);
    std::string error;
    std::optional<Answer> parsed = Answer::Parse(text, &error);
    std::optional<Answer> fitted;
    if (info != nullptr && parsed) fitted = internal::FitAnswer(*info, *parsed, &error);
    if (!fitted) {
        std::fprintf(stderr, "simdevice: bad default for %s.%s: %s\n", ServiceName(service),
                     operation, error.c_str());
        std::abort();
    }
    return *fitted;
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

const Answer& DefaultAnswer(const OperationInfo& info) {
    struct Entry {
        const OperationInfo* info;
        Answer answer;
    };
    static const std::vector<Entry> kTable = [] {
        std::vector<Entry> table;
        for (const DefaultText& d : kDefaults) {
            Answer answer = CheckedDefault(d.service, d.operation, d.answer);
            if (d.service == Service::kSensors &&
                std::string_view(d.operation) == "getFlickerRawData") {
                answer = Answer::Values({int64_t{0}, FlickerSamples()});
            }
            table.push_back(Entry{SimDevice::FindOperation(d.service, d.operation), answer});
        }
        return table;
    }();
    for (const Entry& e : kTable) {
        if (e.info == &info) return e.answer;
    }
    std::fprintf(stderr, "simdevice: no default for %s\n", info.name);
    std::abort();
}

const Answer* KeyedDefaultAnswer(const OperationInfo& info, int64_t key) {
    static const OperationInfo* const kGetFactoryInfo =
        SimDevice::FindOperation(Service::kFactory, "getFactoryInfo");
    static const std::vector<std::pair<int32_t, Answer>> kTable = [] {
        std::vector<std::pair<int32_t, Answer>> table;
        for (const auto& d : kFactoryInfoDefaults) {
            table.emplace_back(d.kind,
                               CheckedDefault(Service::kFactory, "getFactoryInfo", d.answer));
        }
        return table;
    }();
    if (&info != kGetFactoryInfo) return nullptr;
    for (const auto& [kind, answer] : kTable) {
        if (kind == key) return &answer;
    }
    return nullptr;
}

}  // namespace internal
}  // namespace simdevice
