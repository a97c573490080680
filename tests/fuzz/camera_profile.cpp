// Profiles of the stand-in camera: every line is a size, is empty, or is reported with its number.

#include "fuzz.h"

extern "C" {
#include "simulator/profile.h"
}

#include <charconv>
#include <cstdlib>
#include <string>

using fuzz::require;

namespace {

bool readNumber(char const*& at, char const* end, int& number) {
    auto const [behind, error] = std::from_chars(at, end, number);
    bool const read = error == std::errc();
    at = behind;
    return read;
}

/// Reads a line with the C++ library; returns what it contains.
profile_item readLine(std::string line, int& width, int& height) {
    char const* const blanks = " \t\r";
    line.erase(std::min(line.find('#'), line.size()));
    std::size_t const first = line.find_first_not_of(blanks);
    if (first == std::string::npos)
        return PROFILE_END;
    line = line.substr(first, line.find_last_not_of(blanks) - first + 1);
    char const* at = line.data();
    char const* const end = at + line.size();
    bool const isSize = readNumber(at, end, width) && at != end && *at++ == 'x' &&
                        readNumber(at, end, height) && at == end;
    return isSize ? PROFILE_SIZE : PROFILE_MALFORMED;
}

} // namespace

void fuzz::run(Input& input) {
    auto const* const text = reinterpret_cast<char const*>(input.data());
    profile_cursor cursor{text, text + input.size(), 0};
    std::string const all(text, input.size());

    std::size_t lineStart = 0;
    std::size_t lines = 0;
    while (lineStart < all.size()) {
        std::size_t const lineEnd = std::min(all.find('\n', lineStart), all.size());
        int expectedWidth = 0;
        int expectedHeight = 0;
        auto const expected =
            readLine(all.substr(lineStart, lineEnd - lineStart), expectedWidth, expectedHeight);
        lineStart = lineEnd + 1;
        ++lines;
        if (expected == PROFILE_END)
            continue;

        int width = 0;
        int height = 0;
        require(profile_next(&cursor, &width, &height) == expected, "what a line says");
        require(cursor.line == lines, "the number of the line");
        require(expected != PROFILE_SIZE || (width == expectedWidth && height == expectedHeight),
                "the size");
    }
    int unused = 0;
    require(profile_next(&cursor, &unused, &unused) == PROFILE_END, "the end");

    static File file;
    file.fill(input.data(), input.size());
    std::size_t length = 0;
    char* const loaded = profile_load(file.path(), &length);
    require(loaded && std::string(loaded, length) == all, "the file is loaded whole");
    std::free(loaded);
}
