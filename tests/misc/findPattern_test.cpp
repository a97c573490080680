#include "misc/internal/zntl_findPattern.h"

#include "support/sample_texts.h"

#include <gtest/gtest.h>

#include <string>

namespace {

void compareAll(std::string const& text, std::string const& pattern) {
    for (std::size_t from = 0; from <= text.size() + 1; ++from) {
        ASSERT_EQ(zntl::findPattern(text, pattern, from), text.find(pattern, from))
            << testing::PrintToString(text) << " from " << from << " for "
            << testing::PrintToString(pattern);
    }
    ASSERT_EQ(zntl::findPattern(text, pattern), text.find(pattern));
}

TEST(FindPattern, FindsWhatStringFindsInAllShortTexts) {
    for (std::string const pattern : {"", "a", "b", "ab", "aa", "aba", "aab", "abab"}) {
        test::forEachText(test::letters("ab"), 6,
                          [&](std::string const& text) { compareAll(text, pattern); });
    }
}

TEST(FindPattern, FindsWhatStringFindsForPatternsOfAnyLength) {
    test::RandomTexts pieces({"a", "aa", "ab", "aab"});
    for (int i = 0; i < 300; ++i) {
        std::string const repeated = test::repeated(pieces.next(4), 60);
        std::string const pattern = repeated.substr(0, 50 + static_cast<unsigned int>(i) % 100);
        compareAll(pieces.next(20) + repeated + pieces.next(20) + repeated, pattern);
        compareAll(pieces.next(20) + repeated + "ab" + repeated, pattern + "b");
    }
}

} // namespace
