#include "flicker_capture.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

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

// Offset of the first byte that makes `text` binary (NUL, a control character other than tab and
// CR, or bytes that are not UTF-8); npos for text.
size_t FirstBinaryByte(const std::string& text) {
    for (size_t i = 0; i < text.size();) {
        uint32_t cp = 0;
        const size_t n = Utf8At(text, i, cp);
        if (n == 0 || (IsControl(cp) && cp != '\t' && cp != '\r')) return i;
        i += n;
    }
    return std::string::npos;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string Trim(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && IsBlank(s[b])) ++b;
    while (e > b && IsBlank(s[e - 1])) --e;
    return s.substr(b, e - b);
}

// Calls each(field) for every value of a trimmed line, in order: comma-separated when the line
// holds a comma (an empty field included), else separated by tabs and spaces. Stops when each()
// answers false. No list of fields is built: a one-line capture may hold millions.
template <typename Each>
void ForEachField(const std::string& line, Each each) {
    const bool commas = line.find(',') != std::string::npos;
    for (size_t at = 0; at <= line.size();) {
        size_t end = commas ? line.find(',', at) : at;
        if (commas && end == std::string::npos) end = line.size();
        while (!commas && end < line.size() && !IsBlank(line[end])) ++end;
        if (!each(commas ? Trim(line.substr(at, end - at)) : line.substr(at, end - at))) return;
        at = end + 1;
        while (!commas && at < line.size() && IsBlank(line[at])) ++at;
        if (!commas && at >= line.size()) return;
    }
}

size_t CountFields(const std::string& line) {
    size_t n = 0;
    ForEachField(line, [&](const std::string&) { return ++n, true; });
    return n;
}

// A field a header cannot hold: it starts like a number or reads as one ("nan", "inf").
bool LooksNumeric(const std::string& f) {
    if (f.empty() || std::strchr("0123456789+-.", f[0]) != nullptr) return true;
    char* end = nullptr;
    std::strtod(f.c_str(), &end);
    return *end == '\0';
}

// One sample: a decimal integer ("+5" is 5) in 32-bit range. Else says why, naming the text.
bool ParseSample(const std::string& text, int32_t& sample, std::string& why) {
    char* end = nullptr;
    errno = 0;
    const long long v = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || IsBlank(text[0]) || *end != '\0') {
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

// At most `max` bytes of a line of text, cut between characters, for a message.
std::string Excerpt(const std::string& line, size_t max = 40) {
    if (line.size() <= max) return Printable(line);
    size_t cut = max;
    while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80) --cut;
    return Printable(line.substr(0, cut)) + "...";
}

std::string Plural(size_t n, const char* what) {
    return std::to_string(n) + " " + what + (n == 1 ? "" : "s");
}

// The state of one capture's reading, line by line.
struct Reader {
    Reader(int column_, size_t keep_, Capture& capture_)
        : column(column_), keep(keep_), capture(capture_) {}

    int column;
    size_t keep;
    Capture& capture;
    Status status = kOk;
    std::string error;
    int error_line = 0;               // the line the error is about, 0 for the whole file
    bool seen_line = false;           // a header may only be the first line that is not skipped
    std::vector<std::string> header;  // its names, for messages
    int header_line = 0;
    size_t width = 0;      // values of the first data line; 0 before it
    int first_number = 0;  // the first data line, held until the next shows the shape
    std::string first;
    bool shape_known = false;
    bool table = false;

    bool Fail(Status s, const std::string& why, int line = 0) {
        status = s;
        error = why;
        error_line = line;
        return false;
    }

    std::string Shape() const {
        std::string shape =
            table ? "a table of " + std::to_string(width) + " columns" : "one series";
        if (!header.empty()) {
            shape += " (";
            for (size_t i = 0; i < header.size(); ++i)
                shape += (i ? ", " : "") + Printable(header[i]);
            shape += ")";
        }
        return shape;
    }

    // Settles table or series once the second data line (or the end) shows it.
    bool Settle(bool more_lines) {
        shape_known = true;
        table = more_lines && width >= 2;
        if (table && column == 0) {
            return Fail(kRefused, Shape() + "; choose the series with --column 1 to " +
                                      std::to_string(width));
        }
        if (static_cast<size_t>(column) > (table ? width : 1)) {
            return Fail(kRefused, Shape() + ", no column " + std::to_string(column));
        }
        return Take(first_number, first);
    }

