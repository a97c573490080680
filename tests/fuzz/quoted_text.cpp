// Compares finding and splitting outside quoted sections with their literal definitions. Input,
// with unit separators (0x1F) between them: the text, the characters to find and the quotes.

#include "fuzz.h"
#include "support/literal_text.h"

#include "misc/zntl_String.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

using fuzz::require;
using zntl::String;

namespace {

/// Returns the result of the operation; nullopt if it throws the exception for an open quote.
template <class Operation>
auto attempt(Operation operation) -> std::optional<decltype(operation())> {
    try {
        return operation();
    } catch (std::out_of_range const&) {
        return std::nullopt;
    }
}

} // namespace

void fuzz::run(Input& input) {
    std::string const text = input.takeField();
    std::string const chars = input.takeField();
    std::string const quotes = input.takeRest();
    String const string = text;

    auto const found = attempt([&] { return string.findAll(chars, quotes); });
    auto const expected = attempt([&] { return literal::findAll(text, chars, quotes); });
    require(found == expected, "findAll");

    auto const pieces = attempt([&] { return string.tokenize(chars, quotes); });
    auto const expectedPieces = attempt([&] { return literal::tokenize(text, chars, quotes); });
    require(pieces.has_value() == expectedPieces.has_value(), "tokenize throws alike");
    require(!pieces || std::vector<std::string>(pieces->begin(), pieces->end()) == *expectedPieces,
            "tokenize");
    require(string == text, "the string is as it was");
}
