// The test suites' own reading of modified UTF-8, written apart from the library's conversion so
// that it can judge it.
#ifndef KXMMI_TESTS_SUPPORT_MODIFIED_UTF8_CHECK_H
#define KXMMI_TESTS_SUPPORT_MODIFIED_UTF8_CHECK_H

#include <cstdint>
#include <string_view>

namespace kxtest {

// Whether bytes are a text JNI's NewStringUTF is defined for: no zero byte, U+0000 only as C0 80,
// characters above U+FFFF only as two three-byte surrogates, and no other overlong form.
inline bool IsModifiedUtf8(std::string_view bytes) {
    for (size_t i = 0; i < bytes.size();) {
        const auto lead = static_cast<uint8_t>(bytes[i]);
        if (lead == 0) return false;
        if (lead < 0x80) {
            ++i;
            continue;
        }
        size_t extra;
        uint32_t cp;
        if ((lead & 0xE0) == 0xC0) {
            extra = 1, cp = lead & 0x1Fu;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2, cp = lead & 0x0Fu;
        } else {
            return false;  // a continuation byte, or a lead of four bytes or more
        }
        if (bytes.size() - i <= extra) return false;
        for (size_t k = 1; k <= extra; ++k) {
            const auto next = static_cast<uint8_t>(bytes[i + k]);
            if ((next & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (next & 0x3Fu);
        }
        if (extra == 1 ? (cp != 0 && cp < 0x80) : cp < 0x800) return false;
        i += extra + 1;
    }
    return true;
}

}  // namespace kxtest

#endif
