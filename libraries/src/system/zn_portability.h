/// @file
/// The C functions that hide platform differences. Compiles as C and as C++.
///
/// A null source string is read as the empty string; a buffer that is changed in place must not be
/// null. All functions are safe to call from any thread.
#pragma once

#include <stdarg.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The calling thread's identity, as pthread_self() returns it.
unsigned long zn_get_threadid(void);

/// A copy of s from malloc(), to be released with free(); null if the allocation fails.
char* zn_strdup(char const* s);

/// Copies at most `size` characters of `src` to `dst` as strncpy() does (the rest is filled with
/// zeros), then always writes a zero at dst[size - 1]; returns dst. A source of `size` characters
/// or more is truncated to size - 1. A size of 0 is not tested for: the zero is then written one
/// byte before dst.
char* zn_strcpy(char* dst, unsigned int size, char const* src);

/// Compares two strings without regard to letter case: negative, zero or positive.
int zn_stricmp(char const* a, char const* b);

/// Lower-cases s in place, byte by byte through the C library's current table; returns s.
char* zn_strlwr(char* s);

/// Always ends in a segmentation fault, before any byte of s is changed: it walks from the null
/// address instead of from s.
char* zn_strupr(char* s);

/// The number of characters, without the terminating zero, that formatting would produce; negative
/// when the C library rejects the format. `args` is consumed as vsnprintf() consumes it.
int zn_vscprintf(char const* format, va_list args);

/// The decimal value of s, as strtoll() reads it.
int64_t zn_atoi64(char const* s);

/// Milliseconds of the monotonic clock, wrapping about every 49.7 days; 0 when the clock cannot be
/// read. The unsigned difference of two counts is the time between them, even across one wrap.
uint32_t zn_tickcount(void);

#ifdef __cplusplus
}
#endif
