// The amplitude spectrum of one detection, drawn as SVG.
#ifndef KXMMI_TOOLS_FLICKER_SVG_H
#define KXMMI_TOOLS_FLICKER_SVG_H

#include <cstdint>
#include <string>
#include <vector>

#include "flicker_detector.h"

// What the detector decided, with the spectrum behind it.
struct Analysis {
    int32_t frequency = 0;
    int32_t bin = 0;  // 0 when no searched bin is above zero
    float amplitude[kFlickerBins] = {};
    std::string note;  // why the frequency is not a flicker's, or empty
};

// Every SVG the tool writes holds this line, and the tool replaces only a file that holds it.
extern const char kSvgGeneratorMark[];

// Amplitude against frequency for bins 0..499, the searched band shaded, the winner marked.
std::string SpectrumSvg(const Analysis& a, float rate, const std::string& title);

// Why `out` cannot take a spectrum, or "" when it can: it is not one of the `inputs`, its folder
// exists and is writable, and it is new or an SVG this tool wrote. Checked before any capture
// is read, so that a refused output costs nothing and no file of the user's is written over.
std::string SpectrumFileProblem(const std::string& out, const std::vector<std::string>& inputs);

// Writes `text` to a new file beside `path` and renames it over `path`, so that a failure at any
// point leaves the old file whole and nothing partial behind. False with the reason otherwise.
bool WriteReplacing(const std::string& path, const std::string& text, std::string& why);

// Interrupting the tool removes the temporary file WriteReplacing is writing.
void RemoveTempFilesOnSignals();

#endif
