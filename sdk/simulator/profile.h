/// @file
/// Camera profiles: a text with one size per line, in the order in which the
/// camera delivers them.
///
///     # A comment, also after a size. Blank lines are fine.
///     640x480
///     320x240   # preview
///
/// A size is two decimal numbers, negative ones included, that fit 32 bits.
/// Lines end with LF or CR LF; the last one may go without.
#ifndef CSDK_SIMULATOR_PROFILE_H
#define CSDK_SIMULATOR_PROFILE_H

#include <stdbool.h>
#include <stddef.h>

/// A larger file is taken for a mistake, such as a device that never ends.
enum { PROFILE_LIMIT = 64 << 20 };

/// A place in a profile text, which must outlive it. Starts as
/// `{text, text + length, 0}`.
struct profile_cursor {
    char const* next;
    char const* end;

    /// Number of the line read last, from 1 on.
    size_t line;
};

enum profile_item {
    PROFILE_SIZE,
    PROFILE_END,
    PROFILE_MALFORMED ///< the line is neither a size, a comment nor blank
};

/// Reads on to the next size. `width` and `height` are set for PROFILE_SIZE
/// only.
enum profile_item profile_next(struct profile_cursor* cursor, int* width, int* height);

/// Reads the file at `path` whole. The text is the caller's to free. Null, with
/// errno set, when it cannot be read or has more than PROFILE_LIMIT bytes.
char* profile_load(char const* path, size_t* length);

/// Reads a decimal number that fits 32 bits from `[*text, end)` and moves
/// `*text` behind it. False, with nothing changed, when there is none.
bool profile_number(char const** text, char const* end, int* number);

#endif
