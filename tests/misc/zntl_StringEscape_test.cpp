#include "misc/zntl_String.h"

#include "support/failing_allocation.h"
#include "support/print_string.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>

using zntl::String;

namespace {

struct Replacement {
    char const* character;
    char const* entity;
};

Replacement const replacements[] = {
    {"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"'", "&apos;"}, {"\"", "&quot;"}};

/// One pass over the text, which goes on behind what it inserts.
std::string replaceAll(std::string text, std::string const& from, std::string const& to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// Encoding as five passes, one after another.
std::string encodeInFivePasses(std::string text) {
    for (Replacement const& replacement : replacements)
        text = replaceAll(text, replacement.character, replacement.entity);
    return text;
}

/// Decoding as five passes, one after another.
std::string decodeInFivePasses(std::string text) {
    for (Replacement const& replacement : replacements)
        text = replaceAll(text, replacement.entity, replacement.character);
    return text;
}

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
        {"&lt;", "&amp;lt;"}, // text that looks like an entity stays text
        {"&amp;", "&amp;amp;"},
        {"&&", "&amp;&amp;"},
        {"<>", "&lt;&gt;"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(String::encodeHtml(row.text), row.encoded);
        EXPECT_EQ(String::decodeHtml(row.encoded), decodeInFivePasses(row.encoded));
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
        {"&amp;amp;", "&amp;"}, // its pass goes on behind the "&" that it inserts
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

TEST(StringEscape, NullIsTheEmptyText) {
    char const* const noText = nullptr;
    EXPECT_EQ(String::encodeHtml(noText), "");
    EXPECT_EQ(String::decodeHtml(noText), "");
}

std::string randomText(std::mt19937& random, char const* const* pieces, unsigned int count) {
    std::string text;
    for (unsigned int length = static_cast<unsigned int>(random() % 12); length > 0; --length)
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
        ASSERT_EQ(String::encodeHtml(text), encodeInFivePasses(text)) << text;
        ASSERT_EQ(String::decodeHtml(text), decodeInFivePasses(text)) << text;
        if (text.find("&amp;lt;") != std::string::npos)
            ++decodedTwice;
    }
    EXPECT_GT(decodedTwice, 100U) << "the texts do not reach the case that matters";
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

TEST(StringEscape, WithoutMemoryNothingLeaks) {
    String const plain(std::string(100, 'x'));
    String const markup(std::string(100, '<'));
    String const encoded = String::encodeHtml(markup);
    for (String const* const text : {&plain, &markup, &encoded}) {
        EXPECT_GT(test::failEachAllocationOf([&] { String::encodeHtml(*text); }), 0);
        EXPECT_GT(test::failEachAllocationOf([&] { String::decodeHtml(*text); }), 0);
    }
}

} // namespace
