// flicker: runs the flicker detector on captures of light samples and, optionally, draws the
// amplitude spectrum it decided on.
//
//   flicker [--rate HZ] [--spectrum OUT.svg] FILE...
//
// A capture holds integers, one a line or comma-separated; blank lines and lines starting with
// '#' are skipped. At least 256 samples are needed and the first 256 are used. FILE "-" reads
// standard input.
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "flicker_detector.h"

namespace {

constexpr int kBlock = 256;
constexpr int kBins = 500;
constexpr int kFirstSearched = 20;
constexpr int kLastSearched = 498;

struct Options {
    float rate = 1000.0f;
    std::string spectrum;
    std::vector<std::string> files;
};

// What the detector decided, with the spectrum behind it.
struct Analysis {
    int32_t frequency = 0;
    int bin = 0;  // 0 when no searched bin is above zero
    float amplitude[kBins] = {};
};

void Usage(std::FILE* to) {
    std::fprintf(to,
                 "usage: flicker [--rate HZ] [--spectrum OUT.svg] FILE...\n"
                 "  FILE holds light samples, one integer a line or comma-separated; the first\n"
                 "  256 are used. --rate is the sampling rate (default 1000 Hz). --spectrum\n"
                 "  draws the amplitude spectrum of a single FILE as SVG.\n");
}

std::string Trim(const std::string& s) {
    const size_t b = s.find_first_not_of(" \t\r");
    if (b == std::string::npos) return "";
    const size_t e = s.find_last_not_of(" \t\r");
    return s.substr(b, e - b + 1);
}

// Reads every sample of `in`; on failure describes the problem in `error`.
bool ReadSamples(std::istream& in, const std::string& name, std::vector<int32_t>& samples,
                 std::string& error) {
    std::string line;
    for (int line_no = 1; std::getline(in, line); ++line_no) {
        const std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed[0] == '#') continue;
        std::stringstream fields(trimmed);
        std::string field;
        while (std::getline(fields, field, ',')) {
            const std::string text = Trim(field);
            char* end = nullptr;
            errno = 0;
            const long long v = std::strtoll(text.c_str(), &end, 10);
            if (text.empty() || *end != '\0') {
                error = name + ":" + std::to_string(line_no) + ": not an integer: '" + text + "'";
                return false;
            }
            if (errno == ERANGE || v < INT32_MIN || v > INT32_MAX) {
                error = name + ":" + std::to_string(line_no) + ": sample out of 32-bit range: '" +
                        text + "'";
                return false;
            }
            samples.push_back(static_cast<int32_t>(v));
        }
    }
    if (in.bad()) {
        error = name + ": read error";
        return false;
    }
    return true;
}

// Runs the detector's stages as a detection does, keeping the spectrum, and checks the answer
// against the detector's own entry point.
bool Analyse(const std::vector<int32_t>& samples, float rate, Analysis& out) {
    int32_t block[kBlock];
    for (int i = 0; i < kBlock; ++i) block[i] = samples[i];

    AlgoContext ctx;
    if (!InitFrequencyDetectAlgo(ctx)) return false;
    PrepareFrequenceDetectAlgo(ctx, block, kBlock, rate);
    BandingLpf(ctx.originalData, ctx.lpfData, kBlock);
    ProcessHammingWindowFilter(ctx);
    for (int n = 0; n < ctx.fftLength; ++n) ctx.fftData[n] = n < kBlock ? ctx.lpfData[n] : 0;
    const int32_t staged = AnalyseDataWithFft(ctx);

    int32_t detected = -1;
    if (DetectFlickerFrequence(block, kBlock, detected, rate) != 0 || detected != staged) {
        return false;
    }
    out.frequency = detected;
    out.bin = 0;
    float best = 0.0f;
    for (int k = kFirstSearched; k <= kLastSearched; ++k) {
        if (ctx.amplitude[k] > best) {
            best = ctx.amplitude[k];
            out.bin = k;
        }
    }
    std::memcpy(out.amplitude, ctx.amplitude, sizeof(out.amplitude));
    return true;
}

// Round axis steps: 1, 2 or 5 times a power of ten, about `ticks` of them over `span`.
double NiceStep(double span, int ticks) {
    const double raw = span / ticks;
    const double mag = std::pow(10.0, std::floor(std::log10(raw)));
    const double r = raw / mag;
    return (r < 1.5 ? 1 : r < 3.5 ? 2 : r < 7.5 ? 5 : 10) * mag;
}

std::string Fmt(double v, int decimals = 0) {
    char buf[64];
    std::snprintf(buf, sizeof(buf), "%.*f", decimals, v);
    return buf;
}

