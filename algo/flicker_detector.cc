#include "flicker_detector.h"

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "bounds_checked.h"

// The integer results depend on every float operation being rounded on its own.
#if defined(__FAST_MATH__) || (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__)
#error "the flicker detector must be built without fast-math"
#endif
#if FLT_EVAL_METHOD != 0
#error "the flicker detector needs float expressions evaluated in float"
#endif

// The state is handed around as raw bytes (cleared with memset_s, copied by value), and other
// components rely on this exact layout.
static_assert(std::is_trivially_copyable<AlgoContext>::value, "AlgoContext must stay plain");
static_assert(std::is_standard_layout<AlgoContext>::value, "AlgoContext must stay plain");
static_assert(offsetof(AlgoContext, fftLength) == 4, "layout");
static_assert(offsetof(AlgoContext, dataLength) == 8, "layout");
static_assert(offsetof(AlgoContext, originalData) == 12, "layout");
static_assert(offsetof(AlgoContext, lpfData) == 12 + 1200, "layout");
static_assert(offsetof(AlgoContext, hammingWindow) == 12 + 2400, "layout");
static_assert(offsetof(AlgoContext, fftData) == 12 + 3600, "layout");
static_assert(offsetof(AlgoContext, fftCoef) == 12 + 3600 + 4096, "layout");
static_assert(offsetof(AlgoContext, amplitude) == 12 + 3600 + 8192, "layout");
static_assert(offsetof(AlgoContext, realPart) == 12 + 3600 + 8192 + 2000, "layout");
static_assert(offsetof(AlgoContext, imagPart) == 12 + 3600 + 8192 + 4000, "layout");
static_assert(sizeof(AlgoContext) == 12 + 3600 + 8192 + 6000, "layout");

namespace {

constexpr float kFullTurn = 6.2832f;  // deliberately not 2*pi: the results are calibrated on it
constexpr int32_t kMaxFftLength = 1024;
constexpr int32_t kMaxDataLength = 300;
constexpr int32_t kBlockLength = 256;
constexpr int32_t kFilterLength = 256;
constexpr int32_t kBins = 500;
constexpr int32_t kFirstSearchedBin = 20;
constexpr int32_t kLastSearchedBin = 498;

// Bins computed together. Each bin still sums its terms in increasing n; only independent bins
// are interleaved, which keeps the rounding of every sum as if the bins were done one by one.
constexpr int32_t kBinBlock = 8;
constexpr int32_t kPaddedBins = (kBins + kBinBlock - 1) / kBinBlock * kBinBlock;

// Float to int32 toward zero, saturating; NaN gives 0 (only a one-sample window produces NaN).
int32_t TruncToInt32(float v) {
    if (v != v) return 0;
    if (v >= 2147483648.0f) return INT32_MAX;
    if (v <= -2147483648.0f) return INT32_MIN;
    return static_cast<int32_t>(v);
}

// Direct DFT of fftData[0..N-1] for bins 0..499:
//   re_k = sum_n cos[kn mod N] * x_n,  im_k = -sum_n cos[(3N/4 + kn) mod N] * x_n,
// summed in increasing n with each product and sum rounded to float.
//
// Two exact shortcuts make it fast without changing a single bit:
//  - A zero input contributes +0 or -0 to each sum. Both sums start at +0 and a round-to-nearest
//    sum is -0 only when both addends are -0, so a sum is never -0 and adding a signed zero leaves
//    it bit for bit as it was. Zero inputs (the whole zero padding, usually 3/4 of the transform)
//    are skipped.
//  - im - c*x equals im + (-c)*x exactly (negation is exact, rounding is symmetric), so the table
//    holds {cos, -sin} pairs and each term of a bin is one pair load, two products and two sums.
void TransformBins(AlgoContext& ctx) {
    const int32_t n_len = ctx.fftLength;
    if (n_len < 1) {
        for (int32_t k = 0; k < kBins; ++k) {
            ctx.realPart[k] = 0.0f;
            ctx.imagPart[k] = 0.0f;
            ctx.amplitude[k] = 0.0f;
        }
        return;
    }
    const int32_t quarter_back = (3 * n_len) / 4;

    alignas(16) float pairs[kMaxFftLength][2];
    for (int32_t i = 0; i < n_len; ++i) {
        int32_t s = i + quarter_back;
        if (s >= n_len) s -= n_len;
        pairs[i][0] = ctx.fftCoef[i];
        pairs[i][1] = -ctx.fftCoef[s];
    }

    int32_t end = n_len;
    while (end > 0 && ctx.fftData[end - 1] == 0) --end;
    float x_of[kMaxFftLength];
    for (int32_t n = 0; n < end; ++n) x_of[n] = static_cast<float>(ctx.fftData[n]);

    for (int32_t k0 = 0; k0 < kPaddedBins; k0 += kBinBlock) {
        // Table position of k*n mod N, advanced by k mod N per sample.
        int32_t pos[kBinBlock];
        int32_t step[kBinBlock];
        float acc[kBinBlock][2];
        for (int32_t j = 0; j < kBinBlock; ++j) {
            pos[j] = 0;
            step[j] = (k0 + j) % n_len;
            acc[j][0] = 0.0f;
            acc[j][1] = 0.0f;
        }
        for (int32_t n = 0; n < end; ++n) {
            if (ctx.fftData[n] != 0) {
                const float x = x_of[n];
                for (int32_t j = 0; j < kBinBlock; ++j) {
                    acc[j][0] = acc[j][0] + pairs[pos[j]][0] * x;
                    acc[j][1] = acc[j][1] + pairs[pos[j]][1] * x;
                }
            }
            for (int32_t j = 0; j < kBinBlock; ++j) {
                pos[j] += step[j];
                if (pos[j] >= n_len) pos[j] -= n_len;
            }
        }
        for (int32_t j = 0; j < kBinBlock && k0 + j < kBins; ++j) {
            const float re = acc[j][0];
            const float im = acc[j][1];
            ctx.realPart[k0 + j] = re;
            ctx.imagPart[k0 + j] = im;
            const float re2 = re * re;
            const float im2 = im * im;
            ctx.amplitude[k0 + j] = std::sqrt(re2 + im2);
        }
    }
}

}  // namespace

