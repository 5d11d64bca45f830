// Fixture of the suites that call natives against the simulated device: a healthy device with its
// default answers and nothing left over from the previous test, in the log or in the call record.
#ifndef KXMMI_TESTS_SUPPORT_DEVICE_TEST_H
#define KXMMI_TESTS_SUPPORT_DEVICE_TEST_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "jvm_harness.h"

namespace kxtest {

constexpr int D = 3;
constexpr int I = 4;
constexpr int W = 5;
constexpr int E = 6;

using Lines = std::vector<LogLine>;
using Texts = std::vector<std::string>;

// A line as the library writes it: the tag, then the text.
inline LogLine Line(int priority, const std::string& text) {
    return LogLine{priority, "KxMMITest_jni: " + text};
}

// The lines of a connect pass, row by row.
inline Lines ConnectLines() {
    return {Line(D, "InitMmiNativeManager"),    Line(D, "g_kxFactoryInterface linkToDeath"),
            Line(D, "g_kxDisplay linkToDeath"), Line(D, "g_kxTouchScreen linkToDeath"),
            Line(D, "g_kxSensors linkToDeath"), Line(D, "g_kxPower linkToDeath"),
            {D, "g_kxLight linkToDeath"},       Line(D, "g_kxOtherdevices linkToDeath")};
}

// Where line first is among lines; lines.size() when it is not.
inline size_t IndexOf(const Lines& lines, const LogLine& line) {
    return static_cast<size_t>(std::find(lines.begin(), lines.end(), line) - lines.begin());
}

// A native's Java result as text, the JNI call chosen by the signature's result type: a number,
// true or false, the string itself, an int array as "[1, 2]", or "<null>".
template <typename... A>
std::string Show(const char* method, const char* signature, A... args) {
    switch (std::strchr(signature, ')')[1]) {
        case 'I':
            return std::to_string(CallInt(method, signature, args...));
        case 'J':
            return std::to_string(CallLong(method, signature, args...));
        case 'Z':
            return CallBool(method, signature, args...) ? "true" : "false";
        case '[': {
            std::optional<std::vector<int32_t>> values = CallIntArray(method, signature, args...);
            if (!values) return "<null>";
            std::string text;
            for (int32_t v : *values) text += (text.empty() ? "" : ", ") + std::to_string(v);
            return "[" + text + "]";
        }
        default:
            return CallString(method, signature, args...).value_or("<null>");
    }
}

// The same call, to make later.
using Native = std::function<std::string()>;
template <typename... A>
Native Bind(const char* method, const char* signature, A... args) {
    return [=] { return Show(method, signature, args...); };
}

// Empties the log capture and the call record, which keep whatever they get.
inline void Forget() {
    TakeLogs();
    Device().TakeCalls();
}

// Every service registered with its default answers; log and call record empty.
inline void FreshDevice() {
    Manager();
    Device().Reset();
    WaitIdle();
    Forget();
}

class DeviceTest : public testing::Test {
  protected:
    void SetUp() override { FreshDevice(); }
    template <typename A>
    static void Answer(simdevice::Service service, const char* operation, const A& answer) {
        std::string error;
        ASSERT_TRUE(Device().Program(service, operation, answer, &error)) << error;
    }
    // The calls that reached the services since the last take, as "service.operation(args)".
    static Texts Calls() {
        Texts texts;
        for (const simdevice::Call& c : Device().TakeCalls()) texts.push_back(c.Text());
        return texts;
    }
    // Programs answer for the operation that call names ("service.operation(args)"), makes the
    // native call and checks its result, its lines and that call was its one service call.
    static void Check(const Native& native, const std::string& answer, const std::string& call,
                      const std::string& result, const Lines& lines) {
        SCOPED_TRACE(call + " answering " + answer);
        const size_t dot = call.find('.');
        std::optional<simdevice::Service> service = simdevice::ServiceFromName(call.substr(0, dot));
        ASSERT_TRUE(service) << "no service named in " << call;
        Answer(*service, call.substr(dot + 1, call.find('(') - dot - 1).c_str(), answer);
        EXPECT_EQ(native(), result);
        EXPECT_EQ(TakeLogs(), lines);
        EXPECT_EQ(Calls(), Texts{call});
    }
};

// The registry routines, called directly as the event holder would.
inline void Connect() {
    reinterpret_cast<void (*)()>(LibrarySymbol("_Z20InitMmiNativeManagerv"))();
}
inline void Release() {
    reinterpret_cast<void (*)()>(LibrarySymbol("_Z20ExitMmiNativeManagerv"))();
}
// Connects afresh (as a registration report does), then empties the log and the call record.
inline void Reconnect() {
    Connect();
    Forget();
}

}  // namespace kxtest

#endif
