// flicker: runs the flicker detector on captures of light samples and, optionally, draws the
// amplitude spectrum it decided on.
//
//   flicker [--rate HZ] [--column N] [--json] [--spectrum OUT.svg] FILE...
//
// A capture is text: integers one a line, on one comma-separated line, or a table whose lines all
// hold the same number of values (separated by commas, tabs or spaces), of which --column picks
// the series. Blank lines, '#' lines and a line of names above a table are skipped. At least 256
// samples are needed and the first 256 are used. FILE "-" reads standard input.
//
// Exit status: 0 every capture analysed, 1 a capture could not be read or analysed, 2 the command
// line was refused (then nothing is analysed or written).
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdarg>
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
constexpr long kMinRate = 1;
constexpr long kMaxRate = 1000000;
constexpr size_t kMaxCaptureBytes = 16u << 20;  // far beyond any capture; stops at /dev/zero

enum Status { kOk = 0, kFailed = 1, kRefused = 2 };

struct Options {
    float rate = 1000.0f;
    int column = 0;  // 1-based; 0 when not given
    bool json = false;
    std::string spectrum;
    std::vector<std::string> files;
};

struct Capture {
    std::string name;  // as given
    std::string svg;   // where its spectrum goes, empty for none
    std::vector<int32_t> samples;
    Status status = kOk;
    std::string error;
};

// What the detector decided, with the spectrum behind it.
struct Analysis {
    int32_t frequency = 0;
    int bin = 0;  // 0 when no searched bin is above zero
    float amplitude[kBins] = {};
};

// A message on standard error, after what standard output holds so far, so that the two keep
// their order when both go to one pipe.
__attribute__((format(printf, 1, 2))) void Say(const char* format, ...) {
    std::fflush(stdout);
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
}

void Usage(std::FILE* to) {
    std::fprintf(to,
                 "usage: flicker [--rate HZ] [--column N] [--json] [--spectrum OUT.svg] FILE...\n"
                 "  FILE holds light samples: one integer a line, one comma-separated line, or a\n"
                 "  table (every line the same number of values) whose series --column N picks;\n"
                 "  the first 256 samples are used, \"-\" reads standard input.\n"
                 "  --rate HZ        sampling rate in whole Hz, 1 to 1000000 (default 1000)\n"
                 "  --column N       the table column holding the samples, from 1\n"
                 "  --json           one JSON object a capture instead of the text line\n"
                 "  --spectrum F.svg draw the amplitude spectrum as SVG; with several FILEs one\n"
                 "                   F-NAME.svg each (NAME: the capture's name, no extension)\n"
                 "exit status: 0 analysed, 1 a capture could not be read or analysed,\n"
                 "  2 command line refused (then nothing is analysed or written)\n");
}

std::string Trim(const std::string& s) {
    const size_t b = s.find_first_not_of(" \t\r");
    if (b == std::string::npos) return "";
    const size_t e = s.find_last_not_of(" \t\r");
    return s.substr(b, e - b + 1);
}

// Length of the well-formed UTF-8 sequence at s[i] with its code point, or 0 when there is none.
size_t Utf8At(const std::string& s, size_t i, uint32_t& cp) {
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
    const unsigned char c = byte(i);
    size_t n = 1;
    uint32_t least = 0;
    if (c < 0x80) {
        cp = c;
        return 1;
    } else if (c >= 0xC2 && c <= 0xDF) {
        n = 2, cp = c & 0x1F, least = 0x80;
    } else if (c >= 0xE0 && c <= 0xEF) {
        n = 3, cp = c & 0x0F, least = 0x800;
    } else if (c >= 0xF0 && c <= 0xF4) {
        n = 4, cp = c & 0x07, least = 0x10000;
    } else {
        return 0;
    }
    if (i + n > s.size()) return 0;
    for (size_t k = 1; k < n; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) return 0;
        cp = cp << 6 | (byte(i + k) & 0x3F);
    }
    return cp < least || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF) ? 0 : n;
}

bool IsControl(uint32_t cp) { return cp < 0x20 || (cp >= 0x7F && cp <= 0x9F); }

