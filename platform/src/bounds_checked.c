#include "bounds_checked.h"

#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

errno_t memset_s(void* dest, size_t destMax, int c, size_t count) {
    if (dest == NULL || destMax == 0 || destMax > BC_MAX_SIZE) return BC_EINVAL;
    if (count > destMax) {
        memset(dest, c, destMax);
        return BC_ERANGE;
    }
    memset(dest, c, count);
    return EOK;
}

errno_t memcpy_s(void* dest, size_t destMax, const void* src, size_t count) {
    if (dest == NULL || destMax == 0 || destMax > BC_MAX_SIZE) return BC_EINVAL;
    if (src == NULL) {
        memset(dest, 0, destMax);
        return BC_EINVAL;
    }
    if (count > destMax) {
        memset(dest, 0, destMax);
        return BC_ERANGE;
    }
    uintptr_t d = (uintptr_t)dest, s = (uintptr_t)src;
    if (count != 0 && ((d < s && d + count > s) || (s < d && s + count > d))) {
        memset(dest, 0, destMax);
        return BC_EINVAL;
    }
    if (count != 0) memcpy(dest, src, count);
    return EOK;
}

int snprintf_s(char* dest, size_t destMax, size_t count, const char* format, ...) {
    if (dest == NULL || destMax == 0 || destMax > BC_MAX_SIZE) return -1;
    if (format == NULL) {
        dest[0] = '\0';
        return -1;
    }
    /* Room for count characters and the terminator, never beyond destMax. */
    size_t room = count < destMax ? count + 1 : destMax;
    va_list ap;
    va_start(ap, format);
    int n = vsnprintf(dest, room, format, ap);
    va_end(ap);
    if (n < 0) {
        dest[0] = '\0';
        return -1;
    }
    if ((size_t)n >= room) return -1;
    return n;
}
