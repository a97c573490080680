#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace test {

/// Compares strings that are too long to print. On failure prints only the parts that differ.
inline testing::AssertionResult sameText(std::string const& actual, std::string const& expected) {
    if (actual == expected)
        return testing::AssertionSuccess();
    std::size_t const shorter = std::min(actual.size(), expected.size());
    std::size_t at = 0;
    while (at < shorter && actual[at] == expected[at])
        ++at;
    auto const show = [at](std::string const& text) {
        return testing::PrintToString(text.substr(at, 40)) + " (of " + std::to_string(text.size()) +
               " characters)";
    };
    return testing::AssertionFailure() << "from position " << at << " on the text is\n  "
                                       << show(actual) << "\ninstead of\n  " << show(expected);
}

} // namespace test
