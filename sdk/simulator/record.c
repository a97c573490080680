#include "record.h"

/* Opens the file for each line and closes it after the line. So the file contains
 * only whole lines even if the program crashes, and between calls the program has
 * no open descriptor that it could write to by mistake. */
FILE* record_begin(char const* path, char const* call, int result) {
    FILE* const line = fopen(path, "a");

    if (line)
        fprintf(line, "%s\tresult=%d", call, result);
    return line;
}

void record_number(FILE* line, char const* field, int number) {
    fprintf(line, "\t%s=%d", field, number);
}

static bool is_plain(unsigned char c) { return c >= ' ' && c <= '~' && c != '\\'; }

void record_text(FILE* line, char const* field, char const* text) {
    if (!text)
        return;
    fprintf(line, "\t%s=", field);
    for (; *text; ++text) {
        unsigned char const c = (unsigned char)*text;
        fprintf(line, is_plain(c) ? "%c" : "\\x%02x", c);
    }
}

void record_bytes(FILE* line, char const* field, void const* bytes, size_t count) {
    unsigned char const* const at = bytes;

    fprintf(line, "\t%s=", field);
    for (size_t i = 0; i != count; ++i)
        fprintf(line, "%02x", at[i]);
}

bool record_end(FILE* line) {
    bool const written = fputc('\n', line) != EOF;

    return fclose(line) == 0 && written;
}
