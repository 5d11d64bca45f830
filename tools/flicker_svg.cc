#include "flicker_svg.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "flicker_capture.h"

const char kSvgGeneratorMark[] =
    "<!-- written by the flicker tool, which replaces this file only while this line is here -->";

namespace {

// The temporary file being written, removed when the tool is interrupted.
char g_temp[4096];

extern "C" void RemoveTemp(int sig) {
    if (g_temp[0] != '\0') unlink(g_temp);
    std::signal(sig, SIG_DFL);
    std::raise(sig);
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

bool SameFile(const std::string& a, const std::string& b) {
    struct stat sa, sb;
    return stat(a.c_str(), &sa) == 0 && stat(b.c_str(), &sb) == 0 && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}

// Whether `path` holds the mark of an SVG this tool wrote, near its start.
bool WrittenHere(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    char head[1024];
    in.read(head, sizeof(head));
    return std::string(head, static_cast<size_t>(in.gcount())).find(kSvgGeneratorMark) !=
           std::string::npos;
}

}  // namespace

std::string SpectrumFileProblem(const std::string& out, const std::vector<std::string>& inputs) {
    for (const std::string& in : inputs) {
        if (in != "-" && (in == out || SameFile(in, out))) {
            return "is the capture " + Printable(in) + "; refusing to write over it";
        }
    }
    const size_t slash = out.find_last_of('/');
    const std::string folder = slash == std::string::npos ? "." : out.substr(0, slash + 1);
    struct stat st;
    if (stat(folder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        return "folder " + Printable(folder) + " does not exist";
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) {
        return "folder " + Printable(folder) + " is not writable";
    }
    if (lstat(out.c_str(), &st) != 0) return "";
    if (S_ISDIR(st.st_mode)) return "is a folder";
    if (S_ISLNK(st.st_mode)) return "is a symbolic link; name the file itself or a new one";
    if (!S_ISREG(st.st_mode)) return "is not a regular file; name a new .svg file";
    if (!WrittenHere(out)) {
        return "exists and is not a spectrum this tool wrote; refusing to replace it (remove it "
               "or name another file)";
    }
    return "";
}

void RemoveTempFilesOnSignals() {
    for (int sig : {SIGINT, SIGTERM, SIGHUP}) std::signal(sig, RemoveTemp);
}

bool WriteReplacing(const std::string& path, const std::string& text, std::string& why) {
    const size_t slash = path.find_last_of('/');
    const size_t base = slash == std::string::npos ? 0 : slash + 1;
    const std::string temp = path.substr(0, base) + "." + path.substr(base) + ".XXXXXX";
    if (temp.size() >= sizeof(g_temp)) return why = std::strerror(ENAMETOOLONG), false;
    std::memcpy(g_temp, temp.c_str(), temp.size() + 1);
    const int fd = mkstemp(g_temp);
    if (fd < 0) return why = std::strerror(errno), g_temp[0] = '\0', false;
    struct stat st;
    const mode_t mask = umask(0);
    umask(mask);
    bool ok = fchmod(fd, stat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0666 & ~mask) == 0;
    for (size_t done = 0; ok && done < text.size();) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        ok = n > 0 || (n < 0 && errno == EINTR);
        done += n > 0 ? static_cast<size_t>(n) : 0;
    }
    ok = ok && fsync(fd) == 0;
    const int err = ok ? 0 : errno;
    ok = close(fd) == 0 && ok;
    ok = ok && rename(g_temp, path.c_str()) == 0;
    if (!ok) why = std::strerror(err != 0 ? err : errno), unlink(g_temp);
    g_temp[0] = '\0';
    return ok;
}

// The y axis is scaled to the searched band, where the decision is made; the steady level and
// slow drift below it usually dwarf everything and are clipped at the top.
std::string SpectrumSvg(const Analysis& a, float rate, const std::string& title) {
    const double W = 1000, H = 520, left = 90, right = 30, top = 60, bottom = 70;
    const double pw = W - left - right, ph = H - top - bottom;
    const double hz_per_bin = rate / static_cast<double>(kFlickerFftLength);
    const double max_hz = (kFlickerBins - 1) * hz_per_bin;

    double band_max = 0;
    for (int k = kFlickerFirstSearchedBin; k <= kFlickerLastSearchedBin; ++k)
        band_max = std::fmax(band_max, a.amplitude[k]);
    if (band_max <= 0) band_max = 1;
    const double y_step = NiceStep(band_max * 1.1, 5);
    const double y_max = std::ceil(band_max * 1.1 / y_step) * y_step;

    auto X = [&](double hz) { return left + pw * hz / max_hz; };
    auto Y = [&](double amp) { return top + ph * (1 - std::fmin(amp, y_max) / y_max); };

    std::ostringstream s;
    s << "<svg xmlns='http://www.w3.org/2000/svg' width='" << W << "' height='" << H
      << "' font-family='sans-serif' font-size='13'>\n"
      << kSvgGeneratorMark << "\n"
      << "<rect width='100%' height='100%' fill='white'/>\n";
    s << "<text x='" << W / 2 << "' y='28' text-anchor='middle' font-size='18' font-weight='bold'>"
      << XmlEscape(title) << "</text>\n";

    // Searched band.
    s << "<rect x='" << Fmt(X(kFlickerFirstSearchedBin * hz_per_bin), 1) << "' y='" << top
      << "' width='"
      << Fmt(X(kFlickerLastSearchedBin * hz_per_bin) - X(kFlickerFirstSearchedBin * hz_per_bin), 1)
      << "' height='" << ph << "' fill='#dbe9f7'/>\n";
    s << "<text x='" << Fmt(X(kFlickerLastSearchedBin * hz_per_bin) - 6, 1) << "' y='" << top + 16
      << "' text-anchor='end' fill='#3b6fa6'>searched band, bins " << kFlickerFirstSearchedBin
      << "-" << kFlickerLastSearchedBin << " (" << Fmt(kFlickerFirstSearchedBin * hz_per_bin, 1)
      << "-" << Fmt(kFlickerLastSearchedBin * hz_per_bin, 1) << " Hz)</text>\n";

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
    for (int k = 0; k < kFlickerBins; ++k) {
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

    if (!a.note.empty()) {
        s << "<text x='" << left + pw / 2 << "' y='" << top + 36
          << "' text-anchor='middle' fill='#7a4a00'>" << XmlEscape(a.note) << "</text>\n";
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