    // The line's samples: its --column value in a table, else every value.
    bool Take(int number, const std::string& line) {
        size_t index = 0;
        ForEachField(line, [&](const std::string& field) {
            if (table && ++index != static_cast<size_t>(column)) return true;
            int32_t sample = 0;
            std::string why;
            if (!ParseSample(field, sample, why)) return Fail(kFailed, why, number);
            if (capture.samples.size() < keep) capture.samples.push_back(sample);
            ++capture.count;
            return !table;
        });
        return status == kOk;
    }

    bool Line(int number, std::string text, size_t offset) {
        if (number == 1 && text.rfind("\xEF\xBB\xBF", 0) == 0) text.erase(0, 3), offset += 3;
        if (const size_t at = FirstBinaryByte(text); at != std::string::npos) {
            char what[80];
            std::snprintf(what, sizeof(what), "not a text file (byte 0x%02X at offset %zu)",
                          static_cast<unsigned char>(text[at]), offset + at);
            return Fail(kFailed, what);
        }
        const std::string line = Trim(text);
        if (line.empty() || line[0] == '#') return true;
        const size_t values = CountFields(line);
        if (!seen_line) {
            seen_line = true;
            bool names = true;
            ForEachField(line, [&](const std::string& f) { return names = !LooksNumeric(f); });
            if (names) {
                ForEachField(line, [&](const std::string& f) { return header.push_back(f), true; });
                header_line = number;
                return true;
            }
        }
        if (width == 0) {
            width = values, first_number = number, first = line;
            if (!header.empty() && header.size() != width) {
                return Fail(kFailed,
                            "a header of " + Plural(header.size(), "name") + " above lines of " +
                                Plural(width, "value"),
                            header_line);
            }
            return true;
        }
        if (values != width) {
            return Fail(
                kFailed,
                Plural(values, "value") + " ('" + Excerpt(line) + "') where line " +
                    std::to_string(first_number) + ", the first, holds " + std::to_string(width) +
                    (width == 1 ? "; a sample is one integer, without thousands separators" : ""),
                number);
        }
        if (!shape_known && !Settle(true)) return false;
        return Take(number, line);
    }
};

}  // namespace

Status ReadCapture(std::istream& in, const std::string& name, int column, size_t keep,
                   Capture& capture, std::string& error) {
    Reader r(column, keep, capture);
    std::string pending;  // the text not yet split into lines
    size_t offset = 0;    // of pending[0] in the file
    size_t total = 0;
    int number = 0;
    char chunk[1 << 16];
    while (r.status == kOk) {
        in.read(chunk, sizeof(chunk));
        const size_t got = static_cast<size_t>(in.gcount());
        if (got == 0) break;
        total += got;
        pending.append(chunk, got);
        size_t start = 0;
        for (size_t nl; r.status == kOk && (nl = pending.find('\n', start)) != std::string::npos;
             start = nl + 1) {
            r.Line(++number, pending.substr(start, nl - start), offset + start);
        }
        pending.erase(0, start);
        offset += start;
        if (r.status == kOk && total > kMaxCaptureBytes) {
            // An endless binary input is still named for what it is.
            if (const size_t at = FirstBinaryByte(pending); at != std::string::npos) {
                r.Line(++number, pending, offset);
            } else {
                r.Fail(kFailed, "larger than " + std::to_string(kMaxCaptureBytes >> 20) +
                                    " MiB, not a capture");
            }
        }
    }
    if (r.status == kOk && in.bad()) r.Fail(kFailed, std::string("read error: ") + strerror(errno));
    if (r.status == kOk && !pending.empty()) r.Line(++number, pending, offset);
    if (r.status == kOk && r.width > 0 && !r.shape_known) r.Settle(false);
    if (r.status == kOk && capture.count < keep) {
        r.Fail(kFailed, Plural(capture.count, "sample") + ", at least " + std::to_string(keep) +
                            " are needed");
    }
    if (r.status != kOk) {
        error =
            name + (r.error_line > 0 ? ":" + std::to_string(r.error_line) : "") + ": " + r.error;
    }
    return r.status;
}

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
            for (size_t k = i; k < i + (n > 0 ? n : 1); ++k) {
                char hex[8];
                std::snprintf(hex, sizeof(hex), "\\x%02X", static_cast<unsigned char>(s[k]));
                out += hex;
            }
        }
        i += n > 0 ? n : 1;
    }
    return out;
}

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
