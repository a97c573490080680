#include "misc/zntl_String.h"

#include "support/failing_allocation.h"
#include "support/literal_text.h"
#include "support/print_string.h"
#include "support/same_text.h"
#include "support/sample_texts.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

using zntl::String;

namespace {

TEST(StringEscape, EncodeReplacesMarkupCharacters) {
    struct {
        char const* text;
        char const* encoded;
    } const rows[] = {
        {"", ""},
        {"plain text", "plain text"},
        {"&", "&amp;"},
        {"<", "&lt;"},
        {">", "&gt;"},
        {"'", "&apos;"},
        {"\"", "&quot;"},
        {"a<b & 'c'", "a&lt;b &amp; &apos;c&apos;"},
        {"&lt;", "&amp;lt;"}, // the ampersand of an entity is encoded, too
        {"&amp;", "&amp;amp;"},
        {"&&", "&amp;&amp;"},
        {"<>", "&lt;&gt;"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(String::encodeHtml(row.text), row.encoded);
        EXPECT_EQ(String::decodeHtml(row.encoded), literal::decodeHtml(row.encoded));
    }
}

TEST(StringEscape, DecodeReplacesEntities) {
    struct {
        char const* text;
        char const* decoded;
    } const rows[] = {
        {"", ""},
        {"plain text", "plain text"},
        {"&amp;", "&"},
        {"&lt;", "<"},
        {"&gt;", ">"},
        {"&apos;", "'"},
        {"&quot;", "\""},
        {"a&lt;b &amp; &apos;c&apos;", "a<b & 'c'"},
        {"&amp;lt;", "<"}, // "&amp;" is decoded first
        {"&amp;gt;&amp;apos;&amp;quot;", ">'\""},
        {"&amp;amp;", "&amp;"}, // the search continues after the "&" that was inserted
        {"&amp;amp;lt;", "&amp;lt;"},
        {"&&amp;lt;", "&<"},
        {"&amp;&amp;lt;", "&<"},
        {"&&lt;;", "&<;"},
        {"&l&amp;t;", "&l&t;"},
        {"&", "&"},
        {"&;", "&;"},
        {"&am", "&am"},
        {"&amp", "&amp"},
        {"&lt", "&lt"},
        {"&AMP;", "&AMP;"},
        {"&#38;", "&#38;"},
        {"&nbsp;", "&nbsp;"},
        {"amp;", "amp;"},
        {"& amp;", "& amp;"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(String::decodeHtml(row.text), row.decoded) << row.text;
}

TEST(StringEscape, EmbeddedNulsAreCharactersLikeOthers) {
    std::string const text("a\0<\0", 4);
    EXPECT_EQ(String::encodeHtml(text), std::string("a\0&lt;\0", 7));
    EXPECT_EQ(String::decodeHtml(std::string("a\0&lt;\0", 7)), text);
}

TEST(StringEscape, EveryOtherCharacterStaysWithAndWithoutMarkupAround) {
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    for (std::string const& text : {all, all + "<" + all, "&" + all + all})
        EXPECT_TRUE(test::sameText(String::encodeHtml(text), literal::encodeHtml(text)));
}

TEST(StringEscape, NullIsTheEmptyText) {
    char const* const noText = nullptr;
    EXPECT_EQ(String::encodeHtml(noText), "");
    EXPECT_EQ(String::decodeHtml(noText), "");
}

std::string randomText(std::mt19937& random, char const* const* pieces, unsigned int count) {
    std::string text;
    unsigned int const longest = random() % 10 == 0 ? 200 : 12;
    for (auto length = random() % longest; length > 0; --length)
        text += pieces[random() % count];
    return text;
}

TEST(StringEscape, BothAgreeWithFivePassesOnRandomText) {
    char const* const pieces[] = {"&",     "amp;",   "lt;",    "gt;",  "apos;",  "quot;", ";",
                                  "<",     ">",      "'",      "\"",   "a",      "l",     "t",
                                  "&amp;", "&amp;&", "&apos;", "&lt;", "&quot;", "&gt;",  "am"};
    std::mt19937 random(20240229);
    unsigned int decodedTwice = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string const text = randomText(random, pieces, std::size(pieces));
        ASSERT_EQ(String::encodeHtml(text), literal::encodeHtml(text)) << text;
        ASSERT_EQ(String::decodeHtml(text), literal::decodeHtml(text)) << text;
        if (text.find("&amp;lt;") != std::string::npos)
            ++decodedTwice;
    }
    EXPECT_GT(decodedTwice, 100U) << "the texts contain too few entities that are decoded twice";
}

TEST(StringEscape, BothAgreeWithFivePassesWhereMarkupIsRare) {
    char const* const pieces[] = {"&", "<", ">", "'", "\"", "&amp;", "&lt;", "&amp;gt;", "x", ""};
    std::mt19937 random(20240302);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (auto count = random() % 8; count > 0; --count)
            text += pieces[random() % std::size(pieces)] + std::string(random() % 100, 'x');
        ASSERT_EQ(String::encodeHtml(text), literal::encodeHtml(text)) << text;
        ASSERT_EQ(String::decodeHtml(text), literal::decodeHtml(text)) << text;
    }
}

// An operation with quadratic time would not finish.
TEST(StringEscape, BothAreLinearWhereMarkupIsRareAndOfOneKind) {
    std::string const gap(200, 'x');
    constexpr unsigned int many = 100000;
    std::string const plain = test::repeated("&" + gap, many);
    std::string const encoded = test::repeated("&amp;" + gap, many);
    EXPECT_TRUE(test::sameText(String::encodeHtml(plain), encoded));
    EXPECT_TRUE(test::sameText(String::decodeHtml(encoded), plain));
}

TEST(StringEscape, DecodeUndoesEncodeUnlessTheTextHoldsEntities) {
    char const* const pieces[] = {"&", "<", ">", "'", "\"", "a", ";"};
    std::mt19937 random(20240301);
    for (int round = 0; round < 5000; ++round) {
        std::string const text = randomText(random, pieces, std::size(pieces));
        ASSERT_EQ(String::decodeHtml(String::encodeHtml(text)), text);
    }
    EXPECT_EQ(String::decodeHtml(String::encodeHtml("&lt;")), "<") << "decoded twice";
}

TEST(StringEscape, AllocatesOnceForTheText) {
    String const text(test::repeated("<" + std::string(40, 'x'), 100));
    String const encoded = String::encodeHtml(text);
    EXPECT_EQ(test::failEachAllocationOf([&] { String::decodeHtml(encoded); }), 1);
    EXPECT_EQ(test::failEachAllocationOf([&] { String::encodeHtml(text); }), 1);
    EXPECT_EQ(test::largestAllocation([&] { String::encodeHtml(text); }), 2 * text.size() + 1);
}

TEST(StringEscape, LeaksNothingOnAllocationFailure) {
    String const plain(std::string(100, 'x'));
    String const markup(std::string(100, '<'));
    String const encoded = String::encodeHtml(markup);
    for (String const* const text : {&plain, &markup, &encoded}) {
        EXPECT_GT(test::failEachAllocationOf([&] { String::encodeHtml(*text); }), 0);
        EXPECT_GT(test::failEachAllocationOf([&] { String::decodeHtml(*text); }), 0);
    }
}

} // namespace
