// A healthy simulated device with empty call and log records before every factory test.
#ifndef KXMMI_TESTS_FACTORY_FACTORY_FIXTURE_H
#define KXMMI_TESTS_FACTORY_FACTORY_FIXTURE_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "device_test.h"
#include "jvm_harness.h"

namespace factorytest {

using kxtest::LogLine;

constexpr int D = 3;
constexpr int E = 6;

inline LogLine Debug(const std::string& text) { return {D, "KxMMITest_jni: " + text}; }
inline LogLine Error(const std::string& text) { return {E, "KxMMITest_jni: " + text}; }

// "getBsn" of "factory.getBsn(...)", a call as the device records it.
inline std::string OperationOf(const std::string& callText) {
    size_t dot = callText.find('.');
    return callText.substr(dot + 1, callText.find('(') - dot - 1);
}

// A native call whose Java result is shown as text, so that tables can mix result types.
template <typename... A>
std::function<std::string()> Int(const char* method, const char* signature, A... args) {
    return [=] { return std::to_string(kxtest::CallInt(method, signature, args...)); };
}
inline std::function<std::string()> Bool(const char* method, const char* signature) {
    return [=] { return std::string(kxtest::CallBool(method, signature) ? "1" : "0"); };
}
template <typename... A>
std::function<std::string()> Str(const char* method, const char* signature, A... args) {
    return [=] { return kxtest::CallString(method, signature, args...).value_or("<null>"); };
}

class FactoryTest : public kxtest::DeviceTest {
  protected:
    static void Answer(const char* operation, const std::string& answer) {
        DeviceTest::Answer(simdevice::Service::kFactory, operation, answer);
    }
};

}  // namespace factorytest

#endif
