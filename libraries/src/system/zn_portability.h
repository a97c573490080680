/// @file
/// The C functions that hide platform differences. Compiles as C and as C++.
///
/// A null source string counts as the empty string. A buffer that a function changes must not be
/// null. All functions may be called from any thread.
#pragma once

#include <stdarg.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The calling thread's identity, as pthread_self() returns it.
unsigned long zn_get_threadid(void);

/// Returns a copy of s, which the caller must free(); null if the allocation fails.
char* zn_strdup(char const* s);

/// Copies `src` to the `size` bytes at `dst` and returns dst. Truncates a source of `size`
/// characters or more to size - 1, and fills the rest of the buffer with zeros. The last byte is
/// always zero. The two must not overlap. Do not pass a size of 0: it writes a zero to the byte
/// before dst.
char* zn_strcpy(char* dst, unsigned int size, char const* src);

/// Compares two strings without regard to letter case. Returns a negative number, zero or
/// a positive number if `a` sorts before, equals or sorts after `b`.
int zn_stricmp(char const* a, char const* b);

/// Converts s to lower case in place, each byte as the C library's tolower() does; returns s.
char* zn_strlwr(char* s);

/// Do not call it: it always ends in a segmentation fault, before it changes s.
char* zn_strupr(char* s);

/// Returns the number of characters, without the terminating zero, that formatting would produce;
/// negative if the C library rejects the format, or if the number exceeds INT_MAX. As after
/// vsnprintf(), the value of `args` is then indeterminate.
int zn_vscprintf(char const* format, va_list args);

/// The decimal value of s, as strtoll() reads it.
int64_t zn_atoi64(char const* s);

/// Returns the milliseconds of the monotonic clock modulo 2^32, which wraps about every 49.7 days;
/// 0 if the clock cannot be read. The unsigned difference of two results is the time between them,
/// even if the count wrapped once in between.
uint32_t zn_tickcount(void);

#ifdef __cplusplus
}
#endif
