// The hexadecimal encoder of signature data; kept apart from the service calls so that it can be
// exercised on its own.
#include "hex_text.h"

#include "mmi_log.h"

int32_t ConvertBinToString(const unsigned char* num, uint32_t numLen, char* str, uint32_t strLen) {
    if (num == nullptr || str == nullptr || numLen == 0 || strLen < 2ULL * numLen) {
        KXLOGE("%s: ConvertBinToString fail, parameter is invalid, numLen: %u, strLen: %u", numLen,
               strLen);
        return -1;
    }
    static constexpr char kDigits[] = "0123456789abcdef";
    for (uint32_t i = 0; i < numLen; ++i) {
        str[2 * i] = kDigits[num[i] >> 4];
        str[2 * i + 1] = kDigits[num[i] & 0x0f];
    }
    return 0;
}
