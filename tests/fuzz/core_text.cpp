// Compares the core string operations with the C library, or with a simple definition.
// Input: two strings with a unit separator (0x1F) between them.

#include "fuzz.h"

#include "misc/zntl_String.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <strings.h>

using fuzz::require;
using zntl::String;

namespace {

int sign(int number) { return (number > 0) - (number < 0); }

unsigned int numberIn(std::string const& text) {
    long const number = std::strtol(text.c_str(), nullptr, 10);
    long const most = std::numeric_limits<int>::max();
    return static_cast<unsigned int>(std::clamp(number, 0L, most));
}

std::string lowered(std::string text) {
    text.resize(std::strlen(text.c_str()));
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// Whether the text is: blanks, a sign, digits with at most one point, blanks. Between the blanks,
/// at least one character is required.
bool isNumber(std::string const& text, bool& isInteger) {
    char const* const blanks = " \t";
    std::size_t const first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return false;
    std::string number = text.substr(first, text.find_last_not_of(blanks) - first + 1);
    if (number[0] == '+' || number[0] == '-')
        number.erase(0, 1);
    std::size_t const point = number.find('.');
    isInteger = point == std::string::npos;
    if (!isInteger)
        number.erase(point, 1);
    return number.find_first_not_of("0123456789") == std::string::npos;
}

void copyOut(String const& text, unsigned int most) {
    std::size_t const expected = std::min<std::size_t>(text.size(), most);
    std::string out(std::size_t{most} + 1, '#');
    require(text.copyString(out.data(), most) == expected, "copyString returns the number");
    require(out.compare(0, expected, text, 0, expected) == 0, "copyString copies");
    require(out[expected] == '\0', "copyString ends the text");
    require(out.find_first_not_of('#', expected + 1) == std::string::npos, "and writes no further");
}

void binary(String const& text) {
    std::string form(text.getBinLength(), '\0');
    auto* const bytes = reinterpret_cast<unsigned char*>(form.data());
    auto const size = static_cast<unsigned int>(form.size());
    require(text.toBin(bytes) == size, "getBinLength is exact");
    String again;
    std::string const upToNul = text.c_str();
    require(again.fromBin(bytes, size) == upToNul.size() + 5,
            "fromBin returns the consumed length");
    require(again == upToNul, "fromBin takes the text up to its first NUL");
    zntl::SmartArray<char> const array = text;
    require(array.getSize() == text.size() + 1, "the array has the text's size");
    require(std::string(&*array) == upToNul, "the array has the text");
}

} // namespace

void fuzz::run(Input& input) {
    unsigned int const number = input.takeByte();
    std::string const text = input.takeField();
    std::string const other = input.takeRest();
    String const string = text;

    require(string.hasPrefix(other) == (text.find(other) == 0), "hasPrefix");
    require(sign(string.iCompare(other)) == sign(strcasecmp(text.c_str(), other.c_str())),
            "iCompare");
    require(string.toUnsignedInt() == numberIn(text), "toUnsignedInt");
    require(string.toLower() == lowered(text), "toLower");
    std::string const fill = number > text.size() ? std::string(number - text.size(), '*') : "";
    require(string.padEnd(number, '*') == text + fill, "padEnd");

    bool isInteger = false;
    bool expectedInteger = false;
    bool const expected = isNumber(text, expectedInteger);
    require(string.isNumeric(isInteger) == expected, "isNumeric");
    require(!expected || isInteger == expectedInteger, "isNumeric reports integers");

    copyOut(string, number);
    binary(string);
    require(String::fromFormat("%s", text.c_str()) == text.c_str(), "fromFormat");
    require(string == text, "the string is as it was");
}
