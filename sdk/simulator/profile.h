/// @file
/// Camera profiles: text files with one size per line, in the order in which
/// the camera lists them.
///
///     # Comments and blank lines are skipped.
///     640x480
///     320x240   # preview
///
/// A size is two decimal numbers that fit in 32 bits; they may be negative.
/// Lines end with LF or CR LF. The last line end may be missing.
#ifndef CSDK_SIMULATOR_PROFILE_H
#define CSDK_SIMULATOR_PROFILE_H

#include <stdbool.h>
#include <stddef.h>

/// The maximum size of a profile in bytes. It keeps an endless device, given by
/// mistake, from filling the memory.
enum { PROFILE_LIMIT = 64 << 20 };

/// A position in the text of a profile. The text must outlive the cursor.
/// Initialise a cursor with `{text, text + length, 0}`.
struct profile_cursor {
    char const* next;
    char const* end;

    /// Number of the last line that was read, counted from 1.
    size_t line;
};

enum profile_item {
    PROFILE_SIZE,
    PROFILE_END,
    PROFILE_MALFORMED ///< the line is neither a size, a comment nor blank
};

/// Reads lines up to the next size, the end or a malformed line. Sets `width`
/// and `height` for PROFILE_SIZE only.
enum profile_item profile_next(struct profile_cursor* cursor, int* width, int* height);

/// Returns the content of the file at `path`, which the caller must free().
/// Returns null and sets errno if it cannot be read or has more than
/// PROFILE_LIMIT bytes.
char* profile_load(char const* path, size_t* length);

/// Reads a decimal number that fits in 32 bits from `[*text, end)` and advances
/// `*text` past it. Returns false and changes nothing if there is none.
bool profile_number(char const** text, char const* end, int* number);

#endif
