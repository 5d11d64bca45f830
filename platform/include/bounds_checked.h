// Bounds-checked memory and formatting functions (host build). On a device these come from the
// vendor's bounds-checked C library; the host provides the subset the library uses.
#ifndef BOUNDS_CHECKED_H
#define BOUNDS_CHECKED_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int errno_t;

#define EOK 0
#define BC_EINVAL 22
#define BC_ERANGE 34
/* Largest size any destination may claim; larger ones are taken as a corrupted size. */
#define BC_MAX_SIZE ((size_t)0x7fffffffUL)

/* Fills count bytes of dest (capacity destMax) with c. Fails without writing when dest is null,
 * destMax is 0 or above BC_MAX_SIZE; fills destMax bytes and fails when count > destMax. */
errno_t memset_s(void* dest, size_t destMax, int c, size_t count);

/* Copies count bytes from src to dest (capacity destMax). Fails when a pointer is null, destMax is
 * 0 or too large, count > destMax (dest cleared) or the ranges overlap (dest cleared). */
errno_t memcpy_s(void* dest, size_t destMax, const void* src, size_t count);

/* Formats into dest (capacity destMax) and writes at most count characters plus a terminating
 * zero. Returns the number of characters written, or -1 when the output was truncated to count
 * characters (dest still holds them, terminated) or the arguments are invalid (dest empty when it
 * can hold the terminator). */
int snprintf_s(char* dest, size_t destMax, size_t count, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif

#endif
