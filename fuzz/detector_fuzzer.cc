// Fuzzes the flicker detector's exported entry points against the plain evaluation it must match
// bit for bit (tests/algo/reference_detector), within the ranges each entry point accepts:
//   0: DetectFlickerFrequence with any samples, count and rate (a count above 300 must answer -1
//      and leave the frequency alone; a count of 0 or less must give 0);
//   1: BandingLpf with any samples and length (outside 1..300 it must answer -1 and write nothing);
//   2: the calculation stage on any state whose lengths are in range;
//   3: the transform and peak search on any transform input.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "flicker_detector.h"
#include "reference_detector.h"

namespace {

// Ends the run; libFuzzer keeps the input that led here.
[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "check failed: %s\n", what);
    std::abort();
}
#define CHECK(cond)               \
    do {                          \
        if (!(cond)) Fail(#cond); \
    } while (0)

float AnyRate(FuzzedDataProvider& in) {
    switch (in.ConsumeIntegralInRange(0, 2)) {
        case 0:
            return 1000.0f;
        case 1:
            return in.ConsumeFloatingPointInRange(-4000.0f, 4000.0f);
        default: {  // any bit pattern: infinities, NaNs, subnormals
            uint32_t bits = in.ConsumeIntegral<uint32_t>();
            float rate;
            std::memcpy(&rate, &bits, sizeof(rate));
            return rate;
        }
    }
}

template <size_t N>
void Fill(FuzzedDataProvider& in, int32_t (&values)[N]) {
    const bool small = in.ConsumeBool();  // light levels as a sensor gives them, or anything
    for (int32_t& v : values) {
        v = small ? in.ConsumeIntegralInRange(-70000, 70000) : in.ConsumeIntegral<int32_t>();
    }
}

bool SameFloats(const float* a, const float* b, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (std::isnan(a[i]) && std::isnan(b[i])) continue;
        if (std::memcmp(&a[i], &b[i], sizeof(float)) != 0) return false;
    }
    return true;
}

void Detect(FuzzedDataProvider& in) {
    const int32_t count =
        in.ConsumeBool() ? in.ConsumeIntegralInRange(-2, 310) : in.ConsumeIntegral<int32_t>();
    const float rate = AnyRate(in);
    int32_t samples[256];
    Fill(in, samples);
    int32_t before[256];
    std::memcpy(before, samples, sizeof(samples));

    constexpr int32_t kUntouched = 0x5a5a5a5a;
    int32_t frequency = kUntouched;
    const int32_t result = DetectFlickerFrequence(samples, count, frequency, rate);
    CHECK(std::memcmp(before, samples, sizeof(samples)) == 0);
    if (count > 300) {
        CHECK(result == -1);
        CHECK(frequency == kUntouched);
        return;
    }
    CHECK(result == 0);
    if (count <= 0) {
        CHECK(frequency == 0);
        return;
    }
    CHECK(frequency == reference::DetectFlickerFrequence(samples, count, rate));
}

void Filter(FuzzedDataProvider& in) {
    const int32_t len =
        in.ConsumeBool() ? in.ConsumeIntegralInRange(-2, 305) : in.ConsumeIntegral<int32_t>();
    int32_t input[300];
    int32_t output[300];
    Fill(in, input);
    Fill(in, output);
    int32_t expected[300];
    std::memcpy(expected, output, sizeof(output));

    const int32_t result = BandingLpf(input, output, len);
    if (len < 1 || len > 300) {
        CHECK(result == -1);
        CHECK(std::memcmp(expected, output, sizeof(output)) == 0);
        return;
    }
    CHECK(result == 0);
    reference::BandingLpf(input, expected, len);
    CHECK(std::memcmp(expected, output, sizeof(output)) == 0);
}

void Calculate(FuzzedDataProvider& in) {
    static AlgoContext ctx;
    static AlgoContext copy;
    std::memset(&ctx, 0, sizeof(ctx));
    ctx.fftLength = in.ConsumeIntegralInRange(-2, 1024);
    ctx.dataLength = in.ConsumeIntegralInRange(-2, 300);
    ctx.sampleRate = AnyRate(in);
    Fill(in, ctx.originalData);
    Fill(in, ctx.lpfData);
    InitFftCoef(ctx);
    InitHammingWindowFiltert(ctx);
    std::memcpy(&copy, &ctx, sizeof(ctx));
    reference::InitFftCoef(copy);
    reference::InitHammingWindowFiltert(copy);
    CHECK(SameFloats(ctx.fftCoef, copy.fftCoef, 1024));
    CHECK(SameFloats(ctx.hammingWindow, copy.hammingWindow, 300));

    const int32_t frequency = CaclueFrequency(ctx);
    CHECK(frequency == reference::CaclueFrequencyInPlace(copy));
    // The stage works on its own copy: the caller's state is left as it was.
    std::memcpy(&copy, &ctx, sizeof(ctx));
    CaclueFrequency(ctx);
    CHECK(std::memcmp(&copy, &ctx, sizeof(ctx)) == 0);
}

void Transform(FuzzedDataProvider& in) {
    static AlgoContext ctx;
    static AlgoContext copy;
    std::memset(&ctx, 0, sizeof(ctx));
    ctx.fftLength = in.ConsumeIntegralInRange(1, 1024);
    ctx.sampleRate = AnyRate(in);
    InitFftCoef(ctx);
    Fill(in, ctx.fftData);
    std::memcpy(&copy, &ctx, sizeof(ctx));
    CHECK(AnalyseDataWithFft(ctx) == reference::AnalyseDataWithFft(copy));
    CHECK(SameFloats(ctx.realPart, copy.realPart, 500));
    CHECK(SameFloats(ctx.imagPart, copy.imagPart, 500));
    CHECK(SameFloats(ctx.amplitude, copy.amplitude, 500));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    switch (in.ConsumeIntegralInRange(0, 3)) {
        case 0:
            Detect(in);
            break;
        case 1:
            Filter(in);
            break;
        case 2:
            Calculate(in);
            break;
        default:
            Transform(in);
    }
    return 0;
}