// `s` safe to print on a terminal: control characters and bytes that are not UTF-8 become \t, \n,
// \r or \xNN, so a file's content or name can never drive the terminal.
std::string Printable(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size();) {
        uint32_t cp = 0;
        const size_t n = Utf8At(s, i, cp);
        if (n > 0 && !IsControl(cp)) {
            out.append(s, i, n);
        } else if (cp == '\t' || cp == '\n' || cp == '\r') {
            out += cp == '\t' ? "\\t" : cp == '\n' ? "\\n" : "\\r";
        } else {
            for (size_t k = i; k < i + std::max<size_t>(n, 1); ++k) {
                char hex[8];
                std::snprintf(hex, sizeof(hex), "\\x%02X", static_cast<unsigned char>(s[k]));
                out += hex;
            }
        }
        i += std::max<size_t>(n, 1);
    }
    return out;
}

// `s` as a JSON string of ASCII characters; bytes that are not UTF-8 become U+FFFD.
std::string JsonString(const std::string& s) {
    std::string out = "\"";
    for (size_t i = 0; i < s.size();) {
        uint32_t cp = 0;
        size_t n = Utf8At(s, i, cp);
        if (n == 0) cp = 0xFFFD, n = 1;
        char unit[16];
        if (cp == '"' || cp == '\\') {
            out += '\\';
            out += static_cast<char>(cp);
        } else if (cp >= 0x20 && cp < 0x7F) {
            out += static_cast<char>(cp);
        } else if (cp < 0x10000) {
            std::snprintf(unit, sizeof(unit), "\\u%04x", cp);
            out += unit;
        } else {
            std::snprintf(unit, sizeof(unit), "\\u%04x\\u%04x", 0xD800 + ((cp - 0x10000) >> 10),
                          0xDC00 + ((cp - 0x10000) & 0x3FF));
            out += unit;
        }
        i += n;
    }
    return out + "\"";
}

// Offset of the first byte that makes `text` binary (NUL, a control character other than tab,
// CR and LF, or bytes that are not UTF-8); npos for text.
size_t FirstBinaryByte(const std::string& text) {
    for (size_t i = 0; i < text.size();) {
        uint32_t cp = 0;
        const size_t n = Utf8At(text, i, cp);
        if (n == 0 || (IsControl(cp) && cp != '\t' && cp != '\r' && cp != '\n')) return i;
        i += n;
    }
    return std::string::npos;
}

// A data line's values: comma-separated when it holds a comma, else separated by tabs and spaces.
std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields;
    std::stringstream in(line);
    std::string field;
    if (line.find(',') != std::string::npos) {
        while (std::getline(in, field, ',')) fields.push_back(Trim(field));
        if (line.back() == ',') fields.push_back("");
    } else {
        while (in >> field) fields.push_back(field);
    }
    return fields;
}

// Parses one sample; on failure says why, naming the text as written.
bool ParseSample(const std::string& text, int32_t& sample, std::string& why) {
    char* end = nullptr;
    errno = 0;
    const long long v = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0') {
        why = "not an integer: '" + Printable(text) + "'";
        return false;
    }
    if (errno == ERANGE || v < INT32_MIN || v > INT32_MAX) {
        why = "sample out of 32-bit range: '" + Printable(text) + "'";
        return false;
    }
    sample = static_cast<int32_t>(v);
    return true;
}

