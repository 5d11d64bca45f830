#include "flicker_detector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "reference_detector.h"

#ifndef FLICKER_DIFF_BLOCKS
#define FLICKER_DIFF_BLOCKS 3000
#endif

namespace {

using Block = std::vector<int32_t>;

constexpr double kPi = 3.14159265358979323846;

Block Constant(int32_t v) { return Block(256, v); }

// 1000 for `high` samples, then 0 for the rest of each period, starting high.
Block Pulse(int period, int high, int32_t level = 1000, int32_t base = 0) {
    Block b(256);
    for (int n = 0; n < 256; ++n) b[n] = (n % period) < high ? level : base;
    return b;
}

Block Sine(double hz, double rate = 1000.0, double mean = 2000.0, double amp = 1000.0) {
    Block b(256);
    for (int n = 0; n < 256; ++n) {
        b[n] = static_cast<int32_t>(std::lround(mean + amp * std::sin(2 * kPi * hz * n / rate)));
    }
    return b;
}

int32_t Detect(Block samples, int32_t count = 256, float rate = 1000.0f, int32_t* rc = nullptr) {
    int32_t block[256];
    std::memcpy(block, samples.data(), sizeof(block));
    int32_t frequency = -7;
    const int32_t r = DetectFlickerFrequence(block, count, frequency, rate);
    EXPECT_EQ(0, std::memcmp(block, samples.data(), sizeof(block))) << "samples were modified";
    if (rc != nullptr) *rc = r;
    return frequency;
}

std::vector<int32_t> Filter(const Block& in_block, int32_t len) {
    int32_t in[300] = {};
    int32_t out[300] = {};
    std::memcpy(in, in_block.data(), in_block.size() * sizeof(int32_t));
    EXPECT_EQ(0, BandingLpf(in, out, len));
    return std::vector<int32_t>(out, out + 300);
}

// --- Filter -------------------------------------------------------------------------------------

TEST(BandingLpf, KnownResponses) {
    struct Case {
        const char* name;
        Block in;
        std::vector<int32_t> head;
        int32_t settled;  // value of every output after the head, up to 255
    };
    const Case cases[] = {
        {"steady 1000",
         Constant(1000),
         {1000, 1000, 998, 994, 989, 984, 980, 977, 974, 972, 971, 970, 969, 968},
         967},
        // Truncation of every output decays a small steady level to 1.
        {"steady 10", Constant(10), {10, 10, 9, 8, 7, 6, 5, 4, 3, 2}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<int32_t> out = Filter(c.in, 256);
        for (size_t i = 0; i < c.head.size(); ++i) EXPECT_EQ(c.head[i], out[i]) << "index " << i;
        for (size_t i = c.head.size(); i < 256; ++i) ASSERT_EQ(c.settled, out[i]) << "index " << i;
        for (size_t i = 256; i < 300; ++i) ASSERT_EQ(0, out[i]) << "index " << i;
    }

    const std::vector<int32_t> square = Filter(Pulse(10, 5), 256);
    const std::vector<int32_t> square_head = {1000, 1000, 998, 994, 989, 965,
                                              890,  769,  629, 488, 377, 334};
    EXPECT_EQ(square_head, std::vector<int32_t>(square.begin(), square.begin() + 12));
}

TEST(BandingLpf, DivisionTruncatesTowardZero) {
    // in = {a, c, b} makes the first accumulator 20b + 1639c - 637a.
    struct Case {
        int32_t acc, a, c, b, expected;
    };
    const Case cases[] = {
        {-1025, -2, -1, -33, -1}, {-1024, 6, 2, -24, -1}, {-1023, 6, 1, 58, 0},
        {1023, -6, -1, -58, 0},   {1024, -6, -2, 24, 1},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(c.acc, 20 * c.b + 1639 * c.c - 637 * c.a);
        EXPECT_EQ(c.expected, Filter({c.a, c.c, c.b}, 3)[2]) << "accumulator " << c.acc;
    }
}

TEST(BandingLpf, ShortRunsAndRejectedLengths) {
    struct Case {
        int32_t len;
        int32_t result;
        std::vector<int32_t> out_head;  // out[0..3] afterwards; out starts as all -9
    };
    const Case cases[] = {
        {3, 0, {5, 7, 8, -9}},      // filters index 2, leaves what lies beyond the run
        {2, 0, {5, 7, -9, -9}},     // copies both, filters nothing
        {1, 0, {5, 7, -9, -9}},     // still copies in[1]
        {0, -1, {-9, -9, -9, -9}},  // the clear is refused: output untouched
        {-1, -1, {-9, -9, -9, -9}}, {301, -1, {-9, -9, -9, -9}},
    };
    for (const Case& c : cases) {
        int32_t in[300] = {5, 7, 11};
        int32_t out[300];
        for (int32_t& v : out) v = -9;
        EXPECT_EQ(c.result, BandingLpf(in, out, c.len)) << "len " << c.len;
        EXPECT_EQ(c.out_head, std::vector<int32_t>(out, out + 4)) << "len " << c.len;
        EXPECT_EQ(-9, out[299]) << "len " << c.len;
    }
}

// --- Whole detection ----------------------------------------------------------------------------

TEST(DetectFlickerFrequence, KnownInputs) {
    struct Case {
        const char* name;
        Block samples;
        int32_t count;
        float rate;
        int32_t expected;
    };
    const Case cases[] = {
        {"all zero", Constant(0), 256, 1000.0f, 0},
        {"steady 1000", Constant(1000), 256, 1000.0f, 21},
        {"steady 10 decays to nothing", Constant(10), 256, 1000.0f, 0},
        {"square 100 Hz", Pulse(10, 5), 256, 1000.0f, 99},
        {"square 100 Hz at rate 2000", Pulse(10, 5), 256, 2000.0f, 199},
        {"square 100 Hz at rate 0", Pulse(10, 5), 256, 0.0f, 0},
        {"sine 100 Hz", Sine(100), 256, 1000.0f, 99},
        {"sine 120 Hz", Sine(120), 256, 1000.0f, 120},
        {"count 0", Pulse(10, 5), 0, 1000.0f, 0},
        {"count negative", Pulse(10, 5), -5, 1000.0f, 0},
        {"count 1: NaN window", Pulse(10, 5), 1, 1000.0f, 0},
        {"count 300", Pulse(10, 5), 300, 1000.0f, 99},
    };
    for (const Case& c : cases) {
        int32_t rc = -2;
        EXPECT_EQ(c.expected, Detect(c.samples, c.count, c.rate, &rc)) << c.name;
        EXPECT_EQ(0, rc) << c.name;
    }
}

TEST(DetectFlickerFrequence, CountBeyondStateIsRejected) {
    int32_t rc = 0;
    EXPECT_EQ(-7, Detect(Pulse(10, 5), 301, 1000.0f, &rc)) << "frequency must stay untouched";
    EXPECT_EQ(-1, rc);
}

// Peak search rules, checked on transforms whose amplitudes are known by construction.
TEST(AnalyseDataWithFft, PeakSearchBand) {
    struct Case {
        const char* name;
        double cycles;  // cosine over all 1024 inputs, this many cycles
        int32_t expected;
    };
    const Case cases[] = {
        // A single input gives every bin the same amplitude: the lowest searched bin (20) wins.
        {"all bins tied", -1, 19},
        // The strongest bin, 19, is below the band; its neighbour 20 is the strongest searched.
        {"below the band", 19.3, 19},
        // The strongest bin, 499, is computed but not searched; its neighbour 498 wins.
        {"above the band", 498.7, 486},
        {"inside the band", 123, 120},
    };
    for (const Case& c : cases) {
        AlgoContext ctx{};
        ctx.fftLength = 1024;
        ctx.sampleRate = 1000.0f;
        InitFftCoef(ctx);
        for (int n = 0; n < 1024; ++n) {
            ctx.fftData[n] = c.cycles < 0 ? (n == 0 ? 5000 : 0)
                                          : static_cast<int32_t>(std::lround(
                                                10000 * std::cos(2 * kPi * c.cycles * n / 1024.0)));
        }
        EXPECT_EQ(c.expected, AnalyseDataWithFft(ctx)) << c.name;
        if (c.cycles > 0) {
            const float* peak = std::max_element(ctx.amplitude, ctx.amplitude + 500);
            EXPECT_EQ(std::lround(c.cycles), peak - ctx.amplitude) << c.name;
        }
    }
}

TEST(CaclueFrequency, CallersStateIsUntouched) {
    AlgoContext ctx;
    ASSERT_TRUE(InitFrequencyDetectAlgo(ctx));
    Block samples = Sine(120);
    int32_t block[256];
    std::memcpy(block, samples.data(), sizeof(block));
    PrepareFrequenceDetectAlgo(ctx, block, 256, 1000.0f);
    for (int i = 0; i < 500; ++i) ctx.amplitude[i] = static_cast<float>(i);
    ctx.lpfData[3] = 12345;
    AlgoContext before;
    std::memcpy(&before, &ctx, sizeof(ctx));
    EXPECT_EQ(120, CaclueFrequency(ctx));
    EXPECT_EQ(0, std::memcmp(&before, &ctx, sizeof(ctx)));
}

// --- Optimised transform against the straightforward evaluation ---------------------------------

// Compares every field bit for bit and names the first that differs.
::testing::AssertionResult SameState(const AlgoContext& a, const AlgoContext& b) {
    struct Field {
        const char* name;
        size_t offset, size;
    };
#define KX_FIELD(f) \
    { #f, offsetof(AlgoContext, f), sizeof(AlgoContext::f) }
    const Field fields[] = {KX_FIELD(sampleRate),   KX_FIELD(fftLength), KX_FIELD(dataLength),
                            KX_FIELD(originalData), KX_FIELD(lpfData),   KX_FIELD(hammingWindow),
                            KX_FIELD(fftData),      KX_FIELD(fftCoef),   KX_FIELD(amplitude),
                            KX_FIELD(realPart),     KX_FIELD(imagPart)};
#undef KX_FIELD
    const unsigned char* pa = reinterpret_cast<const unsigned char*>(&a);
    const unsigned char* pb = reinterpret_cast<const unsigned char*>(&b);
    for (const Field& f : fields) {
        for (size_t i = 0; i < f.size; i += 4) {
            if (std::memcmp(pa + f.offset + i, pb + f.offset + i, 4) != 0) {
                return ::testing::AssertionFailure() << f.name << " differs at element " << i / 4;
            }
        }
    }
    return ::testing::AssertionSuccess();
}

struct Generated {
    std::string what;
    Block samples;
};

// Blocks of every kind the detector may meet: periodic light at any frequency and duty cycle,
// noise, saturated and extreme sensor values, sparse blocks full of exact zeros.
Generated Generate(std::mt19937& rng, int index) {
    auto uni = [&](double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); };
    auto pick = [&](int32_t lo, int32_t hi) {
        return std::uniform_int_distribution<int32_t>(lo, hi)(rng);
    };
    Block b(256);
    std::string what;
    switch (index % 7) {
        case 0: {
            const double hz = uni(1, 520), amp = uni(0, 5000), mean = uni(-1000, 100000);
            what = "sine " + std::to_string(hz) + " Hz amp " + std::to_string(amp);
            b = Sine(hz, 1000.0, mean, amp);
            break;
        }
        case 1: {
            const int period = pick(2, 60), high = pick(1, period);
            what = "pwm period " + std::to_string(period) + " high " + std::to_string(high);
            b = Pulse(period, high, pick(1, 1 << 20), pick(-100, 100));
            break;
        }
        case 2: {
            const int32_t span = 1 << pick(0, 30);
            what = "noise span " + std::to_string(span);
            for (int32_t& v : b) v = pick(-span, span);
            break;
        }
        case 3: {
            const int32_t extremes[] = {std::numeric_limits<int32_t>::min(),
                                        std::numeric_limits<int32_t>::max(), 0, -1, 1};
            what = "int32 extremes";
            for (int32_t& v : b) v = extremes[pick(0, 4)];
            break;
        }
        case 4: {
            what = "sparse spikes";
            for (int32_t& v : b) v = pick(0, 9) == 0 ? pick(-50000, 50000) : 0;
            break;
        }
        case 5: {
            // Small levels: the filter truncates most windowed samples to exact zeros.
            what = "faint";
            for (int32_t& v : b) v = pick(0, 40);
            break;
        }
        default: {
            const double hz = uni(20, 490);
            what = "sine with noise " + std::to_string(hz) + " Hz";
            b = Sine(hz, 1000.0, uni(0, 3000), uni(10, 1000));
            for (int32_t& v : b) v += pick(-200, 200);
            break;
        }
    }
    return {what, b};
}

TEST(Differential, DetectorMatchesStraightforwardEvaluation) {
    std::mt19937 rng(20240611);
    const int32_t counts[] = {256, 256, 256, 0, 1, 2, 255, 257, 300, -3};
    const float rates[] = {1000.0f, 1000.0f, 2000.0f, 0.0f, 44100.0f};
    for (int i = 0; i < FLICKER_DIFF_BLOCKS; ++i) {
        const Generated g = Generate(rng, i);
        const int32_t count = counts[i % 10];
        const float rate = rates[(i / 10) % 5];
        SCOPED_TRACE("block " + std::to_string(i) + ": " + g.what + ", count " +
                     std::to_string(count) + ", rate " + std::to_string(rate));

        int32_t block[256];
        std::memcpy(block, g.samples.data(), sizeof(block));

        // The detector's stages, as CaclueFrequency runs them, with the intermediates kept.
        AlgoContext fast;
        ASSERT_TRUE(InitFrequencyDetectAlgo(fast));
        PrepareFrequenceDetectAlgo(fast, block, count, rate);
        ASSERT_EQ(0, BandingLpf(fast.originalData, fast.lpfData, 256));
        ProcessHammingWindowFilter(fast);
        for (int n = 0; n < 1024; ++n) fast.fftData[n] = n < count ? fast.lpfData[n] : 0;
        const int32_t fast_hz = AnalyseDataWithFft(fast);

        AlgoContext ref;
        std::memset(&ref, 0, sizeof(ref));
        ref.dataLength = count;
        ref.sampleRate = rate;
        std::memcpy(ref.originalData, block, sizeof(block));
        ref.fftLength = 1024;
        reference::InitFftCoef(ref);
        reference::InitHammingWindowFiltert(ref);
        const int32_t ref_hz = reference::CaclueFrequencyInPlace(ref);

        ASSERT_TRUE(SameState(ref, fast));
        ASSERT_EQ(ref_hz, fast_hz);
        int32_t detected = -7;
        ASSERT_EQ(0, DetectFlickerFrequence(block, count, detected, rate));
        ASSERT_EQ(ref_hz, detected);
    }
}

// The transform for other lengths N, including ones that are no power of two, where the table
// positions wrap at uneven points, and exact cancellations to zero.
TEST(Differential, TransformOfAnyLength) {
    std::mt19937 rng(7);
    const int32_t lengths[] = {1, 2, 3, 4, 7, 100, 499, 500, 501, 768, 1000, 1023, 1024};
    for (int32_t n_len : lengths) {
        for (int trial = 0; trial < 4; ++trial) {
            SCOPED_TRACE("N " + std::to_string(n_len) + " trial " + std::to_string(trial));
            AlgoContext fast;
            std::memset(&fast, 0, sizeof(fast));
            fast.fftLength = n_len;
            fast.sampleRate = 1000.0f;
            InitFftCoef(fast);
            for (int32_t n = 0; n < n_len; ++n) {
                switch (trial) {
                    case 0:  // equal values: sums that cancel to exactly zero
                        fast.fftData[n] = n % 2 == 0 ? 5 : 0;
                        break;
                    case 1:
                        fast.fftData[n] = std::uniform_int_distribution<int32_t>(-9, 9)(rng);
                        break;
                    case 2:
                        fast.fftData[n] = std::uniform_int_distribution<int32_t>(
                            std::numeric_limits<int32_t>::min(),
                            std::numeric_limits<int32_t>::max())(rng);
                        break;
                    default:  // only the last input is non-zero
                        fast.fftData[n] = n == n_len - 1 ? -3 : 0;
                        break;
                }
            }
            AlgoContext ref;
            std::memcpy(&ref, &fast, sizeof(ref));
            reference::InitFftCoef(ref);
            const int32_t ref_hz = reference::AnalyseDataWithFft(ref);
            ASSERT_EQ(ref_hz, AnalyseDataWithFft(fast));
            ASSERT_TRUE(SameState(ref, fast));
        }
    }
}

}  // namespace
