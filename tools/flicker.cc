// flicker: runs the flicker detector on captures of light samples, says when its number is not a
// flicker frequency, and optionally draws the amplitude spectrum it decided on.
//
//   flicker [--rate HZ] [--column N] [--json] [--spectrum OUT.svg] FILE...
//
// Exit status: 0 every capture analysed, 1 a capture could not be read or a result not written,
// 2 the command line was refused (then nothing is analysed or written).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "flicker_capture.h"
#include "flicker_detector.h"
#include "flicker_svg.h"

namespace {

constexpr long kMinRate = 1;
constexpr long kMaxRate = 1000000;

struct Options {
    float rate = 1000.0f;
    int column = 0;  // 1-based; 0 when not given
    bool json = false;
    std::string spectrum;
    std::vector<std::string> files;
};

struct Input {
    std::string name;  // as given
    std::string svg;   // where its spectrum goes, empty for none
    Capture capture;
    Status status = kOk;
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
                 "                   F-NAME.svg each (NAME: the capture's name, no extension);\n"
                 "                   replaces only an SVG this tool wrote\n"
                 "A note follows a number that is not a flicker frequency (no component in the\n"
                 "searched band above the steady level, or a peak at the band's edge).\n"
                 "exit status: 0 analysed, 1 a capture could not be read or a result written,\n"
                 "  2 command line refused (then nothing is analysed or written)\n");
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
void NameSpectra(const std::string& spectrum, std::vector<Input>& captures) {
    if (spectrum.empty()) return;
    const std::string stem = spectrum.substr(0, spectrum.size() - 4);
    for (Input& c : captures) {
        std::string base = c.name == "-" ? "stdin" : c.name.substr(c.name.find_last_of('/') + 1);
        if (const size_t dot = base.find_last_of('.'); dot != std::string::npos && dot > 0)
            base.resize(dot);
        c.svg = captures.size() == 1 ? spectrum : stem + "-" + base + ".svg";
    }
}

bool EndsWithSvg(const std::string& name) {
    if (name.size() <= 4 || name.back() == '/') return false;
    std::string ext = name.substr(name.size() - 4);
    for (char& ch : ext) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return ext == ".svg" && name[name.size() - 5] != '/';
}

// Why the detector's number is not a flicker frequency, or "" when it may be one.
std::string Note(int32_t (&block)[kFlickerBlockLength], const Analysis& a, float rate) {
    char band[64];
    std::snprintf(band, sizeof(band), "%.1f-%.1f Hz",
                  kFlickerFirstSearchedBin * rate / static_cast<double>(kFlickerFftLength),
                  kFlickerLastSearchedBin * rate / static_cast<double>(kFlickerFftLength));
    if (a.bin == 0) {
        return "not a flicker frequency: no bin of the searched band is above zero (an all-zero "
               "or steady capture)";
    }
    // The window leaks the steady level into the lowest searched bins; where it wins, nothing
    // in the band stands above it. The same detection of the capture's mean level measures it.
    int64_t sum = 0;
    for (int32_t v : block) sum += v;
    int32_t level[kFlickerBlockLength];
    std::fill(level, level + kFlickerBlockLength, static_cast<int32_t>(sum / kFlickerBlockLength));
    AlgoContext steady;
    int32_t steady_hz = 0;
    if (DetectFlickerSpectrum(level, kFlickerBlockLength, steady_hz, rate, steady) == 0 &&
        a.amplitude[a.bin] < 2 * steady.amplitude[a.bin]) {
        return std::string(
                   "not a flicker frequency: the peak is no more than the capture's "
                   "steady level leaks into the band (a steady light, or a flicker "
                   "outside ") +
               band + ")";
    }
    if ((a.bin == kFlickerFirstSearchedBin && a.amplitude[a.bin - 1] > a.amplitude[a.bin]) ||
        (a.bin == kFlickerLastSearchedBin && a.amplitude[a.bin + 1] > a.amplitude[a.bin])) {
        return std::string(
                   "not a flicker frequency: the spectrum rises past the edge of the "
                   "searched band (") +
               band + "); the strongest component lies outside it";
    }
    return "";
}

Analysis Analyse(const std::vector<int32_t>& samples, float rate) {
    int32_t block[kFlickerBlockLength];
    std::copy(samples.begin(), samples.begin() + kFlickerBlockLength, block);
    AlgoContext ctx;
    Analysis a;
    // Only a failed clear of the state is refused, and a cleared stack state cannot fail.
    (void)DetectFlickerSpectrum(block, kFlickerBlockLength, a.frequency, rate, ctx);
    a.bin = FlickerPeakBin(ctx);
    std::copy(ctx.amplitude, ctx.amplitude + kFlickerBins, a.amplitude);
    a.note = Note(block, a, rate);
    return a;
}

void Report(const Input& c, const Analysis& a, const Options& opt, bool several) {
    const double hz_per_bin = opt.rate / static_cast<double>(kFlickerFftLength);
    const size_t read = c.capture.count;
    if (opt.json) {
        std::printf(
            "{\"file\":%s,\"frequency\":%d,\"bin\":%d,\"hz_per_bin\":%.4f,"
            "\"amplitude\":%.1f,\"samples_used\":%d,\"samples_read\":%zu",
            JsonString(c.name).c_str(), a.frequency, a.bin, hz_per_bin,
            a.bin > 0 ? a.amplitude[a.bin] : 0.0f, kFlickerBlockLength, read);
        if (opt.column > 0) std::printf(",\"column\":%d", opt.column);
        if (!c.svg.empty()) std::printf(",\"spectrum\":%s", JsonString(c.svg).c_str());
        if (!a.note.empty()) std::printf(",\"note\":%s", JsonString(a.note).c_str());
        std::printf("}\n");
        return;
    }
    const std::string prefix = several ? Printable(c.name) + ": " : "";
    std::string more = read > kFlickerBlockLength
                           ? "; used the first " + std::to_string(kFlickerBlockLength) + " of " +
                                 std::to_string(read) + " samples"
                           : "";
    if (!a.note.empty()) more += "; " + a.note;
    if (a.bin > 0) {
        std::printf("%sfrequency: %d Hz (bin %d at %.4f Hz per bin, amplitude %.1f%s)\n",
                    prefix.c_str(), a.frequency, a.bin, hz_per_bin, a.amplitude[a.bin],
                    more.c_str());
    } else {
        std::printf("%sfrequency: 0 Hz (no bin between %d and %d above zero%s)\n", prefix.c_str(),
                    kFlickerFirstSearchedBin, kFlickerLastSearchedBin, more.c_str());
    }
}

// Reads every capture before any is analysed, so that a refused one leaves nothing done.
int ReadAll(std::vector<Input>& captures, int column) {
    int status = kOk;
    for (Input& c : captures) {
        std::string error;
        const std::string name = c.name == "-" ? "<stdin>" : Printable(c.name);
        std::ifstream file;
        struct stat st;
        if (c.name == "-") {
            if (isatty(STDIN_FILENO))
                Say("flicker: reading samples from standard input (Ctrl-D ends)\n");
            c.status = ReadCapture(std::cin, name, column, kFlickerBlockLength, c.capture, error);
        } else if (file.open(c.name, std::ios::binary),
                   !file || (stat(c.name.c_str(), &st) == 0 && S_ISDIR(st.st_mode))) {
            c.status = kFailed;
            error = name + ": cannot open: " + (file ? "is a folder" : std::strerror(errno));
        } else {
            c.status = ReadCapture(file, name, column, kFlickerBlockLength, c.capture, error);
        }
        if (c.status != kOk) Say("flicker: %s\n", error.c_str());
        status = std::max(status, static_cast<int>(c.status));
    }
    return status;
}

// A closed standard stream would be taken by the next file opened: hold its place with one that
// refuses every transfer, so that output meant for it fails instead of landing in a file.
void HoldClosedStreams() {
    for (int fd = 0; fd <= 2; ++fd) {
        if (fcntl(fd, F_GETFD) == -1 && errno == EBADF)
            open("/dev/null", fd == 0 ? O_WRONLY : O_RDONLY);
    }
}

// Standard output that lost a result is a failure like any other write.
int CheckStdout(int status) {
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return status;
    Say("flicker: cannot write to standard output: %s\n", std::strerror(errno));
    return kFailed;
}

}  // namespace