// Reads and parses one capture into c.samples, or sets c.status and c.error: kFailed for a file
// that holds no series, kRefused for a table whose column the command line did not choose.
void ReadCapture(Capture& c, int column) {
    const std::string name = c.name == "-" ? "<stdin>" : Printable(c.name);
    auto fail = [&](Status status, const std::string& error) {
        c.status = status;
        c.error = error;
    };
    std::ifstream file;
    if (c.name != "-") {
        file.open(c.name, std::ios::binary);
        struct stat st;
        if (!file || (stat(c.name.c_str(), &st) == 0 && S_ISDIR(st.st_mode))) {
            return fail(kFailed,
                        name + ": cannot open: " + (file ? "is a folder" : std::strerror(errno)));
        }
    }
    std::istream& in = c.name == "-" ? std::cin : file;
    std::string text;
    char chunk[1 << 16];
    while (text.size() <= kMaxCaptureBytes && (in.read(chunk, sizeof(chunk)) || in.gcount() > 0))
        text.append(chunk, static_cast<size_t>(in.gcount()));
    if (in.bad()) return fail(kFailed, name + ": read error");
    if (text.size() > kMaxCaptureBytes) {
        return fail(kFailed, name + ": larger than " + std::to_string(kMaxCaptureBytes >> 20) +
                                 " MiB, not a capture");
    }
    if (text.rfind("\xEF\xBB\xBF", 0) == 0) text.erase(0, 3);  // a byte-order mark
    if (const size_t at = FirstBinaryByte(text); at != std::string::npos) {
        char what[64];
        std::snprintf(what, sizeof(what), "byte 0x%02X at offset %zu",
                      static_cast<unsigned char>(text[at]), at);
        return fail(kFailed, name + ": not a text file (" + what + ")");
    }

    struct Line {
        int number;
        std::vector<std::string> fields;
    };
    std::vector<Line> lines;
    std::stringstream rows(text);
    std::string row;
    for (int number = 1; std::getline(rows, row); ++number) {
        const std::string trimmed = Trim(row);
        if (!trimmed.empty() && trimmed[0] != '#') lines.push_back({number, Fields(trimmed)});
    }
    // A first line of names with as many fields as the next is a table's header.
    std::vector<std::string> header;
    if (lines.size() > 1 && lines[0].fields.size() == lines[1].fields.size()) {
        std::string why;
        int32_t ignored;
        bool names = true;
        for (const std::string& f : lines[0].fields) names = names && !ParseSample(f, ignored, why);
        if (names) {
            header = lines[0].fields;
            lines.erase(lines.begin());
        }
    }
    bool table = lines.size() > 1 && lines[0].fields.size() >= 2;
    for (const Line& l : lines) table = table && l.fields.size() == lines[0].fields.size();
    const size_t columns = table ? lines[0].fields.size() : 1;
    std::string shape = table ? "a table of " + std::to_string(columns) + " columns" : "one series";
    if (!header.empty()) {
        shape += " (";
        for (size_t i = 0; i < header.size(); ++i) shape += (i ? ", " : "") + Printable(header[i]);
        shape += ")";
    }
    if (table && column == 0) {
        return fail(kRefused, name + ": " + shape + "; choose the series with --column 1 to " +
                                  std::to_string(columns));
    }
    if (static_cast<size_t>(column) > columns) {
        return fail(kRefused, name + ": " + shape + ", no column " + std::to_string(column));
    }
    for (const Line& l : lines) {
        for (size_t i = 0; i < l.fields.size(); ++i) {
            if (table && i + 1 != static_cast<size_t>(column)) continue;
            int32_t sample;
            std::string why;
            if (!ParseSample(l.fields[i], sample, why)) {
                return fail(kFailed, name + ":" + std::to_string(l.number) + ": " + why);
            }
            c.samples.push_back(sample);
        }
    }
    if (c.samples.size() < kBlock) {
        fail(kFailed, name + ": " + std::to_string(c.samples.size()) + " samples, at least " +
                          std::to_string(kBlock) + " are needed");
    }
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

// A whole number of Hz: a fraction would be a rate no capture was taken at.
bool ParseRate(const std::string& text, float& rate) {
    if (text.empty() || text.size() > 7 ||
        !std::all_of(text.begin(), text.end(), [](char ch) { return ch >= '0' && ch <= '9'; }))
        return false;
    const long v = std::strtol(text.c_str(), nullptr, 10);
    if (v < kMinRate || v > kMaxRate) return false;
    rate = static_cast<float>(v);
    return true;
}

bool ParseColumn(const std::string& text, int& column) {
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE || v < 1 || v > 1000000) return false;
    column = static_cast<int>(v);
    return true;
}

