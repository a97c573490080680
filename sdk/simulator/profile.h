/// @file
/// Camera profiles: text with one size per line, in the order in which the
/// camera delivers them.
///
///     # Comments and blank lines are skipped.
///     640x480
///     320x240   # preview
///
/// A size is two decimal numbers, negative ones included, that fit 32 bits.
/// Lines end with LF or CR LF, which the last line may omit.
#ifndef CSDK_SIMULATOR_PROFILE_H
#define CSDK_SIMULATOR_PROFILE_H

#include <stdbool.h>
#include <stddef.h>

/// Larger files are rejected: an endless device is a likely mistake.
enum { PROFILE_LIMIT = 64 << 20 };

/// A position in the text of a profile, which must outlive the cursor. Starts
/// as `{text, text + length, 0}`.
struct profile_cursor {
    char const* next;
    char const* end;

    /// Number of the line read last. Lines count from 1.
    size_t line;
};

enum profile_item {
    PROFILE_SIZE,
    PROFILE_END,
    PROFILE_MALFORMED ///< the line is neither a size, a comment nor blank
};

/// Reads up to the next size, the end or a malformed line. Sets `width` and
/// `height` for PROFILE_SIZE only.
enum profile_item profile_next(struct profile_cursor* cursor, int* width, int* height);

/// Returns the whole file at `path`, which the caller frees. Returns null and
/// sets errno when it cannot be read or has more than PROFILE_LIMIT bytes.
char* profile_load(char const* path, size_t* length);

/// Reads a decimal number that fits 32 bits from `[*text, end)` and advances
/// `*text` past it. Returns false and changes nothing when there is none.
bool profile_number(char const** text, char const* end, int* number);

#endif
