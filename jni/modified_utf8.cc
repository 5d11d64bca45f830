#include "modified_utf8.h"

#include <cstdint>

namespace kxmmi {
namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD

bool InRange(uint8_t byte, uint8_t low, uint8_t high) { return byte >= low && byte <= high; }

void AppendThreeBytes(uint32_t unit, std::string* out) {
    out->push_back(static_cast<char>(0xE0 | (unit >> 12)));
    out->push_back(static_cast<char>(0x80 | ((unit >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (unit & 0x3F)));
}

}  // namespace

std::string ToModifiedUtf8(const char* text) {
    const auto* in = reinterpret_cast<const uint8_t*>(text);
    std::string out;
    for (size_t i = 0; in[i] != 0;) {
        const uint8_t lead = in[i];
        if (lead < 0x80) {
            out.push_back(static_cast<char>(lead));
            ++i;
            continue;
        }
        // The length of the sequence lead starts and the range its second byte must lie in; the
        // later bytes are plain continuation bytes. Surrogates (ED A0..BF) are modified UTF-8's
        // own form of characters above U+FFFF and of lone UTF-16 halves, so they stay.
        size_t length = 0;
        uint8_t low = 0x80, high = 0xBF;
        if (lead == 0xC0) {
            length = 2, low = high = 0x80;  // only the two-byte form of U+0000
        } else if (InRange(lead, 0xC2, 0xDF)) {
            length = 2;
        } else if (lead == 0xE0) {
            length = 3, low = 0xA0;
        } else if (InRange(lead, 0xE1, 0xEF)) {
            length = 3;
        } else if (lead == 0xF0) {
            length = 4, low = 0x90;
        } else if (InRange(lead, 0xF1, 0xF3)) {
            length = 4;
        } else if (lead == 0xF4) {
            length = 4, high = 0x8F;
        }
        // The longest prefix of a well-formed sequence; the terminating zero stops it too.
        size_t taken = 1;
        while (length != 0 && taken < length &&
               InRange(in[i + taken], taken == 1 ? low : 0x80, taken == 1 ? high : 0xBF)) {
            ++taken;
        }
        if (length == 0 || taken < length) {
            out += kReplacement;
        } else if (length < 4) {
            out.append(text + i, length);
        } else {
            const uint32_t cp = ((lead & 0x07u) << 18) | ((in[i + 1] & 0x3Fu) << 12) |
                                ((in[i + 2] & 0x3Fu) << 6) | (in[i + 3] & 0x3Fu);
            AppendThreeBytes(0xD800 + ((cp - 0x10000) >> 10), &out);
            AppendThreeBytes(0xDC00 + ((cp - 0x10000) & 0x3FF), &out);
        }
        i += taken;
    }
    return out;
}

}  // namespace kxmmi
