#include "flicker_detector.h"

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstring>
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
constexpr int32_t kMaxFftLength = kFlickerFftLength;
constexpr int32_t kMaxDataLength = 300;
constexpr int32_t kBlockLength = kFlickerBlockLength;
constexpr int32_t kFilterLength = 256;
constexpr int32_t kBins = kFlickerBins;

// The transform works on groups of 4 neighbouring bins, kGroupsPerBlock groups at a time. Each
// bin still sums its terms in increasing n; only independent bins are interleaved, which leaves
// the rounding of every sum exactly as if the bins were done one by one.
constexpr int32_t kGroupBins = 4;
constexpr int32_t kGroupsPerBlock = 3;
constexpr int32_t kBlockBins = kGroupBins * kGroupsPerBlock;
constexpr int32_t kPaddedBins = (kBins + kBlockBins - 1) / kBlockBins * kBlockBins;

// Four floats; element-wise IEEE arithmetic, so each lane rounds exactly like scalar code. The
// compiler maps it to whatever vector unit the target has.
typedef float Float4 __attribute__((vector_size(16)));
typedef double Double2 __attribute__((vector_size(16)));

// {a[0], a[1], b[0], b[1]}: two {cos, -sin} pairs in one vector, as two 8-byte loads.
inline Float4 LoadTwoPairs(const float* a, const float* b) {
    double lo;
    double hi;
    std::memcpy(&lo, a, sizeof(lo));
    std::memcpy(&hi, b, sizeof(hi));
    const Double2 both = {lo, hi};
    return (Float4)both;
}

// Float to int32 toward zero, saturating; NaN gives 0 (only a one-sample window produces NaN).
int32_t TruncToInt32(float v) {
    if (v != v) return 0;
    if (v >= 2147483648.0f) return INT32_MAX;
    if (v <= -2147483648.0f) return INT32_MIN;
    return static_cast<int32_t>(v);
}

// Direct DFT of fftData for bins 0..499:
//   re_k = sum_n cos[kn mod N] * x_n,  im_k = -sum_n cos[(3N/4 + kn) mod N] * x_n,
// summed in increasing n with each product and sum rounded to float.
//
// Shortcuts that change no bit of any result:
//  - Trailing zero inputs (the zero padding, 3/4 of the transform) are not visited. A zero input
//    adds +0 or -0 to each sum; a sum starts at +0 and under round-to-nearest becomes -0 only by
//    adding -0 to -0, so it is never -0 and adding a signed zero leaves it as it was.
//  - im - c*x equals im + (-c)*x exactly (negation is exact and rounding symmetric), so a table of
//    {cos, -sin} pairs serves both parts of a term with one load and one vector multiply-add.
//  - The pair table is repeated 4 times over. Bins k..k+3 at sample n sit at table positions
//    p, p+n, p+2n, p+3n with p = kn mod N < N and n < N, so one reduced position per group of
//    4 bins suffices and the other three are plain offsets.
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
    const uint32_t len = static_cast<uint32_t>(n_len);
    const uint32_t quarter_back = (3 * len) / 4;

    alignas(16) float pairs[kGroupBins * kMaxFftLength * 2];
    for (uint32_t i = 0; i < len; ++i) {
        uint32_t s = i + quarter_back;
        if (s >= len) s -= len;
        pairs[2 * i] = ctx.fftCoef[i];
        pairs[2 * i + 1] = -ctx.fftCoef[s];
    }
    std::memcpy(pairs + 2 * len, pairs, 2 * len * sizeof(float));
    std::memcpy(pairs + 4 * len, pairs, 4 * len * sizeof(float));

    uint32_t end = len;
    while (end > 0 && ctx.fftData[end - 1] == 0) --end;
    float x_of[kMaxFftLength];
    for (uint32_t n = 0; n < end; ++n) x_of[n] = static_cast<float>(ctx.fftData[n]);

    for (int32_t k0 = 0; k0 < kPaddedBins; k0 += kBlockBins) {
        uint32_t pos[kGroupsPerBlock];  // k*n mod N of the group's first bin k
        uint32_t step[kGroupsPerBlock];
        Float4 acc[kBlockBins / 2];  // {re, im} of two bins per vector
        for (int32_t g = 0; g < kGroupsPerBlock; ++g) {
            pos[g] = 0;
            step[g] = static_cast<uint32_t>(k0 + kGroupBins * g) % len;
        }
        for (Float4& a : acc) a = Float4{0.0f, 0.0f, 0.0f, 0.0f};

        for (uint32_t n = 0; n < end; ++n) {
            const float x = x_of[n];
            const Float4 xv = {x, x, x, x};
            const size_t stride = 2 * static_cast<size_t>(n);  // n table positions, in floats
            for (int32_t g = 0; g < kGroupsPerBlock; ++g) {
                const float* p = pairs + 2 * static_cast<size_t>(pos[g]);
                acc[2 * g] = acc[2 * g] + LoadTwoPairs(p, p + stride) * xv;
                acc[2 * g + 1] = acc[2 * g + 1] + LoadTwoPairs(p + 2 * stride, p + 3 * stride) * xv;
                pos[g] += step[g];
                if (pos[g] >= len) pos[g] -= len;
            }
        }

        for (int32_t j = 0; j < kBlockBins && k0 + j < kBins; ++j) {
            const float re = acc[j / 2][2 * (j % 2)];
            const float im = acc[j / 2][2 * (j % 2) + 1];
            ctx.realPart[k0 + j] = re;
            ctx.imagPart[k0 + j] = im;
            const float re2 = re * re;
            const float im2 = im * im;
            ctx.amplitude[k0 + j] = std::sqrt(re2 + im2);
        }
    }
}

