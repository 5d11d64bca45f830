// Fuzzes ConvertBinToString, the hexadecimal encoder of signature data, with any bytes, any
// counts and capacities (lengths whose double overflows 32 bits among them) and null pointers.
// The output buffer is exactly as large as the capacity claimed, so a write past it is caught;
// an accepted call must write exactly the lower-case hexadecimal text and nothing more, a refused
// one nothing at all and its one error line.
#include <android/log.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "factory_commands.h"

namespace {

std::vector<std::string> g_lines;

void Capture(const struct __android_logger_data* data, const char* message) {
    g_lines.push_back(std::to_string(data->priority) + " " + message);
}

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "check failed: %s\n", what);
    std::abort();
}
#define CHECK(cond)               \
    do {                          \
        if (!(cond)) Fail(#cond); \
    } while (0)

constexpr char kUnwritten = '\xa5';

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    __android_log_set_logger(Capture);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const bool nullNum = in.ConsumeIntegralInRange(0, 15) == 0;
    const bool nullStr = in.ConsumeIntegralInRange(0, 15) == 0;
    uint32_t numLen;
    uint32_t strLen;
    size_t numBytes;  // what the caller really holds: all of numLen whenever the call may succeed
    size_t strBytes;
    if (in.ConsumeIntegralInRange(0, 7) == 0) {
        // Counts too large to hold: only a refusal is right, with or without 32-bit wrap-around.
        numLen = in.ConsumeIntegralInRange<uint32_t>(0x40000000u, UINT32_MAX);
        strLen = in.ConsumeBool() ? 2u * numLen : in.ConsumeIntegral<uint32_t>();
        const uint64_t tooSmall = 2ull * numLen - 1;
        if (strLen > tooSmall) strLen = static_cast<uint32_t>(tooSmall);
        numBytes = 16;
        strBytes = 16;
    } else {
        numLen = in.ConsumeIntegralInRange<uint32_t>(0, 4096);
        strLen = in.ConsumeIntegralInRange<uint32_t>(0, 2 * numLen + 16);
        numBytes = numLen;
        strBytes = strLen;
    }
    std::vector<uint8_t> num = in.ConsumeBytes<uint8_t>(numBytes);
    num.resize(numBytes);
    // Heap blocks of exactly the claimed sizes, so that the sanitizer sees any access beyond them.
    auto* numBuffer = static_cast<unsigned char*>(std::malloc(numBytes == 0 ? 1 : numBytes));
    auto* str = static_cast<char*>(std::malloc(strBytes == 0 ? 1 : strBytes));
    std::copy(num.begin(), num.end(), numBuffer);
    std::fill(str, str + strBytes, kUnwritten);

    g_lines.clear();
    const int32_t result =
        ConvertBinToString(nullNum ? nullptr : numBuffer, numLen, nullStr ? nullptr : str, strLen);
    const bool valid = !nullNum && !nullStr && numLen != 0 && uint64_t{strLen} >= 2ull * numLen;
    if (valid) {
        CHECK(result == 0);
        CHECK(g_lines.empty());
        static const char kDigits[] = "0123456789abcdef";
        for (uint32_t i = 0; i < numLen; ++i) {
            CHECK(str[2 * i] == kDigits[numBuffer[i] >> 4]);
            CHECK(str[2 * i + 1] == kDigits[numBuffer[i] & 15]);
        }
        for (size_t i = 2 * size_t{numLen}; i < strBytes; ++i) CHECK(str[i] == kUnwritten);
    } else {
        CHECK(result == -1);
        for (size_t i = 0; i < strBytes; ++i) CHECK(str[i] == kUnwritten);
        char line[160];
        std::snprintf(line, sizeof(line),
                      "6 KxMMITest_jni: ConvertBinToString fail, parameter is invalid, numLen: %u, "
                      "strLen: %u",
                      numLen, strLen);
        CHECK(g_lines.size() == 1 && g_lines[0] == line);
    }
    std::free(numBuffer);
    std::free(str);
    return 0;
}
