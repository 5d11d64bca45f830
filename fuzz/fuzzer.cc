// detector_fuzzer: the flicker detector and its filter against their plain evaluation (tests/algo)
// bit for bit. hex_text_fuzzer: ConvertBinToString, the encoder of signature data, with any bytes,
// counts, capacities (doubling past 32 bits) and null pointers. text_fuzzer: the conversion of
// service texts for Java, judged by the suites' own modified UTF-8 checker.
#include <android/log.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "flicker_detector.h"
#include "hex_text.h"
#include "modified_utf8.h"
#include "modified_utf8_check.h"
#include "reference_detector.h"

#define CHECK(c) ((c) ? (void)0 : (std::fprintf(stderr, "check failed: %s\n", #c), std::abort()))

namespace {

std::vector<std::string> g_lines;
constexpr int32_t kEdges[] = {INT32_MIN, -1, 0, 1, 2, 255, 256, 299, 300, 301, INT32_MAX};

float AnyRate(FuzzedDataProvider& in) {
    const int kind = in.ConsumeIntegralInRange(0, 2);
    if (kind < 2) return kind == 0 ? 1000.0f : in.ConsumeFloatingPointInRange(-4000.0f, 4000.0f);
    uint32_t bits = in.ConsumeIntegral<uint32_t>();  // infinities, NaNs, subnormals too
    float rate;
    std::memcpy(&rate, &bits, sizeof(rate));
    return rate;
}

// Light levels as a sensor gives them, or anything.
template <size_t N>
void Fill(FuzzedDataProvider& in, int32_t (&values)[N]) {
    const bool small = in.ConsumeBool();
    for (int32_t& v : values) {
        v = small ? in.ConsumeIntegralInRange(-70000, 70000) : in.ConsumeIntegral<int32_t>();
    }
}

// A count above 300 answers -1 and leaves the frequency alone; 0 or less gives 0.
[[maybe_unused]] void Detect(FuzzedDataProvider& in) {
    const int32_t count =
        in.ConsumeBool() ? in.ConsumeIntegralInRange(-2, 310) : in.PickValueInArray(kEdges);
    const float rate = AnyRate(in);
    int32_t samples[256], before[256];
    Fill(in, samples);
    std::memcpy(before, samples, sizeof(samples));
    int32_t frequency = 0x5a5a5a5a;
    const int32_t result = DetectFlickerFrequence(samples, count, frequency, rate);
    CHECK(std::memcmp(before, samples, sizeof(samples)) == 0);
    CHECK(result == (count > 300 ? -1 : 0));
    CHECK(frequency == (count > 300  ? 0x5a5a5a5a
                        : count <= 0 ? 0
                                     : reference::DetectFlickerFrequence(samples, count, rate)));
}

// Outside 1..300 the filter answers -1 and writes nothing.
[[maybe_unused]] void Filter(FuzzedDataProvider& in) {
    const int32_t len =
        in.ConsumeBool() ? in.ConsumeIntegralInRange(-2, 305) : in.PickValueInArray(kEdges);
    int32_t input[300], output[300], expected[300];
    Fill(in, input);
    Fill(in, output);
    std::memcpy(expected, output, sizeof(output));
    const bool valid = len >= 1 && len <= 300;
    CHECK(BandingLpf(input, output, len) == (valid ? 0 : -1));
    if (valid) reference::BandingLpf(input, expected, len);
    CHECK(std::memcmp(expected, output, sizeof(output)) == 0);
}

// The output buffer is exactly as large as claimed: an accepted call writes the lower-case text and
// nothing more, a refused one nothing at all and its one error line.
[[maybe_unused]] void Encode(FuzzedDataProvider& in) {
    const bool nullNum = in.ConsumeIntegralInRange(0, 15) == 0;
    const bool nullStr = in.ConsumeIntegralInRange(0, 15) == 0;
    uint32_t numLen, strLen;
    size_t numBytes = 16, strBytes = 16;  // what the caller really holds
    if (in.ConsumeIntegralInRange(0, 7) == 0) {
        // Counts too large to hold: only a refusal is right, with or without 32-bit wrap-around.
        numLen = in.ConsumeIntegralInRange<uint32_t>(0x40000000u, UINT32_MAX);
        strLen = in.ConsumeBool() ? 2u * numLen : in.ConsumeIntegral<uint32_t>();
        strLen = static_cast<uint32_t>(std::min<uint64_t>(strLen, 2ull * numLen - 1));
    } else {
        numBytes = numLen = in.ConsumeIntegralInRange<uint32_t>(0, 4096);
        strBytes = strLen = in.ConsumeIntegralInRange<uint32_t>(0, 2 * numLen + 16);
    }
    std::vector<uint8_t> num = in.ConsumeBytes<uint8_t>(numBytes);
    num.resize(numBytes);
    // Heap blocks of exactly the claimed sizes, so that the sanitizer sees any access beyond them.
    auto* numBuffer = static_cast<unsigned char*>(std::malloc(std::max<size_t>(numBytes, 1)));
    auto* str = static_cast<char*>(std::malloc(std::max<size_t>(strBytes, 1)));
    std::copy(num.begin(), num.end(), numBuffer);
    std::fill(str, str + strBytes, '\xa5');

    g_lines.clear();
    const int32_t result =
        ConvertBinToString(nullNum ? nullptr : numBuffer, numLen, nullStr ? nullptr : str, strLen);
    const bool valid = !nullNum && !nullStr && numLen != 0 && uint64_t{strLen} >= 2ull * numLen;
    std::string expected(strBytes, '\xa5');
    for (uint32_t i = 0; valid && i < numLen; ++i) {
        expected[2 * i] = "0123456789abcdef"[numBuffer[i] >> 4];
        expected[2 * i + 1] = "0123456789abcdef"[numBuffer[i] & 15];
    }
    CHECK(result == (valid ? 0 : -1));
    CHECK(std::string(str, strBytes) == expected);
    const std::string line =
        "6 KxMMITest_jni: ConvertBinToString fail, parameter is invalid, numLen: " +
        std::to_string(numLen) + ", strLen: " + std::to_string(strLen);
    CHECK(g_lines == (valid ? std::vector<std::string>{} : std::vector<std::string>{line}));
    std::free(numBuffer);
    std::free(str);
}

// Any bytes up to the first zero: the result is always valid modified UTF-8, valid text comes back
// unchanged, and converting twice changes nothing.
[[maybe_unused]] void Convert(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);  // ends at a zero either way
    const std::string converted = kxmmi::ToModifiedUtf8(text.c_str());
    CHECK(kxtest::IsModifiedUtf8(converted));
    const std::string head = text.substr(0, text.find('\0'));
    if (kxtest::IsModifiedUtf8(head)) CHECK(converted == head);
    CHECK(kxmmi::ToModifiedUtf8(converted.c_str()) == converted);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    __android_log_set_logger([](const struct __android_logger_data* data, const char* message) {
        g_lines.push_back(std::to_string(data->priority) + " " + message);
    });
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
#if defined(KXMMI_FUZZ_TEXT)  // text_fuzzer
    Convert(data, size);
#elif defined(KXMMI_FUZZ_ENCODER)  // hex_text_fuzzer
    Encode(in);
#else                              // detector_fuzzer
    in.ConsumeBool() ? Detect(in) : Filter(in);
#endif
    return 0;
}
