// Compares the markup operations with their literal definitions. Input: a position; then, with unit
// separators (0x1F) between them, the text, an element's name and a replacement.

#include "fuzz.h"
#include "support/literal_text.h"

#include "misc/zntl_Markup.h"

#include <optional>
#include <string>

using fuzz::require;
using zntl::String;

namespace {

void requireSameOpenTag(String const& text, unsigned int from, String const& name) {
    unsigned int start = 0;
    unsigned int end = 0;
    bool selfClosing = false;
    bool const found = zntl::findOpenTag(text, from, name, start, end, selfClosing);
    auto const expected = literal::findOpenTag(text, from, name);
    require(found == expected.has_value(), "findOpenTag finds");
    require(!found || (start == expected->start && end == expected->end &&
                       selfClosing == expected->selfClosing),
            "findOpenTag");
}

void requireSameCloseTag(String const& text, unsigned int from, String const& name) {
    unsigned int start = 0;
    unsigned int end = 0;
    bool const found = zntl::findCloseTag(text, from, name, start, end);
    auto const expected = literal::findCloseTag(text, from, name);
    require(found == expected.has_value(), "findCloseTag finds");
    require(!found || (start == expected->start && end == expected->end), "findCloseTag");
}

} // namespace

void fuzz::run(Input& input) {
    unsigned int const from = input.takeByte();
    String const text = input.takeField();
    String const name = input.takeField();
    String const replacement = input.takeRest();
    requireSameOpenTag(text, from, name);
    requireSameCloseTag(text, from, name);
    require(text.replaceElement(name, replacement) ==
                literal::replaceElement(text, name, replacement),
            "replaceElement");
}
