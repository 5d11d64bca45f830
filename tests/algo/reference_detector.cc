#include "reference_detector.h"

#include <cmath>
#include <cstring>

namespace reference {
namespace {

int32_t Trunc(float v) {
    if (std::isnan(v)) return 0;
    if (v >= 2147483648.0f) return INT32_MAX;
    if (v <= -2147483648.0f) return INT32_MIN;
    return static_cast<int32_t>(v);
}

}  // namespace

void InitFftCoef(AlgoContext& ctx) {
    const int32_t n_len = ctx.fftLength;
    for (int32_t i = 0; i < n_len; ++i) {
        float a = static_cast<float>(i) * 6.2832f;
        a = a / static_cast<float>(n_len);
        ctx.fftCoef[i] = cosf(a);
    }
}

void InitHammingWindowFiltert(AlgoContext& ctx) {
    const int32_t m_len = ctx.dataLength;
    const float d = static_cast<float>(m_len - 1);
    for (int32_t i = 0; i < m_len; ++i) {
        float a = static_cast<float>(i) * 6.2832f;
        a = a / d;
        float p = 0.46f * cosf(a);
        ctx.hammingWindow[i] = 0.54f - p;
    }
}

void BandingLpf(const int32_t* in, int32_t* out, int32_t len) {
    std::memset(out, 0, static_cast<size_t>(len) * 4);
    out[0] = in[0];
    out[1] = in[1];
    for (int32_t n = 2; n < len; ++n) {
        int64_t acc = 20LL * in[n] + 41LL * in[n - 1] + 20LL * in[n - 2] + 1598LL * out[n - 1] -
                      657LL * out[n - 2];
        int64_t q = acc / 1024;
        out[n] = static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(q)));
    }
}

void ProcessHammingWindowFilter(AlgoContext& ctx) {
    for (int32_t i = 0; i < ctx.dataLength; ++i) {
        float v = ctx.hammingWindow[i] * static_cast<float>(ctx.lpfData[i]);
        ctx.lpfData[i] = Trunc(v);
    }
}

int32_t AnalyseDataWithFft(AlgoContext& ctx) {
    const int32_t n_len = ctx.fftLength;
    const int32_t q = (3 * n_len) / 4;
    for (int32_t k = 0; k < 500; ++k) {
        float re = 0.0f;
        float im = 0.0f;
        for (int32_t n = 0; n < n_len; ++n) {
            int32_t m = k * n;
            float x = static_cast<float>(ctx.fftData[n]);
            float pr = ctx.fftCoef[m % n_len] * x;
            re = re + pr;
            float pi = ctx.fftCoef[(q + m) % n_len] * x;
            im = im - pi;
        }
        ctx.realPart[k] = re;
        ctx.imagPart[k] = im;
        float rr = re * re;
        float ii = im * im;
        float s = rr + ii;
        ctx.amplitude[k] = sqrtf(s);
    }
    float best = 0.0f;
    int32_t bin = 0;
    for (int32_t k = 20; k <= 498; ++k) {
        if (ctx.amplitude[k] > best) {
            best = ctx.amplitude[k];
            bin = k;
        }
    }
    float width = ctx.sampleRate / static_cast<float>(n_len);
    float hz = static_cast<float>(bin) * width;
    return Trunc(hz);
}

int32_t CaclueFrequencyInPlace(AlgoContext& ctx) {
    reference::BandingLpf(ctx.originalData, ctx.lpfData, 256);
    reference::ProcessHammingWindowFilter(ctx);
    for (int32_t n = 0; n < ctx.fftLength; ++n) ctx.fftData[n] = 0;
    for (int32_t i = 0; i < ctx.dataLength; ++i) ctx.fftData[i] = ctx.lpfData[i];
    return reference::AnalyseDataWithFft(ctx);
}

int32_t DetectFlickerFrequence(const int32_t* samples, int32_t count, float rate) {
    AlgoContext ctx;
    std::memset(&ctx, 0, sizeof(ctx));
    ctx.dataLength = count;
    ctx.sampleRate = rate;
    std::memcpy(ctx.originalData, samples, 256 * sizeof(int32_t));
    ctx.fftLength = 1024;
    reference::InitFftCoef(ctx);
    reference::InitHammingWindowFiltert(ctx);
    return reference::CaclueFrequencyInPlace(ctx);
}

}  // namespace reference
