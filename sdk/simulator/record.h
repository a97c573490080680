/// @file
/// The record of a program's calls: one line per call, appended to a file.
/// README.md describes the format.
#ifndef CSDK_SIMULATOR_RECORD_H
#define CSDK_SIMULATOR_RECORD_H

#include <stdbool.h>
#include <stdio.h>

/// Begins the line of a call in the file at `path`. Returns null and sets errno
/// if the file cannot be opened.
FILE* record_begin(char const* path, char const* call, int result);

void record_number(FILE* line, char const* field, int number);

/// Writes a text field. Control characters, backslashes and bytes beyond ASCII
/// become \xHH. Omits the field if `text` is null.
void record_text(FILE* line, char const* field, char const* text);

/// Writes a field of bytes, two hexadecimal digits each.
void record_bytes(FILE* line, char const* field, void const* bytes, size_t count);

/// Ends and writes the line. Returns false and sets errno on failure.
bool record_end(FILE* line);

#endif
