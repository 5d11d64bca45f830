// Reading a capture of light samples for the flicker tool, and showing its text safely.
#ifndef KXMMI_TOOLS_FLICKER_CAPTURE_H
#define KXMMI_TOOLS_FLICKER_CAPTURE_H

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string>
#include <vector>

enum Status { kOk = 0, kFailed = 1, kRefused = 2 };

// Past this size a file is not a capture (a capture holds a few thousand samples): the limit ends
// an input that never ends, such as a device file or a pipe left open, with an error.
constexpr size_t kMaxCaptureBytes = size_t{16} << 20;

struct Capture {
    std::vector<int32_t> samples;  // the first `keep` samples only
    size_t count = 0;              // every sample the capture holds
};

// Reads a capture strictly: blank and '#' lines are skipped; at most one header line, first, and
// only when none of its fields looks like a number; every other line holds as many values as
// the first data line, and every sample is a decimal integer in 32-bit range. Lines with several
// values are a table whose --column (`column`, 1-based, 0 when not given) picks the series; one
// line of comma-separated values is a series. Stores the first `keep` samples and counts the
// rest. kRefused when the command line must choose (a table without --column, a column past it),
// kFailed when the file is not a capture; `error` then holds the reason, after `name` and ": ".
Status ReadCapture(std::istream& in, const std::string& name, int column, size_t keep,
                   Capture& capture, std::string& error);

// `s` safe to print on a terminal: control characters and bytes that are not UTF-8 become \t, \n,
// \r or \xNN, so a file's content or name can never drive the terminal.
std::string Printable(const std::string& s);

// `s` as a JSON string of ASCII characters; bytes that are not UTF-8 become U+FFFD.
std::string JsonString(const std::string& s);

#endif
