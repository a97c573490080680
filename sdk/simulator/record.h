/// @file
/// The record of what a program did to the simulator: one line per call,
/// appended to a file. The format is described in README.md.
#ifndef CSDK_SIMULATOR_RECORD_H
#define CSDK_SIMULATOR_RECORD_H

#include <stdbool.h>
#include <stdio.h>

/// Begins the line of a call in the file at `path`. Null, with errno set, when
/// the file cannot be opened.
FILE* record_begin(char const* path, char const* call, int result);

void record_number(FILE* line, char const* field, int number);

/// A text, with control characters, backslashes and bytes beyond ASCII as \xHH.
/// A null text leaves the field out.
void record_text(FILE* line, char const* field, char const* text);

/// Any bytes, two hexadecimal digits each.
void record_bytes(FILE* line, char const* field, void const* bytes, size_t count);

/// Ends the line. False, with errno set, when it could not be written.
bool record_end(FILE* line);

#endif