// CaclueFrequency's stages on `ctx` itself.
int32_t Calculate(AlgoContext& ctx) {
    // The filter always covers the full block, whatever dataLength says.
    (void)BandingLpf(ctx.originalData, ctx.lpfData, kFilterLength);
    ProcessHammingWindowFilter(ctx);
    for (int32_t n = 0; n < ctx.fftLength; ++n) ctx.fftData[n] = 0;
    for (int32_t i = 0; i < ctx.dataLength; ++i) ctx.fftData[i] = ctx.lpfData[i];
    return AnalyseDataWithFft(ctx);
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

int32_t FlickerPeakBin(const AlgoContext& ctx) {
    float best = 0.0f;
    int32_t bin = 0;
    for (int32_t k = kFlickerFirstSearchedBin; k <= kFlickerLastSearchedBin; ++k) {
        if (ctx.amplitude[k] > best) {
            best = ctx.amplitude[k];
            bin = k;
        }
    }
    return bin;
}

int32_t AnalyseDataWithFft(AlgoContext& ctx) {
    TransformBins(ctx);
    const int32_t bin = FlickerPeakBin(ctx);
    const float bin_width = ctx.sampleRate / static_cast<float>(ctx.fftLength);
    return TruncToInt32(static_cast<float>(bin) * bin_width);
}

int32_t CaclueFrequency(AlgoContext ctx) { return Calculate(ctx); }

void PrepareFrequenceDetectAlgo(AlgoContext& ctx, int32_t (&samples)[256], int32_t count,
                                float rate) {
    ctx.dataLength = count;
    ctx.sampleRate = rate;
    for (int32_t i = 0; i < kBlockLength; ++i) ctx.originalData[i] = samples[i];
    ctx.fftLength = kMaxFftLength;
    InitFftCoef(ctx);
    InitHammingWindowFiltert(ctx);
}

namespace {

// A cleared state loaded with one block; false when it cannot be.
bool Load(AlgoContext& ctx, int32_t (&samples)[256], int32_t count, float rate) {
    // A longer window would run past the state's sample arrays.
    if (count > kMaxDataLength || !InitFrequencyDetectAlgo(ctx)) return false;
    PrepareFrequenceDetectAlgo(ctx, samples, count, rate);
    return true;
}

}  // namespace

int32_t DetectFlickerFrequence(int32_t (&samples)[256], int32_t count, int32_t& frequency,
                               float rate) {
    AlgoContext ctx{};
    if (!Load(ctx, samples, count, rate)) return -1;
    frequency = CaclueFrequency(ctx);
    return 0;
}

int32_t DetectFlickerSpectrum(int32_t (&samples)[256], int32_t count, int32_t& frequency,
                              float rate, AlgoContext& ctx) {
    if (!Load(ctx, samples, count, rate)) return -1;
    frequency = Calculate(ctx);
    return 0;
}
