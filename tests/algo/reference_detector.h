// Straightforward evaluation of the flicker detector: every stage written as the plain loops it is
// defined by, with nothing skipped or reordered. The optimised detector must agree with it bit for
// bit; tests and the benchmark share it.
#ifndef KXMMI_TESTS_ALGO_REFERENCE_DETECTOR_H
#define KXMMI_TESTS_ALGO_REFERENCE_DETECTOR_H

#include <cstdint>

#include "flicker_detector.h"

namespace reference {

void InitFftCoef(AlgoContext& ctx);
void InitHammingWindowFiltert(AlgoContext& ctx);
void BandingLpf(const int32_t* in, int32_t* out, int32_t len);
void ProcessHammingWindowFilter(AlgoContext& ctx);
int32_t AnalyseDataWithFft(AlgoContext& ctx);
// Filter, window and transform on ctx itself, leaving every intermediate in it.
int32_t CaclueFrequencyInPlace(AlgoContext& ctx);
// Whole detection; returns the frequency (count must be at most 300).
int32_t DetectFlickerFrequence(const int32_t* samples, int32_t count, float rate);

}  // namespace reference

#endif