// Reads the command line into `opt`; false (with the line said) when it is refused.
bool ParseArguments(int argc, char** argv, Options& opt, bool& help) {
    bool options_end = false;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i], value;
        if (options_end || arg == "-" || arg.empty() || arg[0] != '-') {
            opt.files.push_back(arg);
            continue;
        }
        const size_t eq = arg.find('=');
        const bool takes_value = arg.compare(0, eq, "--rate") == 0 ||
                                 arg.compare(0, eq, "--column") == 0 ||
                                 arg.compare(0, eq, "--spectrum") == 0;
        if (takes_value && eq != std::string::npos) {
            value = arg.substr(eq + 1);
            arg.resize(eq);
        } else if (takes_value) {
            if (i + 1 >= argc) {
                Say("flicker: %s needs a value\n", arg.c_str());
                return false;
            }
            value = argv[++i];
        }
        if (arg == "--") {
            options_end = true;
        } else if (arg == "-h" || arg == "--help") {
            help = true;
        } else if (arg == "--json") {
            opt.json = true;
        } else if (arg == "--spectrum") {
            opt.spectrum = value;
        } else if (arg == "--rate" && !ParseRate(value, opt.rate)) {
            Say("flicker: --rate takes a sampling rate in whole Hz from 1 to 1000000, not '%s'\n",
                Printable(value).c_str());
            return false;
        } else if (arg == "--column" && !ParseColumn(value, opt.column)) {
            Say("flicker: --column takes a column number from 1, not '%s'\n",
                Printable(value).c_str());
            return false;
        } else if (!takes_value) {
            Say("flicker: unknown option '%s' (flicker --help lists them)\n",
                Printable(arg).c_str());
            return false;
        }
    }
    if (!help && opt.files.empty()) {
        Say("flicker: no capture given; usage: flicker [OPTIONS] FILE...\n");
        return false;
    }
    return true;
}

// The spectrum file of each capture: OUT.svg itself for one capture; for several, OUT-NAME.svg
// with NAME the capture's file name without its folder and extension ("stdin" for "-").
void NameSpectra(const std::string& spectrum, std::vector<Capture>& captures) {
    if (spectrum.empty()) return;
    const std::string stem = spectrum.substr(0, spectrum.size() - 4);
    for (Capture& c : captures) {
        std::string base = c.name == "-" ? "stdin" : c.name.substr(c.name.find_last_of('/') + 1);
        if (const size_t dot = base.find_last_of('.'); dot != std::string::npos && dot > 0)
            base.resize(dot);
        c.svg = captures.size() == 1 ? spectrum : stem + "-" + base + ".svg";
    }
}

bool SameFile(const std::string& a, const std::string& b) {
    struct stat sa, sb;
    return stat(a.c_str(), &sa) == 0 && stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}

// Why `out` cannot take a spectrum, or "" when it can: checked before any capture is read, so that
// a refused output costs nothing and no input is ever written over.
std::string OutputProblem(const std::string& out, const std::vector<Capture>& captures) {
    for (const Capture& c : captures) {
        if (c.name != "-" && (c.name == out || SameFile(c.name, out))) {
            return "is the capture " + Printable(c.name) + "; refusing to write over it";
        }
        if (&c.svg != &out && c.svg == out)
            return "is the spectrum of two captures of one name; rename one, or draw their spectra "
                   "in separate runs";
    }
    const size_t slash = out.find_last_of('/');
    const std::string folder = slash == std::string::npos ? "." : out.substr(0, slash + 1);
    struct stat st;
    if (stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        return "folder " + Printable(folder) + " does not exist";
    }
    if (stat(out.c_str(), &st) == 0) {
        if (S_ISDIR(st.st_mode)) return "is a folder";
        if (access(out.c_str(), W_OK) != 0) return "is not writable";
    } else if (access(folder.c_str(), W_OK | X_OK) != 0) {
        return "folder " + Printable(folder) + " is not writable";
    }
    return "";
}

