// Answer texts, and programming operations with answers that fit or do not fit their shape.
#include <gtest/gtest.h>
#include <simdevice/sim_device.h>

#include <string>

namespace simdevice {
namespace {

TEST(AnswerParse, ReadsEveryFormIntoItsCanonicalText) {
    struct Case {
        const char* text;
        const char* canonical;
    };
    const Case cases[] = {
        {"7", "7"},
        {"  -3 ", "-3"},
        {"true", "true"},
        {"false", "false"},
        {R"(5,"info")", R"(5,"info")"},
        {"0 , [ 1, 2 ,3 ]", "0,[1,2,3]"},
        {R"(0,"x",[1,2,3])", R"(0,"x",[1,2,3])"},
        {"[]", "[]"},
        {"[-2147483648,2147483647]", "[-2147483648,2147483647]"},
        {"9223372036854775807,-9223372036854775808", "9223372036854775807,-9223372036854775808"},
        {R"("a\"b\\c\/d\n\t")", R"("a\"b\\c/d\u000a\u0009")"},
        {R"("\u00e9\ud83d\ude00")", "\"\xc3\xa9\xf0\x9f\x98\x80\""},
        {"nocallback", "nocallback"},
        {" transport-error\n", "transport-error"},
    };
    for (const Case& c : cases) {
        std::string error;
        std::optional<Answer> answer = Answer::Parse(c.text, &error);
        ASSERT_TRUE(answer) << c.text << ": " << error;
        EXPECT_EQ(answer->ToString(), c.canonical) << c.text;
        EXPECT_EQ(Answer::Parse(answer->ToString(), nullptr), answer) << c.text;
    }
}

TEST(AnswerParse, KeepsTypesAndBytes) {
    std::optional<Answer> answer = Answer::Parse(R"(-3,true,"q\"\\\u0001",[4])", nullptr);
    ASSERT_TRUE(answer);
    ASSERT_EQ(answer->kind(), Answer::Kind::kValues);
    ASSERT_EQ(answer->values().size(), 4u);
    EXPECT_EQ(std::get<int64_t>(answer->values()[0]), -3);
    EXPECT_EQ(std::get<bool>(answer->values()[1]), true);
    EXPECT_EQ(std::get<std::string>(answer->values()[2]), std::string("q\"\\\x01"));
    EXPECT_EQ(std::get<std::vector<int32_t>>(answer->values()[3]), std::vector<int32_t>{4});
    EXPECT_EQ(Answer::Parse("nocallback", nullptr)->kind(), Answer::Kind::kNoCallback);
    EXPECT_EQ(Answer::Parse("transport-error", nullptr)->kind(), Answer::Kind::kTransportError);
}

TEST(AnswerParse, RejectsMalformedTextsSayingWhy) {
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        {"", "empty answer"},
        {"   ", "empty answer"},
        {"1,", "column 3: expected a value after ','"},
        {"1 2", "column 3: expected ',' between values"},
        {"maybe", "found 'maybe'"},
        {"True", "found 'True'"},
        {"0x10", "not a decimal integer: '0x10'"},
        {"-", "expected digits after '-'"},
        {"9223372036854775808", "out of the 64-bit range"},
        {"[1,2", "unterminated vector"},
        {"[1;2]", "expected ',' or ']' in vector"},
        {R"([1,"a"])", "vectors hold integers only"},
        {"[2147483648]", "out of the int32 range"},
        {R"("abc)", "column 1: unterminated string"},
        {R"("a\qb")", "unknown escape \\q"},
        {R"("\u12")", "four hex digits"},
        {R"("\ud800")", "low surrogate"},
        {R"("\udc00")", "lone low surrogate"},
        {"\"a\tb\"", "control character"},
        {"1,nocallback", "'nocallback' must be the whole answer"},
        {"transport-error,1", "must be the whole answer"},
    };
    for (const Case& c : cases) {
        std::string error;
        EXPECT_FALSE(Answer::Parse(c.text, &error)) << c.text;
        EXPECT_NE(error.find(c.error), std::string::npos)
            << "text: " << c.text << "\nerror: " << error;
    }
}

TEST(AnswerProgram, AcceptsFittingAnswersAndNamesTheShapeOtherwise) {
    struct Case {
        Service service;
        const char* operation;
        const char* answer;
        const char* expect;  // canonical answer once accepted, or a part of the error
        bool accepted;
    };
    const Case cases[] = {
        {Service::kTouchscreen, "getTpPressureWaitingTime", "8589934592", "8589934592", true},
        {Service::kSensors, "handleSensorParameter", R"(0,"x",[1,2,3])", R"(0,"x",[1,2,3])", true},
        {Service::kSensors, "handleSensorParameter", "5", R"(5,"",[])", true},
        {Service::kTouchscreen, "getRotateCrownTestResult", "true", R"(true,"")", true},
        {Service::kDisplay, "getDisplayFpsConfig", "nocallback", "nocallback", true},
        {Service::kPower, "setPowerState", "transport-error", "transport-error", true},
        {Service::kLight, "setLightBrightness", "nocallback",
         "light.setLightBrightness answers value: int32 result; nocallback", false},
        {Service::kSensors, "getCompassRawValueLimit", "8589934592", "out of the int32 range",
         false},
        {Service::kTouchscreen, "isTpPressureSupported", "1",
         "value 1: expected bool supported, got an integer (1)", false},
        {Service::kSensors, "getFlickerRawData", "0,[1],3",
         "callback: int32 resultCode, int32[] samples; expected at most 2 values, got 3", false},
        {Service::kSensors, "getFlickerRawData", "0,5", "value 2: expected int32[] samples", false},
        {Service::kFactory, "isFactoryVersion", "true,false", "expected exactly one value", false},
        {Service::kFactory, "getBsn", "0", "factory has no operation \"getBsn\"", false},
        {Service::kPower, "getPowerState", "0,", "expected a value after ','", false},
    };
    SimDevice device;
    for (const Case& c : cases) {
        std::string error;
        bool accepted = device.Program(c.service, c.operation, c.answer, &error);
        ASSERT_EQ(accepted, c.accepted) << c.operation << " " << c.answer << ": " << error;
        if (accepted) {
            EXPECT_EQ(device.CurrentAnswer(c.service, c.operation)->ToString(), c.expect);
        } else {
            EXPECT_NE(error.find(c.expect), std::string::npos)
                << c.operation << " " << c.answer << "\nerror: " << error;
        }
    }
    // A refused answer leaves the previous one in place.
    EXPECT_EQ(device.CurrentAnswer(Service::kSensors, "getCompassRawValueLimit")->ToString(),
              "2000");
    device.ResetAnswers();
    EXPECT_EQ(device.CurrentAnswer(Service::kTouchscreen, "getTpPressureWaitingTime")->ToString(),
              "5000");
}

}  // namespace
}  // namespace simdevice
