// Texts the library hands to Java: JNI's NewStringUTF takes modified UTF-8 only, while services
// may send standard UTF-8 or any bytes at all.
#ifndef KXMMI_JNI_MODIFIED_UTF8_H
#define KXMMI_JNI_MODIFIED_UTF8_H

#include <string>

namespace kxmmi {

// The text up to its first zero byte as valid modified UTF-8. Text that already is valid modified
// UTF-8 (C0 80 and three-byte surrogates included) comes back byte for byte; a four-byte sequence
// becomes its surrogate pair, each half as three bytes; every maximal ill-formed subsequence (a
// stray or missing continuation byte, an overlong form, a byte that starts nothing, a sequence cut
// off by the end) becomes U+FFFD.
std::string ToModifiedUtf8(const char* text);

}  // namespace kxmmi

#endif