std::string XmlEscape(const std::string& s) {
    std::string out;
    for (char c : s) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

// Amplitude against frequency for bins 0..499. The y axis is scaled to the searched band, where
// the decision is made; the steady level and slow drift below it usually dwarf everything and are
// clipped at the top.
std::string SpectrumSvg(const Analysis& a, float rate, const std::string& title) {
    const double W = 1000, H = 520, left = 90, right = 30, top = 60, bottom = 70;
    const double pw = W - left - right, ph = H - top - bottom;
    const double hz_per_bin = rate / 1024.0;
    const double max_hz = (kBins - 1) * hz_per_bin;

    double band_max = 0;
    for (int k = kFirstSearched; k <= kLastSearched; ++k)
        band_max = std::fmax(band_max, a.amplitude[k]);
    if (band_max <= 0) band_max = 1;
    const double y_step = NiceStep(band_max * 1.1, 5);
    const double y_max = std::ceil(band_max * 1.1 / y_step) * y_step;

    auto X = [&](double hz) { return left + pw * hz / max_hz; };
    auto Y = [&](double amp) { return top + ph * (1 - std::fmin(amp, y_max) / y_max); };

    std::ostringstream s;
    s << "<svg xmlns='http://www.w3.org/2000/svg' width='" << W << "' height='" << H
      << "' font-family='sans-serif' font-size='13'>\n"
      << "<rect width='100%' height='100%' fill='white'/>\n";
    s << "<text x='" << W / 2 << "' y='28' text-anchor='middle' font-size='18' font-weight='bold'>"
      << XmlEscape(title) << "</text>\n";

    // Searched band.
    s << "<rect x='" << Fmt(X(kFirstSearched * hz_per_bin), 1) << "' y='" << top << "' width='"
      << Fmt(X(kLastSearched * hz_per_bin) - X(kFirstSearched * hz_per_bin), 1) << "' height='"
      << ph << "' fill='#dbe9f7'/>\n";
    s << "<text x='" << Fmt(X(kLastSearched * hz_per_bin) - 6, 1) << "' y='" << top + 16
      << "' text-anchor='end' fill='#3b6fa6'>searched band, bins " << kFirstSearched << "-"
      << kLastSearched << " (" << Fmt(kFirstSearched * hz_per_bin, 1) << "-"
      << Fmt(kLastSearched * hz_per_bin, 1) << " Hz)</text>\n";

    // Grid and ticks.
    for (double v = 0; v <= y_max + y_step / 2; v += y_step) {
        s << "<line x1='" << left << "' x2='" << left + pw << "' y1='" << Fmt(Y(v), 1) << "' y2='"
          << Fmt(Y(v), 1) << "' stroke='#cccccc' stroke-width='0.5'/>\n"
          << "<text x='" << left - 8 << "' y='" << Fmt(Y(v) + 4, 1) << "' text-anchor='end'>"
          << Fmt(v, y_step < 1 ? 2 : 0) << "</text>\n";
    }
    const double x_step = NiceStep(max_hz, 10);
    for (double hz = 0; hz <= max_hz + 1e-9; hz += x_step) {
        s << "<line x1='" << Fmt(X(hz), 1) << "' x2='" << Fmt(X(hz), 1) << "' y1='" << top + ph
          << "' y2='" << top + ph + 5 << "' stroke='black'/>\n"
          << "<text x='" << Fmt(X(hz), 1) << "' y='" << top + ph + 20 << "' text-anchor='middle'>"
          << Fmt(hz) << "</text>\n";
    }

    // Spectrum.
    s << "<polyline fill='none' stroke='#1f4e79' stroke-width='1.2' points='";
    bool clipped = false;
    for (int k = 0; k < kBins; ++k) {
        clipped = clipped || a.amplitude[k] > y_max;
        s << Fmt(X(k * hz_per_bin), 1) << "," << Fmt(Y(a.amplitude[k]), 1) << " ";
    }
    s << "'/>\n";
    if (clipped) {
        s << "<text x='" << left << "' y='" << top - 8
          << "' fill='#7a4a00'>lowest bins (steady level) off scale</text>\n";
    }

    // Winner.
    if (a.bin > 0) {
        const double wx = X(a.bin * hz_per_bin), wy = Y(a.amplitude[a.bin]);
        const bool right_side = wx > left + pw * 0.7;
        s << "<line x1='" << Fmt(wx, 1) << "' x2='" << Fmt(wx, 1) << "' y1='" << top << "' y2='"
          << top + ph << "' stroke='#c0392b' stroke-dasharray='4,3'/>\n"
          << "<circle cx='" << Fmt(wx, 1) << "' cy='" << Fmt(wy, 1)
          << "' r='5' fill='none' stroke='#c0392b' stroke-width='2'/>\n"
          << "<text x='" << Fmt(wx + (right_side ? -10 : 10), 1) << "' y='"
          << Fmt(std::fmax(wy, top + 40) - 8, 1) << "' fill='#c0392b' font-weight='bold'"
          << (right_side ? " text-anchor='end'" : "") << ">" << a.frequency << " Hz (bin " << a.bin
          << ", amplitude " << Fmt(a.amplitude[a.bin], 1) << ")</text>\n";
    } else {
        s << "<text x='" << left + pw / 2 << "' y='" << top + ph / 2
          << "' text-anchor='middle' fill='#c0392b' font-weight='bold'>no searched bin above "
             "zero: 0 Hz</text>\n";
    }

    // Axes.
    s << "<line x1='" << left << "' x2='" << left << "' y1='" << top << "' y2='" << top + ph
      << "' stroke='black'/>\n"
      << "<line x1='" << left << "' x2='" << left + pw << "' y1='" << top + ph << "' y2='"
      << top + ph << "' stroke='black'/>\n"
      << "<text x='" << left + pw / 2 << "' y='" << H - 20
      << "' text-anchor='middle'>frequency (Hz), " << Fmt(hz_per_bin, 4) << " Hz per bin</text>\n"
      << "<text transform='translate(24," << top + ph / 2
      << ") rotate(-90)' text-anchor='middle'>amplitude</text>\n"
      << "</svg>\n";
    return s.str();
}

bool ParseRate(const char* text, float& rate) {
    char* end = nullptr;
    const float v = std::strtof(text, &end);
    if (end == text || *end != '\0' || !std::isfinite(v) || v <= 0) return false;
    rate = v;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Options opt;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "-h" || arg == "--help") {
            Usage(stdout);
            return 0;
        } else if (arg == "--rate" || arg == "--spectrum") {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "flicker: %s needs a value\n", arg.c_str());
                return 2;
            }
            const char* value = argv[++i];
            if (arg == "--spectrum") {
                opt.spectrum = value;
            } else if (!ParseRate(value, opt.rate)) {
                std::fprintf(stderr, "flicker: --rate needs a positive number of Hz, not '%s'\n",
                             value);
                return 2;
            }
        } else if (arg.size() > 1 && arg[0] == '-') {
            std::fprintf(stderr, "flicker: unknown option '%s'\n", arg.c_str());
            Usage(stderr);
            return 2;
        } else {
            opt.files.push_back(arg);
        }
    }
    if (opt.files.empty()) {
        Usage(stderr);
        return 2;
    }
    if (!opt.spectrum.empty() && opt.files.size() != 1) {
        std::fprintf(stderr, "flicker: --spectrum draws one capture; give exactly one FILE\n");
        return 2;
    }

    int status = 0;
    for (const std::string& name : opt.files) {
        std::vector<int32_t> samples;
        std::string error;
        bool ok;
        if (name == "-") {
            ok = ReadSamples(std::cin, "<stdin>", samples, error);
        } else {
            std::ifstream in(name);
            if (!in) {
                std::fprintf(stderr, "flicker: %s: cannot open: %s\n", name.c_str(),
                             std::strerror(errno));
                status = 1;
                continue;
            }
            ok = ReadSamples(in, name, samples, error);
        }
        if (ok && samples.size() < kBlock) {
            error = name + ": " + std::to_string(samples.size()) + " samples, at least " +
                    std::to_string(kBlock) + " are needed";
            ok = false;
        }
        if (!ok) {
            std::fprintf(stderr, "flicker: %s\n", error.c_str());
            status = 1;
            continue;
        }

        Analysis a;
        if (!Analyse(samples, opt.rate, a)) {
            std::fprintf(stderr, "flicker: %s: the detector failed\n", name.c_str());
            status = 1;
            continue;
        }
        const std::string prefix = opt.files.size() > 1 ? name + ": " : "";
        if (a.bin > 0) {
            std::printf("%sfrequency: %d Hz (bin %d at %.4f Hz per bin, amplitude %.1f)\n",
                        prefix.c_str(), a.frequency, a.bin, opt.rate / 1024.0, a.amplitude[a.bin]);
        } else {
            std::printf("%sfrequency: 0 Hz (no bin between %d and %d above zero)\n", prefix.c_str(),
                        kFirstSearched, kLastSearched);
        }
        if (samples.size() > kBlock) {
            std::printf("%s  used the first %d of %zu samples\n", prefix.c_str(), kBlock,
                        samples.size());
        }

        if (!opt.spectrum.empty()) {
            const std::string base = name.substr(name.find_last_of('/') + 1);
            std::ofstream svg(opt.spectrum);
            svg << SpectrumSvg(
                a, opt.rate,
                "Flicker spectrum of " + base + ": " + std::to_string(a.frequency) + " Hz");
            svg.close();
            if (!svg) {
                std::fprintf(stderr, "flicker: %s: cannot write the spectrum\n",
                             opt.spectrum.c_str());
                status = 1;
            }
        }
    }
    return status;
}
