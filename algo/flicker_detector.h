// Flicker frequency detector: estimates the dominant flicker frequency of a light source from one
// block of integer light-intensity samples. Integer low-pass filter, Hamming window, direct DFT of
// the lowest 500 bins of a zero-padded transform, peak search over bins 20..498.
//
// All floating-point work is single precision with every operation rounded on its own (this code
// must be built without FMA contraction and without fast-math), so the integer results are
// reproducible across architectures. No heap allocation, no state outside the AlgoContext handed
// in, safe to run concurrently on separate states.
#ifndef KXMMI_ALGO_FLICKER_DETECTOR_H
#define KXMMI_ALGO_FLICKER_DETECTOR_H

#include <cstdint>

// The detector's fixed sizes and its searched band, for callers that show a detection.
constexpr int32_t kFlickerBlockLength = 256;      // samples of one detection
constexpr int32_t kFlickerFftLength = 1024;       // transform length the driver sets
constexpr int32_t kFlickerBins = 500;             // bins computed, 0..499
constexpr int32_t kFlickerFirstSearchedBin = 20;  // bins 0..19 (steady level, slow drift) never win
constexpr int32_t kFlickerLastSearchedBin = 498;  // bin 499 is computed, never searched

// Plain working state of one detection; copied byte for byte (CaclueFrequency takes it by value).
struct AlgoContext {
    float sampleRate;           // Hz; only converts the winning bin into hertz
    int32_t fftLength;          // transform length N, 1..1024
    int32_t dataLength;         // valid samples M (window length), 1..300
    int32_t originalData[300];  // raw samples
    int32_t lpfData[300];       // low-pass output, windowed in place
    float hammingWindow[300];   // window coefficients 0..M-1
    int32_t fftData[1024];      // transform input: M windowed samples, then zeros
    float fftCoef[1024];        // cosine table 0..N-1
    float amplitude[500];       // magnitude of bins 0..499
    float realPart[500];
    float imagPart[500];
};

// Clears the whole state. False when the clear failed.
bool InitFrequencyDetectAlgo(AlgoContext& ctx);

// Fills fftCoef[0..N-1] with cos(i * 6.2832 / N); nothing when N < 1.
void InitFftCoef(AlgoContext& ctx);

// Fills hammingWindow[0..M-1] with the symmetric Hamming window; nothing when M < 1.
// The name is misspelt on purpose: it is the library's exported symbol; do not correct it.
void InitHammingWindowFiltert(AlgoContext& ctx);

// Second-order integer low-pass over in[0..len-1] into out. 0, or -1 when out could not be
// cleared (out then unchanged). out[0] and out[1] are always copied from in.
int32_t BandingLpf(int32_t (&in)[300], int32_t (&out)[300], int32_t len);

// Multiplies lpfData[0..M-1] by the window in place.
void ProcessHammingWindowFilter(AlgoContext& ctx);

// DFT of fftData for bins 0..499 into realPart/imagPart/amplitude, then the peak search over bins
// 20..498. Returns the winning bin in whole hertz, or 0 when no searched bin is above 0.
int32_t AnalyseDataWithFft(AlgoContext& ctx);

// Filter, window and transform on a private copy of the state; the caller's state is untouched.
// The name is misspelt on purpose: it is the library's exported symbol; do not correct it.
int32_t CaclueFrequency(AlgoContext ctx);

// Loads count, rate and the 256 samples into a cleared state and builds its tables.
void PrepareFrequenceDetectAlgo(AlgoContext& ctx, int32_t (&samples)[256], int32_t count,
                                float rate);

// Whole detection on a fresh stack state. 0 with frequency written; -1 when the state could not
// be cleared or count exceeds the state's 300 samples (frequency then untouched).
// The name is misspelt on purpose: it is the library's exported symbol; do not correct it.
int32_t DetectFlickerFrequence(int32_t (&samples)[256], int32_t count, int32_t& frequency,
                               float rate);

// The two below serve the host tools, tests and benchmark, which link the detector's objects;
// hidden so that the library exports only its own interface.
#define KXMMI_FLICKER_HOST_ONLY __attribute__((visibility("hidden")))

// The winning bin of a transformed state: the strongest of the searched bins, the lowest among
// equals, or 0 when none is above 0. AnalyseDataWithFft converts this bin into hertz.
KXMMI_FLICKER_HOST_ONLY int32_t FlickerPeakBin(const AlgoContext& ctx);

// The detection DetectFlickerFrequence runs, same arguments and results, done in `ctx` itself so
// that every intermediate (filtered and windowed samples, transform input, bins) stays there for
// a caller that shows or checks it; FlickerPeakBin(ctx) then gives the winning bin.
KXMMI_FLICKER_HOST_ONLY int32_t DetectFlickerSpectrum(int32_t (&samples)[256], int32_t count,
                                                      int32_t& frequency, float rate,
                                                      AlgoContext& ctx);

#endif
