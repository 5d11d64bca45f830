// Hexadecimal signature data, and arguments that never reach JNI or the service.
#include <cstdio>
#include <optional>

#include "factory_fixture.h"

namespace factorytest {
namespace {

using kxtest::JStr;

using ConvertFn = int32_t (*)(const unsigned char*, uint32_t, char*, uint32_t);
constexpr const char* kConvert = "_Z18ConvertBinToStringPKhjPcj";
constexpr const char* kVerify = "([B)I";

std::string ConvertLine(uint32_t numLen, uint32_t strLen) {
    return "ConvertBinToString fail, parameter is invalid, numLen: " + std::to_string(numLen) +
           ", strLen: " + std::to_string(strLen);
}

using Commands = FactoryTest;

TEST_F(Commands, ConvertBinToStringWritesLowerCaseHexWithoutTerminator) {
    auto convert = reinterpret_cast<ConvertFn>(kxtest::LibrarySymbol(kConvert));
    ASSERT_NE(convert, nullptr);
    const std::vector<unsigned char> bytes = {0x00, 0x7f, 0xa5, 0xff};
    const struct {
        bool nullNum, nullStr;
        uint32_t numLen, strLen;
        std::string out;  // the 12-character buffer afterwards, filled with '#' before
    } cases[] = {
        {false, false, 4, 8, "007fa5ff####"},  // exactly twice the count, no terminator
        {false, false, 4, 12, "007fa5ff####"},
        {false, false, 1, 2, "00##########"},
        {false, false, 4, 7, "############"},  // one short
        {false, false, 0, 12, "############"},
        {true, false, 4, 12, "############"},
        {false, true, 4, 12, "############"},
        {false, false, 0x80000000u, 0, "############"},  // twice the count overflows 32 bits
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.numLen) + " into " + std::to_string(c.strLen));
        char buffer[12];
        std::fill(std::begin(buffer), std::end(buffer), '#');
        int32_t ret = convert(c.nullNum ? nullptr : bytes.data(), c.numLen,
                              c.nullStr ? nullptr : buffer, c.strLen);
        bool fails = c.out[0] == '#';
        EXPECT_EQ(ret, fails ? -1 : 0);
        EXPECT_EQ(std::string(buffer, sizeof buffer), c.out);
        EXPECT_EQ(kxtest::TakeLogs(), fails ? std::vector{Error(ConvertLine(c.numLen, c.strLen))}
                                            : std::vector<LogLine>{});
    }
}

TEST_F(Commands, SignatureDataReachesTheServiceAsHexOfKind11) {
    std::vector<uint8_t> every(256);
    std::string everyHex;
    for (int b = 0; b < 256; ++b) {
        every[b] = static_cast<uint8_t>(b);
        char two[3];
        std::snprintf(two, sizeof two, "%02x", b);
        everyHex += two;
    }
    const struct {
        std::optional<std::vector<uint8_t>> bytes;  // nullopt: a null array
        std::string hex;                            // empty: the service is not called
        std::vector<LogLine> lines;
    } cases[] = {
        {std::vector<uint8_t>{0x00, 0x7f, 0xa5, 0xff},
         "007fa5ff",
         {Debug("GetVerifySignatureResult, ret: 3")}},
        {every, everyHex, {Debug("GetVerifySignatureResult, ret: 3")}},
        {std::vector<uint8_t>{},
         "",
         {Error(ConvertLine(0, 0)), Error("GetVerifySignatureResult, convertBinToString fail")}},
        {std::nullopt, "", {Error("GetVerifySignatureResult fail, data is null")}},
    };
    Answer("setFactoryInfo", "3");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes ? std::to_string(c.bytes->size()) + " bytes" : "null array");
        jbyteArray data = c.bytes ? kxtest::JBytes(*c.bytes) : nullptr;
        EXPECT_EQ(kxtest::CallInt("getVerifySignatureResultNative", kVerify, data),
                  c.hex.empty() ? -1 : 3);
        EXPECT_EQ(kxtest::TakeLogs(), c.lines);
        EXPECT_EQ(Calls(), c.hex.empty()
                               ? std::vector<std::string>{}
                               : std::vector{"factory.setFactoryInfo(11, \"" + c.hex + "\")"});
    }
}

TEST_F(Commands, NullTextArgumentsGiveOneLineAndNoServiceCall) {
    const char* kTwo = "(Ljava/lang/String;Ljava/lang/String;)I";
    const char* kOne = "(Ljava/lang/String;)I";
    EXPECT_EQ(kxtest::CallInt("disableMmiAutoStartNative", kOne, JStr(nullptr)), -1);
    EXPECT_EQ(kxtest::CallInt("setMockCardTestModeNative", kOne, JStr(nullptr)), -1);
    EXPECT_EQ(
        kxtest::CallInt("executeHighTemperInterceptCmdNative", kTwo, JStr(nullptr), JStr("p")), -1);
    EXPECT_EQ(
        kxtest::CallInt("executeHighTemperInterceptCmdNative", kTwo, JStr("s"), JStr(nullptr)), -1);
    EXPECT_EQ(kxtest::TakeLogs(),
              (std::vector{Error("SetMMIAutoStartFlag fail, flag is null"),
                           Error("SetZqCardTestMode fail, mode is null"),
                           Error("ExecuteHighTemperInterceptCmd fail, testScene is null"),
                           Error("ExecuteHighTemperInterceptCmd fail, parameters is null")}));
    EXPECT_TRUE(Calls().empty());
}

}  // namespace
}  // namespace factorytest
