#include "reference_detector.h"

#include <cmath>
#include <cstring>

namespace reference {

static int32_t Trunc(float v) {
    return std::isnan(v) ? 0 : v >= 0x1p31f ? INT32_MAX : v < -0x1p31f ? INT32_MIN : int32_t(v);
}

void InitFftCoef(AlgoContext& ctx) {
    for (int32_t i = 0; i < ctx.fftLength; ++i) {
        ctx.fftCoef[i] = cosf(static_cast<float>(i) * 6.2832f / static_cast<float>(ctx.fftLength));
    }
}

void InitHammingWindowFiltert(AlgoContext& ctx) {
    const float d = static_cast<float>(ctx.dataLength - 1);
    for (int32_t i = 0; i < ctx.dataLength; ++i) {
        ctx.hammingWindow[i] = 0.54f - 0.46f * cosf(static_cast<float>(i) * 6.2832f / d);
    }
}

void BandingLpf(const int32_t* in, int32_t* out, int32_t len) {
    std::memset(out, 0, static_cast<size_t>(len) * 4);
    out[0] = in[0];
    out[1] = in[1];
    for (int32_t n = 2; n < len; ++n) {
        const int64_t acc = 20LL * in[n] + 41LL * in[n - 1] + 20LL * in[n - 2] +
                            1598LL * out[n - 1] - 657LL * out[n - 2];
        out[n] = static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(acc / 1024)));
    }
}

int32_t AnalyseDataWithFft(AlgoContext& ctx) {
    const int32_t len = ctx.fftLength;
    const int32_t q = (3 * len) / 4;
    for (int32_t k = 0; k < 500; ++k) {
        float re = 0.0f;
        float im = 0.0f;
        for (int32_t n = 0; n < len; ++n) {
            const float x = static_cast<float>(ctx.fftData[n]);
            re = re + ctx.fftCoef[(k * n) % len] * x;
            im = im - ctx.fftCoef[(q + k * n) % len] * x;
        }
        ctx.realPart[k] = re;
        ctx.imagPart[k] = im;
        ctx.amplitude[k] = sqrtf(re * re + im * im);
    }
    int32_t bin = 0;  // the first strongest of bins 20..498 above 0
    for (int32_t k = 20; k <= 498; ++k) {
        if (ctx.amplitude[k] > (bin == 0 ? 0.0f : ctx.amplitude[bin])) bin = k;
    }
    return Trunc(static_cast<float>(bin) * (ctx.sampleRate / static_cast<float>(len)));
}

int32_t CaclueFrequencyInPlace(AlgoContext& ctx) {
    reference::BandingLpf(ctx.originalData, ctx.lpfData, 256);
    for (int32_t i = 0; i < ctx.dataLength; ++i) {
        ctx.lpfData[i] = Trunc(ctx.hammingWindow[i] * static_cast<float>(ctx.lpfData[i]));
    }
    for (int32_t n = 0; n < ctx.fftLength; ++n) ctx.fftData[n] = 0;
    for (int32_t i = 0; i < ctx.dataLength; ++i) ctx.fftData[i] = ctx.lpfData[i];
    return reference::AnalyseDataWithFft(ctx);
}

int32_t DetectFlickerFrequence(const int32_t* samples, int32_t count, float rate) {
    AlgoContext ctx{};
    ctx.dataLength = count;
    ctx.sampleRate = rate;
    std::memcpy(ctx.originalData, samples, 256 * sizeof(int32_t));
    ctx.fftLength = 1024;
    reference::InitFftCoef(ctx);
    reference::InitHammingWindowFiltert(ctx);
    return reference::CaclueFrequencyInPlace(ctx);
}

}  // namespace reference
