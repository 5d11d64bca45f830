// Straightforward evaluation of the flicker detector: every stage as the plain loops it is defined
// by. The optimised detector must agree with it bit for bit; tests, benchmark and fuzzers share it.
#ifndef KXMMI_TESTS_ALGO_REFERENCE_DETECTOR_H
#define KXMMI_TESTS_ALGO_REFERENCE_DETECTOR_H

#include <cstdint>

#include "flicker_detector.h"

namespace reference {

void InitFftCoef(AlgoContext& ctx);
void InitHammingWindowFiltert(AlgoContext& ctx);
void BandingLpf(const int32_t* in, int32_t* out, int32_t len);
int32_t AnalyseDataWithFft(AlgoContext& ctx);
int32_t CaclueFrequencyInPlace(AlgoContext& ctx);  // leaves every intermediate in ctx
int32_t DetectFlickerFrequence(const int32_t* samples, int32_t count, float rate);  // count <= 300

}  // namespace reference

#endif