bool EndsWithSvg(const std::string& name) {
    if (name.size() <= 4 || name.back() == '/') return false;
    std::string ext = name.substr(name.size() - 4);
    for (char& ch : ext) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return ext == ".svg" && name[name.size() - 5] != '/';
}

void Report(const Capture& c, const Analysis& a, const Options& opt, bool several) {
    const double hz_per_bin = opt.rate / 1024.0;
    const size_t read = c.samples.size();
    if (opt.json) {
        std::printf(
            "{\"file\":%s,\"frequency\":%d,\"bin\":%d,\"hz_per_bin\":%.4f,"
            "\"amplitude\":%.1f,\"samples_used\":%d,\"samples_read\":%zu",
            JsonString(c.name).c_str(), a.frequency, a.bin, hz_per_bin,
            a.bin > 0 ? a.amplitude[a.bin] : 0.0f, kBlock, read);
        if (opt.column > 0) std::printf(",\"column\":%d", opt.column);
        if (!c.svg.empty()) std::printf(",\"spectrum\":%s", JsonString(c.svg).c_str());
        std::printf("}\n");
        return;
    }
    const std::string prefix = several ? Printable(c.name) + ": " : "";
    const std::string used = read > kBlock ? "; used the first " + std::to_string(kBlock) + " of " +
                                                 std::to_string(read) + " samples"
                                           : "";
    if (a.bin > 0) {
        std::printf("%sfrequency: %d Hz (bin %d at %.4f Hz per bin, amplitude %.1f%s)\n",
                    prefix.c_str(), a.frequency, a.bin, hz_per_bin, a.amplitude[a.bin],
                    used.c_str());
    } else {
        std::printf("%sfrequency: 0 Hz (no bin between %d and %d above zero%s)\n", prefix.c_str(),
                    kFirstSearched, kLastSearched, used.c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    Options opt;
    bool help = false;
    if (!ParseArguments(argc, argv, opt, help)) return kRefused;
    if (help) {
        Usage(stdout);
        return kOk;
    }
    if (!opt.spectrum.empty() && !EndsWithSvg(opt.spectrum)) {
        Say("flicker: --spectrum takes a file name ending in .svg, not '%s'\n",
            Printable(opt.spectrum).c_str());
        return kRefused;
    }
    std::vector<Capture> captures(opt.files.size());
    for (size_t i = 0; i < captures.size(); ++i) captures[i].name = opt.files[i];
    NameSpectra(opt.spectrum, captures);
    for (const Capture& c : captures) {
        if (c.svg.empty()) continue;
        if (const std::string problem = OutputProblem(c.svg, captures); !problem.empty()) {
            Say("flicker: --spectrum %s: %s\n", Printable(c.svg).c_str(), problem.c_str());
            return kRefused;
        }
    }

    // Every capture is read before any is analysed, so that a refused one leaves nothing done.
    int status = kOk;
    for (Capture& c : captures) {
        ReadCapture(c, opt.column);
        if (c.status != kOk) Say("flicker: %s\n", c.error.c_str());
        status = std::max(status, static_cast<int>(c.status));
    }
    if (status == kRefused) return kRefused;

    for (const Capture& c : captures) {
        if (c.status != kOk) continue;
        Analysis a;
        if (!Analyse(c.samples, opt.rate, a)) {
            Say("flicker: %s: the detector failed\n", Printable(c.name).c_str());
            status = kFailed;
            continue;
        }
        Report(c, a, opt, captures.size() > 1);
        if (c.svg.empty()) continue;
        const std::string base = c.name == "-"
                                     ? "standard input"
                                     : Printable(c.name.substr(c.name.find_last_of('/') + 1));
        std::ofstream svg(c.svg);
        svg << SpectrumSvg(
            a, opt.rate,
            "Flicker spectrum of " + base + ": " + std::to_string(a.frequency) + " Hz");
        svg.close();
        if (!svg) {
            Say("flicker: %s: cannot write the spectrum\n", Printable(c.svg).c_str());
            status = kFailed;
        } else {
            Say("flicker: spectrum in %s\n", Printable(c.svg).c_str());
        }
    }
    return status;
}
