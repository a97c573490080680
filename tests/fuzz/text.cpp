// Compares the text operations with their literal definitions. Input: a number; then three strings
// with unit separators (0x1F) between them.

#include "fuzz.h"
#include "support/literal_text.h"

#include "misc/zntl_String.h"

#include <string>

using fuzz::require;
using zntl::String;

void fuzz::run(Input& input) {
    unsigned int const number = input.takeByte();
    std::string const text = input.takeField();
    std::string const first = input.takeField();
    std::string const second = input.takeRest();
    String const string = text;

    require(string.trim() == literal::trim(text), "trim");
    require(String::sanitize(string, first.c_str()) == literal::sanitize(text, first.c_str()),
            "sanitize");
    require(string.toBool() == literal::toBool(text), "toBool");
    require(string.extract(first, second) == literal::extract(text, first, second), "extract");
    require(string.abbreviate(number) == literal::abbreviate(text, number), "abbreviate");
    require(String::encodeHtml(string) == literal::encodeHtml(text), "encodeHtml");
    require(String::decodeHtml(string) == literal::decodeHtml(text), "decodeHtml");
    require(string.toXML("a") ==
                (text.empty() ? "<a/>" : "<a>" + literal::encodeHtml(text) + "</a>"),
            "toXML");
    require(string == text, "the string is as it was");
}
