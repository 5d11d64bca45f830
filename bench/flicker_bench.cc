// Times one whole detection (tables, filter, window, transform, peak search) of the optimised
// detector and of the straightforward evaluation on the same blocks, and prints their ratio.
// Refuses to time anything unless both agree bit for bit on those blocks.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "flicker_detector.h"
#include "reference_detector.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

struct Input {
    const char* name;
    int32_t samples[256];
};

std::vector<Input> MakeInputs() {
    std::vector<Input> inputs(3);
    inputs[0].name = "square_100Hz";
    inputs[1].name = "sine_120Hz";
    inputs[2].name = "steady_1000";
    for (int n = 0; n < 256; ++n) {
        inputs[0].samples[n] = n % 10 < 5 ? 1000 : 0;
        inputs[1].samples[n] =
            static_cast<int32_t>(std::lround(2000 + 1000 * std::sin(2 * kPi * 120 * n / 1000.0)));
        inputs[2].samples[n] = 1000;
    }
    return inputs;
}

const std::vector<Input>& Inputs() {
    static const std::vector<Input> inputs = MakeInputs();
    return inputs;
}

// Frequency and every bin of both evaluations, compared bit for bit.
bool SameResults(const Input& in) {
    int32_t block[256];
    std::memcpy(block, in.samples, sizeof(block));
    AlgoContext fast;
    int32_t fast_hz = -1;
    if (DetectFlickerSpectrum(block, 256, fast_hz, 1000.0f, fast) != 0) return false;
    AlgoContext ref{};
    ref.sampleRate = 1000.0f;
    ref.fftLength = 1024;
    ref.dataLength = 256;
    std::memcpy(ref.originalData, block, sizeof(block));
    reference::InitFftCoef(ref);
    reference::InitHammingWindowFiltert(ref);
    const int32_t ref_hz = reference::CaclueFrequencyInPlace(ref);
    return fast_hz == ref_hz && std::memcmp(&fast, &ref, sizeof(ref)) == 0;
}

void BM_Reference(benchmark::State& state) {
    const Input& in = Inputs()[state.range(0)];
    state.SetLabel(in.name);
    for (auto _ : state) {
        int32_t hz = reference::DetectFlickerFrequence(in.samples, 256, 1000.0f);
        benchmark::DoNotOptimize(hz);
    }
}

void BM_Optimised(benchmark::State& state) {
    const Input& in = Inputs()[state.range(0)];
    state.SetLabel(in.name);
    int32_t block[256];
    std::memcpy(block, in.samples, sizeof(block));
    for (auto _ : state) {
        benchmark::DoNotOptimize(block);
        int32_t hz = -1;
        DetectFlickerFrequence(block, 256, hz, 1000.0f);
        benchmark::DoNotOptimize(hz);
    }
}

BENCHMARK(BM_Reference)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Optimised)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);

// Console output as usual, then the speed-up per input from the same run.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    explicit RatioReporter(OutputOptions options) : ConsoleReporter(options) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            // With --benchmark_repetitions the median, reported last, is the figure kept.
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (run.error_occurred || (run.run_type != Run::RT_Iteration && !median)) continue;
            const double seconds =
                run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            const std::string name = run.benchmark_name();
            (name.rfind("BM_Reference", 0) == 0 ? reference_ : optimised_)[run.report_label] =
                seconds;
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        for (const auto& [label, ref_s] : reference_) {
            auto it = optimised_.find(label);
            if (it == optimised_.end()) continue;
            std::printf("%-14s reference %9.1f us  optimised %7.1f us  speed-up %.1fx\n",
                        label.c_str(), ref_s * 1e6, it->second * 1e6, ref_s / it->second);
        }
    }

  private:
    std::map<std::string, double> reference_, optimised_;
};

}  // namespace

int main(int argc, char** argv) {
    for (const Input& in : Inputs()) {
        if (!SameResults(in)) {
            std::fprintf(stderr, "flicker_bench: optimised and reference differ on %s\n", in.name);
            return 1;
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    // Colour only on a terminal and without NO_COLOR, so that logs and pipes get plain text.
    const char* noColor = std::getenv("NO_COLOR");
    const bool colour = isatty(fileno(stdout)) && (noColor == nullptr || *noColor == '\0');
    RatioReporter reporter(colour ? benchmark::ConsoleReporter::OO_Defaults
                                  : benchmark::ConsoleReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
