#include "profile.h"

#include <errno.h>
#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

static bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

static bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool profile_number(char const** text, char const* end, int* number) {
    char const* at = *text;
    bool const negative = at != end && *at == '-';
    int64_t const limit = negative ? -(int64_t)INT_MIN : INT_MAX;
    int64_t magnitude = 0;

    if (negative)
        ++at;
    if (at == end || !is_digit(*at))
        return false;
    for (; at != end && is_digit(*at); ++at) {
        magnitude = magnitude * 10 + (*at - '0');
        if (magnitude > limit)
            return false;
    }
    *text = at;
    *number = (int)(negative ? -magnitude : magnitude);
    return true;
}

static char const* find_line_end(char const* text, char const* end) {
    while (text != end && *text != '\n')
        ++text;
    return text;
}

static char const* skip_blanks(char const* text, char const* end) {
    while (text != end && is_blank(*text))
        ++text;
    return text;
}

/* Returns whether only blanks and a comment are left. */
static bool is_finished(char const* text, char const* end) {
    text = skip_blanks(text, end);
    return text == end || *text == '#';
}

static bool read_size(char const* text, char const* end, int* width, int* height) {
    int w = 0;
    int h = 0;

    text = skip_blanks(text, end);
    if (!profile_number(&text, end, &w) || text == end || *text != 'x')
        return false;
    ++text;
    if (!profile_number(&text, end, &h) || !is_finished(text, end))
        return false;
    *width = w;
    *height = h;
    return true;
}

enum profile_item profile_next(struct profile_cursor* cursor, int* width, int* height) {
    while (cursor->next != cursor->end) {
        char const* const line = cursor->next;
        char const* const line_end = find_line_end(line, cursor->end);

        cursor->next = line_end == cursor->end ? line_end : line_end + 1;
        ++cursor->line;
        if (!is_finished(line, line_end))
            return read_size(line, line_end, width, height) ? PROFILE_SIZE : PROFILE_MALFORMED;
    }
    return PROFILE_END;
}

/* Doubles the capacity. Returns false and sets errno on failure. */
static bool grow(char** text, size_t* capacity) {
    size_t const grown = *capacity ? *capacity * 2 : 4096;
    char* const moved = grown > PROFILE_LIMIT ? NULL : realloc(*text, grown);

    if (grown > PROFILE_LIMIT)
        errno = EFBIG;
    if (!moved)
        return false;
    *text = moved;
    *capacity = grown;
    return true;
}

static bool read_to_end(FILE* file, char** text, size_t* length) {
    size_t capacity = 0;

    *length = 0;
    while (*length == capacity) {
        if (!grow(text, &capacity))
            return false;
        *length += fread(*text + *length, 1, capacity - *length, file);
    }
    return !ferror(file);
}

char* profile_load(char const* path, size_t* length) {
    FILE* const file = fopen(path, "r");
    char* text = NULL;

    if (!file)
        return NULL;
    if (!read_to_end(file, &text, length)) {
        int const reason = errno;

        free(text);
        text = NULL;
        errno = reason;
    }
    fclose(file);
    return text;
}