bool InitFrequencyDetectAlgo(AlgoContext& ctx) {
    return memset_s(&ctx, sizeof(ctx), 0, sizeof(ctx)) == 0;
}

void InitFftCoef(AlgoContext& ctx) {
    const int32_t n_len = ctx.fftLength;
    if (n_len < 1) return;
    const float n_f = static_cast<float>(n_len);
    for (int32_t i = 0; i < n_len; ++i) {
        const float turn = static_cast<float>(i) * kFullTurn;
        ctx.fftCoef[i] = std::cos(turn / n_f);
    }
}

void InitHammingWindowFiltert(AlgoContext& ctx) {
    const int32_t m_len = ctx.dataLength;
    if (m_len < 1) return;
    // With one sample this is 0/0: the coefficient is NaN and the windowed sample becomes 0.
    const float d = static_cast<float>(m_len - 1);
    for (int32_t i = 0; i < m_len; ++i) {
        const float turn = static_cast<float>(i) * kFullTurn;
        const float scaled = 0.46f * std::cos(turn / d);
        ctx.hammingWindow[i] = 0.54f - scaled;
    }
}

int32_t BandingLpf(int32_t (&in)[300], int32_t (&out)[300], int32_t len) {
    // A longer run would write past the output array.
    if (len > kMaxDataLength) return -1;
    const size_t bytes = static_cast<size_t>(static_cast<uint32_t>(len)) * sizeof(int32_t);
    if (memset_s(out, bytes, 0, bytes) != 0) return -1;
    out[0] = in[0];
    out[1] = in[1];
    for (int32_t n = 2; n < len; ++n) {
        const int64_t acc = 20 * int64_t{in[n]} + 41 * int64_t{in[n - 1]} +
                            20 * int64_t{in[n - 2]} + 1598 * int64_t{out[n - 1]} -
                            657 * int64_t{out[n - 2]};
        // Division truncates toward zero (-1023 -> 0); the low 32 bits are kept.
        out[n] = static_cast<int32_t>(static_cast<uint32_t>(acc / 1024));
    }
    return 0;
}

void ProcessHammingWindowFilter(AlgoContext& ctx) {
    const int32_t m_len = ctx.dataLength;
    for (int32_t i = 0; i < m_len; ++i) {
        ctx.lpfData[i] = TruncToInt32(ctx.hammingWindow[i] * static_cast<float>(ctx.lpfData[i]));
    }
}

int32_t AnalyseDataWithFft(AlgoContext& ctx) {
    TransformBins(ctx);
    float best = 0.0f;
    int32_t bin = 0;
    for (int32_t k = kFirstSearchedBin; k <= kLastSearchedBin; ++k) {
        if (ctx.amplitude[k] > best) {
            best = ctx.amplitude[k];
            bin = k;
        }
    }
    const float bin_width = ctx.sampleRate / static_cast<float>(ctx.fftLength);
    return TruncToInt32(static_cast<float>(bin) * bin_width);
}

int32_t CaclueFrequency(AlgoContext ctx) {
    // The filter always covers the full block, whatever dataLength says.
    (void)BandingLpf(ctx.originalData, ctx.lpfData, kFilterLength);
    ProcessHammingWindowFilter(ctx);
    for (int32_t n = 0; n < ctx.fftLength; ++n) ctx.fftData[n] = 0;
    for (int32_t i = 0; i < ctx.dataLength; ++i) ctx.fftData[i] = ctx.lpfData[i];
    return AnalyseDataWithFft(ctx);
}

void PrepareFrequenceDetectAlgo(AlgoContext& ctx, int32_t (&samples)[256], int32_t count,
                                float rate) {
    ctx.dataLength = count;
    ctx.sampleRate = rate;
    for (int32_t i = 0; i < kBlockLength; ++i) ctx.originalData[i] = samples[i];
    ctx.fftLength = kMaxFftLength;
    InitFftCoef(ctx);
    InitHammingWindowFiltert(ctx);
}

int32_t DetectFlickerFrequence(int32_t (&samples)[256], int32_t count, int32_t& frequency,
                               float rate) {
    // A longer window would run past the state's sample arrays.
    if (count > kMaxDataLength) return -1;
    AlgoContext ctx{};
    if (!InitFrequencyDetectAlgo(ctx)) return -1;
    PrepareFrequenceDetectAlgo(ctx, samples, count, rate);
    frequency = CaclueFrequency(ctx);
    return 0;
}
