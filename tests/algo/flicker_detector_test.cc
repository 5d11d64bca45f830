#include "flicker_detector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "reference_detector.h"

namespace {

using Block = std::vector<int32_t>;
constexpr double kPi = 3.14159265358979323846;

// `level` for the first `high` samples of each period, `base` for the rest.
Block Pulse(int period, int high, int32_t level = 1000, int32_t base = 0) {
    Block b(256);
    for (int n = 0; n < 256; ++n) b[n] = (n % period) < high ? level : base;
    return b;
}

// Sampled at 1000 Hz, rounded to the nearest integer.
Block Sine(double hz, double mean = 2000.0, double amp = 1000.0) {
    Block b(256);
    for (int n = 0; n < 256; ++n) b[n] = std::lround(mean + amp * std::sin(2 * kPi * hz * n / 1e3));
    return b;
}

// A cleared state with the given rate, transform length and sample count.
AlgoContext State(float rate, int32_t fft_length, int32_t count = 0) {
    AlgoContext ctx{};
    ctx.sampleRate = rate;
    ctx.fftLength = fft_length;
    ctx.dataLength = count;
    return ctx;
}

// Each run goes over the zero-padded input into an output of all -9: it must give `head`, then
// `fill` up to len, and leave the rest alone.
TEST(BandingLpf, Outputs) {
    const struct {
        Block in;
        int32_t len;
        std::vector<int32_t> head;
        int32_t fill;
    } cases[] = {
        {Block(256, 1000),
         256,
         {1000, 1000, 998, 994, 989, 984, 980, 977, 974, 972, 971, 970, 969, 968},
         967},
        {Block(256, 10), 256, {10, 10, 9, 8, 7, 6, 5, 4, 3, 2}, 1},  // truncation decays it to 1
        {Pulse(10, 5), 12, {1000, 1000, 998, 994, 989, 965, 890, 769, 629, 488, 377, 334}, 0},
        // in = {a, c, b}: the accumulator is 20b + 1639c - 637a, and the division truncates.
        {{-2, -1, -33}, 3, {-2, -1, -1}, 0},  // -1025
        {{6, 2, -24}, 3, {6, 2, -1}, 0},      // -1024
        {{6, 1, 58}, 3, {6, 1, 0}, 0},        // -1023
        {{-6, -1, -58}, 3, {-6, -1, 0}, 0},   // 1023
        {{-6, -2, 24}, 3, {-6, -2, 1}, 0},    // 1024
        {{5, 7, 11}, 1, {5, 7}, 0},           // both copies happen whatever len is
    };
    for (const auto& c : cases) {
        int32_t in[300] = {};
        int32_t out[300];
        std::fill(out, out + 300, -9);
        std::copy(c.in.begin(), c.in.end(), in);
        EXPECT_EQ(0, BandingLpf(in, out, c.len));
        std::vector<int32_t> expected = c.head;
        expected.resize(std::max<size_t>(c.len, c.head.size()), c.fill);
        expected.resize(300, -9);
        EXPECT_EQ(expected, std::vector<int32_t>(out, out + 300)) << "input " << c.in[0];
    }
    for (int32_t len : {0, -1, 301}) {  // a refused clear leaves the output alone
        int32_t in[300] = {5, 7};
        int32_t out[300] = {-9};
        EXPECT_EQ(-1, BandingLpf(in, out, len)) << "len " << len;
        EXPECT_EQ(-9, out[0]) << "len " << len;
    }
}

TEST(InitHammingWindowFiltert, BothEndpointsAre008AndOnlyMCoefficientsAreWritten) {
    AlgoContext ctx = State(1000.0f, 1024, 256);
    ctx.hammingWindow[256] = -5.0f;
    InitHammingWindowFiltert(ctx);
    EXPECT_EQ(0.54f - 0.46f, ctx.hammingWindow[0]);
    EXPECT_NEAR(0.08, ctx.hammingWindow[255], 1e-6);
    EXPECT_EQ(-5.0f, ctx.hammingWindow[256]);
    ctx.dataLength = 1;
    InitHammingWindowFiltert(ctx);
    EXPECT_TRUE(std::isnan(ctx.hammingWindow[0]));
}

TEST(DetectFlickerFrequence, DocumentedResults) {
    const struct {
        const char* name;
        Block samples;
        int32_t count;
        float rate;
        int32_t expected, rc;
    } cases[] = {
        {"all zero", Block(256, 0), 256, 1000, 0, 0},
        {"steady 1000", Block(256, 1000), 256, 1000, 21, 0},
        {"steady 10 decays to nothing", Block(256, 10), 256, 1000, 0, 0},
        {"square 100 Hz", Pulse(10, 5), 256, 1000, 99, 0},
        {"square at rate 2000", Pulse(10, 5), 256, 2000, 199, 0},
        {"square at rate 0", Pulse(10, 5), 256, 0, 0, 0},
        {"sine 100 Hz", Sine(100), 256, 1000, 99, 0},
        {"sine 120 Hz", Sine(120), 256, 1000, 120, 0},
        {"count 0", Pulse(10, 5), 0, 1000, 0, 0},
        {"count negative", Pulse(10, 5), -5, 1000, 0, 0},
        {"count 1: NaN window", Pulse(10, 5), 1, 1000, 0, 0},
        {"count 300", Pulse(10, 5), 300, 1000, 99, 0},
        {"count 301 is refused, frequency untouched", Pulse(10, 5), 301, 1000, -7, -1},
    };
    for (const auto& c : cases) {
        int32_t block[256];
        std::copy(c.samples.begin(), c.samples.end(), block);
        int32_t frequency = -7;
        EXPECT_EQ(c.rc, DetectFlickerFrequence(block, c.count, frequency, c.rate)) << c.name;
        EXPECT_EQ(c.expected, frequency) << c.name;
        EXPECT_EQ(c.samples, Block(block, block + 256)) << c.name << ": samples modified";
        AlgoContext kept;
        frequency = -7;
        EXPECT_EQ(c.rc, DetectFlickerSpectrum(block, c.count, frequency, c.rate, kept)) << c.name;
        EXPECT_EQ(c.expected, frequency) << c.name << " (spectrum kept)";
    }
}

TEST(AnalyseDataWithFft, SearchesBins20To498LowestFirst) {
    const std::pair<double, int32_t> cases[] = {
        {-1, 19},      // a single impulse ties every bin: the lowest searched, 20, wins
        {19.3, 19},    // the strongest bin, 19, is not searched: its neighbour 20 wins
        {498.7, 486},  // the strongest bin, 499, is not searched: its neighbour 498 wins
    };
    for (const auto& [cycles, expected] : cases) {
        AlgoContext ctx = State(1000.0f, 1024);
        InitFftCoef(ctx);
        for (int n = 0; n < 1024; ++n) {
            ctx.fftData[n] = cycles < 0 ? 5000 * (n == 0)
                                        : std::lround(1e4 * std::cos(2 * kPi * cycles * n / 1024));
        }
        EXPECT_EQ(expected, AnalyseDataWithFft(ctx)) << cycles << " cycles";
    }
}

// The whole state bit for bit (every field is 4 bytes wide), naming the first word that differs.
::testing::AssertionResult SameState(const AlgoContext& a, const AlgoContext& b) {
    const char* pa = reinterpret_cast<const char*>(&a);
    const size_t at =
        std::mismatch(pa, pa + sizeof(a), reinterpret_cast<const char*>(&b)).first - pa;
    if (at == sizeof(a)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "word " << at / 4 << " differs (amplitude starts at "
                                         << offsetof(AlgoContext, amplitude) / 4 << ")";
}

// Periodic light at any frequency and duty cycle, noise, int32 extremes, sparse spikes, faint
// levels the filter truncates to exact zeros, noisy sines.
Block Generate(std::mt19937& rng, int kind) {
    auto uni = [&](double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); };
    auto pick = [&](int32_t lo, int32_t hi) {
        return std::uniform_int_distribution<int32_t>(lo, hi)(rng);
    };
    const double hz = uni(1, 520), mean = uni(-1000, 100000), amp = uni(0, 5000);
    const int32_t period = pick(2, 60), high = pick(1, period), level = pick(1, 1 << 20);
    const int32_t span = 1 << pick(0, 30), extremes[] = {INT32_MIN, INT32_MAX, 0, -1, 1};
    if (kind == 0) return Sine(hz, mean, amp);
    if (kind == 1) return Pulse(period, high, level, level % 201 - 100);
    Block b = kind == 6 ? Sine(hz, amp * 0.6, amp / 5) : Block(256);
    for (int32_t& v : b) {
        if (kind == 2) v = pick(-span, span);
        if (kind == 3) v = extremes[pick(0, 4)];
        if (kind == 4) v = pick(0, 9) == 0 ? pick(-50000, 50000) : 0;
        if (kind == 5) v = pick(0, 40);
        if (kind == 6) v += pick(-200, 200);
    }
    return b;
}

TEST(Differential, DetectorMatchesStraightforwardEvaluation) {
    std::mt19937 rng(20240611);
    const int32_t counts[] = {256, 256, 256, 0, 1, 2, 255, 257, 300, -3};
    const float rates[] = {1000.0f, 1000.0f, 2000.0f, 0.0f, 44100.0f};
    for (int i = 0; i < FLICKER_DIFF_BLOCKS; ++i) {
        const Block samples = Generate(rng, i % 7);
        const int32_t count = counts[i % 10];
        const float rate = rates[(i / 10) % 5];
        SCOPED_TRACE("block " + std::to_string(i) + " kind " + std::to_string(i % 7) + " count " +
                     std::to_string(count) + " rate " + std::to_string(rate));
        int32_t block[256];
        std::copy(samples.begin(), samples.end(), block);
        AlgoContext ref = State(rate, 1024, count);
        std::copy(block, block + 256, ref.originalData);
        reference::InitFftCoef(ref);
        reference::InitHammingWindowFiltert(ref);
        const int32_t ref_hz = reference::CaclueFrequencyInPlace(ref);

        // CaclueFrequency leaves its caller's state (here with stale intermediates) as it was.
        AlgoContext fast;
        ASSERT_TRUE(InitFrequencyDetectAlgo(fast));
        PrepareFrequenceDetectAlgo(fast, block, count, rate);
        std::fill(fast.lpfData, fast.lpfData + 256, i);
        std::fill(fast.amplitude, fast.amplitude + 500, 0.5f * i);
        const AlgoContext caller = fast;
        ASSERT_EQ(ref_hz, CaclueFrequency(fast));
        ASSERT_TRUE(SameState(caller, fast));
        // The same detection with every intermediate kept, over a state holding stale values.
        int32_t kept_hz = -1;
        ASSERT_EQ(0, DetectFlickerSpectrum(block, count, kept_hz, rate, fast));
        ASSERT_EQ(ref_hz, kept_hz);
        ASSERT_TRUE(SameState(ref, fast));
        const float* peak = std::max_element(ref.amplitude + 20, ref.amplitude + 499);
        ASSERT_EQ(*peak > 0.0f ? peak - ref.amplitude : 0, FlickerPeakBin(fast));

        if (i % 4 != 0) continue;
        // The raw block at another transform length, mostly no power of two: the table
        // positions wrap at uneven points.
        const int32_t lengths[] = {1, 2, 3, 7, 100, 499, 500, 501, 768, 1023, 1024};
        AlgoContext odd = State(rate, lengths[i / 4 % 11]);
        InitFftCoef(odd);
        std::copy(block, block + std::min(256, odd.fftLength), odd.fftData);
        AlgoContext odd_ref = odd;
        reference::InitFftCoef(odd_ref);
        ASSERT_EQ(reference::AnalyseDataWithFft(odd_ref), AnalyseDataWithFft(odd));
        ASSERT_TRUE(SameState(odd_ref, odd));
    }
}

}  // namespace
