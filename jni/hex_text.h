// Lower-case hexadecimal text of binary data, as the factory service takes signature data.
#ifndef KXMMI_JNI_HEX_TEXT_H
#define KXMMI_JNI_HEX_TEXT_H

#include <cstdint>

// Writes the 2 * numLen hexadecimal characters of num into str (capacity strLen), high nibble
// first, without a terminating zero. 0 on success; -1 and one error line, with str untouched, when
// a pointer is null, numLen is 0 or strLen is too small.
int32_t ConvertBinToString(const unsigned char* num, uint32_t numLen, char* str, uint32_t strLen);

#endif