int main(int argc, char** argv) {
    HoldClosedStreams();
    Options opt;
    bool help = false;
    if (!ParseArguments(argc, argv, opt, help)) return kRefused;
    if (help) {
        Usage(stdout);
        return CheckStdout(kOk);
    }
    if (!opt.spectrum.empty() && !EndsWithSvg(opt.spectrum)) {
        Say("flicker: --spectrum takes a file name ending in .svg, not '%s'\n",
            Printable(opt.spectrum).c_str());
        return kRefused;
    }
    std::vector<Input> captures(opt.files.size());
    for (size_t i = 0; i < captures.size(); ++i) captures[i].name = opt.files[i];
    NameSpectra(opt.spectrum, captures);
    std::vector<std::string> inputs;
    for (const Input& c : captures) inputs.push_back(c.name);
    for (const Input& c : captures) {
        if (c.svg.empty()) continue;
        std::string problem = SpectrumFileProblem(c.svg, inputs);
        for (const Input& other : captures) {
            if (&other != &c && other.svg == c.svg)
                problem =
                    "is the spectrum of two captures of one name; rename one, or draw their "
                    "spectra in separate runs";
        }
        if (!problem.empty()) {
            Say("flicker: --spectrum %s: %s\n", Printable(c.svg).c_str(), problem.c_str());
            return kRefused;
        }
    }
    int status = ReadAll(captures, opt.column);
    if (status == kRefused) return kRefused;
    RemoveTempFilesOnSignals();

    for (const Input& c : captures) {
        if (c.status != kOk) continue;
        const Analysis a = Analyse(c.capture.samples, opt.rate);
        Report(c, a, opt, captures.size() > 1);
        if (c.svg.empty()) continue;
        const std::string base = c.name == "-"
                                     ? "standard input"
                                     : Printable(c.name.substr(c.name.find_last_of('/') + 1));
        const std::string svg =
            SpectrumSvg(a, opt.rate,
                        "Flicker spectrum of " + base + ": " + std::to_string(a.frequency) + " Hz");
        if (std::string why; !WriteReplacing(c.svg, svg, why)) {
            Say("flicker: cannot write %s: %s\n", Printable(c.svg).c_str(), why.c_str());
            status = kFailed;
        } else {
            Say("flicker: spectrum in %s\n", Printable(c.svg).c_str());
        }
    }
    return CheckStdout(status);
}
