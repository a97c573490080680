#include "misc/zntl_String.h"

#include "support/literal_text.h"
#include "support/print_string.h"
#include "support/same_text.h"
#include "support/sample_texts.h"
#include "support/small_stack.h"

#include <gtest/gtest.h>

#include <climits>
#include <deque>
#include <list>
#include <numeric>
#include <optional>
#include <random>
#include <stdexcept>
#include <typeinfo>

using zntl::String;
using namespace std::string_literals;

namespace {

using Positions = std::vector<unsigned int>;
using Texts = std::vector<std::string>;

/// Returns the result of the operation; nullopt if it throws std::out_of_range.
template <class Operation>
auto outcome(Operation operation) -> std::optional<decltype(operation())> {
    try {
        return operation();
    } catch (std::out_of_range const& error) {
        EXPECT_EQ(typeid(error), typeid(std::out_of_range));
        return std::nullopt;
    }
}

Texts tokens(std::string const& text, std::string const& separators, std::string const& quotes) {
    std::vector<String> const pieces = String(text).tokenize(separators, quotes);
    return {pieces.begin(), pieces.end()};
}

Positions places(std::string const& text, std::string const& chars, std::string const& quotes) {
    return String(text).findAll(chars, quotes);
}

/// Returns all strings of one character.
Texts everyCharacter() {
    Texts all;
    for (int c = CHAR_MIN; c <= CHAR_MAX; ++c)
        all.emplace_back(1, static_cast<char>(c));
    return all;
}

bool isTrimmed(std::string const& c) { return " \t\n\r"s.find(c) != std::string::npos; }

// --- trim ---

TEST(StringTrim, RemovesBlanksAtBothEndsOnly) {
    EXPECT_EQ(String(" \t x y \r\n").trim(), "x y");
    EXPECT_EQ(String("x").trim(), "x");
    EXPECT_EQ(String("  x").trim(), "x");
    EXPECT_EQ(String("x\r\n").trim(), "x");
    EXPECT_EQ(String("x \t\n\r y").trim(), "x \t\n\r y");
}

TEST(StringTrim, OfBlanksIsEmpty) {
    EXPECT_EQ(String().trim(), "");
    EXPECT_EQ(String("\n\n").trim(), "");
    EXPECT_EQ(String(" \t\n\r").trim(), "");
}

TEST(StringTrim, RemovesExactlyFourCharacters) {
    for (std::string const& c : everyCharacter())
        EXPECT_EQ(String(c + "x" + c).trim(), isTrimmed(c) ? "x" : c + "x" + c);
}

TEST(StringTrim, DoesNotChangeTheString) {
    String const text(" x ");
    text.trim();
    EXPECT_EQ(text, " x ");
}

TEST(StringTrim, AgreesWithItsDefinition) {
    test::forEachText(test::letters(" \t\nx\v\0"s), 6, [](std::string const& text) {
        ASSERT_EQ(String(text).trim(), literal::trim(text));
    });
}

// --- sanitize ---

TEST(StringSanitize, KeepsOnlyTheAllowedCharacters) {
    EXPECT_EQ(String::sanitize("a1b2c3", "abc"), "abc");
    EXPECT_EQ(String::sanitize("aXbXa", "ba"), "aba");
    EXPECT_EQ(String::sanitize("abc", "xyz"), "");
    EXPECT_EQ(String::sanitize("", "abc"), "");
}

TEST(StringSanitize, TrimsEvenIfBlanksAreAllowed) {
    EXPECT_EQ(String::sanitize(" a b ", "ab "), "a b");
    EXPECT_EQ(String::sanitize("x a x", "a "), "a");
    EXPECT_EQ(String::sanitize(" \t\n\r", " \t\n\r"), "");
}

TEST(StringSanitize, AllowsNothingWithAnEmptyOrNullAlphabet) {
    for (std::string const& c : everyCharacter()) {
        EXPECT_EQ(String::sanitize(c, ""), "");
        EXPECT_EQ(String::sanitize(c, nullptr), "");
    }
}

TEST(StringSanitize, TakesTheAlphabetUpToItsFirstNul) {
    EXPECT_EQ(String::sanitize("a\0b"s, "ab"), "ab");
    EXPECT_EQ(String::sanitize("a\0b"s, "a\0b"), "a");
}

TEST(StringSanitize, DistinguishesAllCharacters) {
    std::string all;
    for (std::string const& c : everyCharacter())
        all += c;
    for (std::string const& c : everyCharacter()) {
        std::string const kept = c == "\0"s || isTrimmed(c) ? "" : c;
        EXPECT_EQ(String::sanitize(all, c.c_str()), kept);
    }
}

TEST(StringSanitize, AgreesWithItsDefinition) {
    test::RandomTexts texts(test::letters("ab \t\n\x80\xff\0"s));
    test::RandomTexts alphabets(test::letters("ab \t\n\x80\xff"));
    for (int i = 0; i < 50000; ++i) {
        std::string const text = texts.next(12);
        std::string const allowed = alphabets.next(4);
        ASSERT_EQ(String::sanitize(text, allowed.c_str()), literal::sanitize(text, allowed))
            << testing::PrintToString(text) << " to " << testing::PrintToString(allowed);
    }
}

// --- toBool ---

TEST(StringToBool, IsTrueForFiveWordsInAnyCase) {
    for (char const* const word : {"true", "TRUE", "True", "tRuE", "t", "T", "yes", "YES", "Yes",
                                   "y", "Y", "on", "On", "ON", "oN"})
        EXPECT_TRUE(String(word).toBool()) << word;
}

TEST(StringToBool, IsFalseForAllOtherWords) {
    for (char const* const word :
         {"",      "false", "f",    "no", "n", "off", "abc", "tr",       "tru", "truee", "true ",
          " true", "ye",    "yess", "y ", "o", "one", "tt",  "\"true\"", " ",   "-",     "+"})
        EXPECT_FALSE(String(word).toBool()) << word;
}

TEST(StringToBool, IsTrueForANumberThatIsNotZero) {
    for (char const* const number :
         {"1", "-3", "+7", "12abc", "  5", "\t\n\v\f\r 5", "007", "1.9", "2147483648", "4294967296",
          "18446744073709551616", "-4294967296", "99999999999999999999999999999999"})
        EXPECT_TRUE(String(number).toBool()) << number;
}

TEST(StringToBool, IsFalseForZero) {
    for (char const* const number :
         {"0", "-0", "+0", "000", "0x1", "0.9", "0 1", "  0", "- 1", "+-1", "--1", ".1", "x1"})
        EXPECT_FALSE(String(number).toBool()) << number;
}

TEST(StringToBool, ReadsUpToTheFirstNul) {
    EXPECT_TRUE(String("on\0ly"s).toBool());
    EXPECT_TRUE(String("1\0"s).toBool());
    EXPECT_FALSE(String("\0true"s).toBool());
    EXPECT_FALSE(String("0\0001"s).toBool());
}

TEST(StringToBool, AgreesWithItsDefinition) {
    test::RandomTexts texts({"t", "T", "rue", "y", "ES", "o", "N", "0", "1", "-", "+", " ", "\0"s});
    for (int i = 0; i < 100000; ++i) {
        std::string const text = texts.next(5);
        ASSERT_EQ(String(text).toBool(), literal::toBool(text)) << testing::PrintToString(text);
    }
}

// --- extract ---

struct Extraction {
    std::string text, begin, end, result;
};

TEST(StringExtract, ReturnsTheTextBetweenTheMarkers) {
    Extraction const cases[] = {
        {"x<a>v</a>", "<a>", "</a>", "v"},
        {"x<a>v", "<a>", "</a>", ""},
        {"v</a>", "<a>", "</a>", ""},
        {"</a>x<a>v", "<a>", "</a>", ""},
        {"</a><a>v</a>", "<a>", "</a>", "v"},
        {"<a></a>", "<a>", "</a>", ""},
        {"<a>1</a><a>2</a>", "<a>", "</a>", "1"},
        {"<a>1<a>2</a></a>", "<a>", "</a>", "1<a>2"},
        {"", "<a>", "</a>", ""},
        {"a=1;", "=", ";", "1"},
        {"|one|two|", "|", "|", "one"},
        {" [ x ] ", "[", "]", " x "}, // not trimmed
        {"a\0b\0c"s, "a\0"s, "\0c"s, "b"},
        {"a\0b\0c"s, "a", "c", "\0b\0"s},
    };
    for (Extraction const& c : cases)
        EXPECT_EQ(String(c.text).extract(c.begin, c.end), c.result)
            << testing::PrintToString(c.text);
}

TEST(StringExtract, FindsMarkersOfAnyLengthThatAlmostMatchElsewhere) {
    std::mt19937 random(27);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        while (text.size() < 100)
            text += random() % 8 == 0 ? 'b' : 'a';
        auto const part = [&] { return text.substr(random() % 50, random() % 40); };
        std::string const begin = part();
        std::string const end = part();
        ASSERT_EQ(String(text).extract(begin, end), literal::extract(text, begin, end))
            << text << ' ' << begin << ' ' << end;
    }
}

// An operation with quadratic time would not finish.
TEST(StringExtract, IsLinearWhereAMarkerAlmostMatchesEverywhere) {
    std::string const half(200000, 'a');
    String const marker = half + 'b' + half;
    String const text(2000000, 'a');
    EXPECT_EQ(text.extract(marker, "a"), "");
    EXPECT_EQ(text.extract("a", marker), "");
    EXPECT_TRUE(String(text + marker + "found" + marker).extract(marker, marker) == "found");
}

TEST(StringExtract, SearchesTheEndAfterTheBeginning) {
    EXPECT_EQ(String("aba").extract("ab", "ba"), "");
    EXPECT_EQ(String("abaxba").extract("ab", "ba"), "ax");
    EXPECT_EQ(String("aaa").extract("aa", "aa"), "");
    EXPECT_EQ(String("aaxaa").extract("aa", "aa"), "x");
}

TEST(StringExtract, FindsAnEmptyMarkerAtOnce) {
    EXPECT_EQ(String("abc").extract("", "c"), "ab");
    EXPECT_EQ(String("abc").extract("a", ""), "");
    EXPECT_EQ(String("abc").extract("", ""), "");
    EXPECT_EQ(String().extract("", ""), "");
    EXPECT_EQ(String("abc").extract("abc", ""), "");
}

TEST(StringExtract, DoesNotChangeTheString) {
    String const text("[x]");
    EXPECT_EQ(text.extract("[", "]"), "x");
    EXPECT_EQ(text, "[x]");
}

TEST(StringExtract, AgreesWithItsDefinition) {
    test::RandomTexts texts(test::letters("ab\0"s));
    test::RandomTexts markers(test::letters("ab\0"s));
    for (int i = 0; i < 100000; ++i) {
        std::string const text = texts.next(12);
        std::string const begin = markers.next(3);
        std::string const end = markers.next(3);
        ASSERT_EQ(String(text).extract(begin, end), literal::extract(text, begin, end))
            << testing::PrintToString(text) << " between " << testing::PrintToString(begin)
            << " and " << testing::PrintToString(end);
    }
}

// --- abbreviate ---

TEST(StringAbbreviate, EndsALongTextInThreeDots) {
    EXPECT_EQ(String("abcdefgh").abbreviate(7), "abcd...");
    EXPECT_EQ(String("abcdefgh").abbreviate(5), "ab...");
    EXPECT_EQ(String("abcdefgh").abbreviate(4), "a...");
    EXPECT_EQ(String("abcd").abbreviate(3), "...");
}

TEST(StringAbbreviate, LeavesAShortTextUnchanged) {
    EXPECT_EQ(String("abc").abbreviate(10), "abc");
    EXPECT_EQ(String("abc").abbreviate(3), "abc");
    EXPECT_EQ(String("a").abbreviate(3), "a");
    EXPECT_EQ(String().abbreviate(3), "");
    EXPECT_EQ(String("a\0b"s).abbreviate(UINT_MAX), "a\0b"s);
}

TEST(StringAbbreviate, ReturnsTheEmptyStringForLengthsBelowThree) {
    for (unsigned int const length : {0U, 1U, 2U}) {
        for (char const* const text : {"", "a", "ab", "abc", "abcd"})
            EXPECT_EQ(String(text).abbreviate(length), "") << text << " to " << length;
    }
}

TEST(StringAbbreviate, AgreesWithItsDefinition) {
    test::forEachText(test::letters("a.\0"s), 6, [](std::string const& text) {
        for (unsigned int length = 0; length <= text.size() + 2; ++length)
            ASSERT_EQ(String(text).abbreviate(length), literal::abbreviate(text, length))
                << testing::PrintToString(text) << " to " << length;
    });
}

// --- findAll ---

TEST(StringFindAll, ReturnsThePositionsInIncreasingOrder) {
    EXPECT_EQ(places("a,'b,c',d", ",", "'"), (Positions{1, 7}));
    EXPECT_EQ(places("a,'b,c',d", ",", ""), (Positions{1, 4, 7}));
    EXPECT_EQ(places("a;b,c", ",;", ""), (Positions{1, 3}));
    EXPECT_EQ(places(",,,", ",", ""), (Positions{0, 1, 2}));
    EXPECT_EQ(places(",,,", ",,", ""), (Positions{0, 1, 2}));
    EXPECT_EQ(places("abc", ",", "'"), Positions{});
    EXPECT_EQ(places("", ",", "'"), Positions{});
}

TEST(StringFindAll, FindsNothingWithoutCharacters) {
    EXPECT_EQ(places("a,'b,c',d", "", "'"), Positions{});
    EXPECT_EQ(places("a,'b,c',d", "", ""), Positions{});
}

TEST(StringFindAll, ClosesAQuoteWithTheSameCharacterOnly) {
    EXPECT_EQ(places("',\",',\",", ",", "'\""), Positions{5}) << "the second quote is not closed";
    EXPECT_EQ(places("',\",',\"x\",", ",", "'\""), (Positions{5, 9}));
    EXPECT_EQ(places("\"','\",", ",", "'\""), Positions{5});
}

TEST(StringFindAll, FindsNothingAfterAnOpenQuote) {
    EXPECT_EQ(places("a,'b,c,d", ",", "'"), Positions{1});
    EXPECT_EQ(places("'", "'", "'"), Positions{});
    EXPECT_EQ(places("','',", ",", "'"), Positions{});
}

TEST(StringFindAll, DoesNotRecordACharacterThatIsAQuoteToo) {
    EXPECT_EQ(places("',a'b,", "',", "'"), Positions{5});
    EXPECT_EQ(places("''", "'", "'"), Positions{});
    EXPECT_EQ(places("a,,b", ",", ","), Positions{});
}

TEST(StringFindAll, SkipsTheCharacterAfterABackslash) {
    // In each text, a quote opens at position 0, and only the comma after the closing quote is
    // found.
    EXPECT_EQ(places(R"('\'',)", ",", "'"), Positions{4});
    EXPECT_EQ(places(R"('\'a',)", ",", "'"), Positions{5});
    EXPECT_EQ(places(R"('\a',)", ",", "'"), Positions{4}) << "the quote after the escape closes";
    EXPECT_EQ(places(R"('\,b',)", ",", "'"), Positions{5});
}

TEST(StringFindAll, EscapesOnlyOneCharacterAfterABackslash) {
    EXPECT_EQ(places(R"('\\\',)", ",", "'"), Positions{5});
    EXPECT_EQ(places(R"('\\',)", ",", "'"), Positions{4});
    EXPECT_EQ(places(R"('\a\',)", ",", "'"), Positions{5});
}

TEST(StringFindAll, ClosesWithABackslashThatIsTheQuoteItself) {
    EXPECT_EQ(places(R"(\a,\,)", ",", "\\"), Positions{4});
    EXPECT_EQ(places(R"(\\,)", ",", "\\"), Positions{2});
    EXPECT_EQ(places(R"(\,)", ",", "\\"), Positions{});
}

TEST(StringFindAll, TakesABackslashOutsideQuotesForAnyCharacter) {
    EXPECT_EQ(places(R"(\,\',',)", ",", "'"), (Positions{1, 6}));
    EXPECT_EQ(places(R"(a\b)", "\\", "'"), Positions{1});
}

TEST(StringFindAll, ThrowsForABackslashAtTheEndOfAnOpenQuote) {
    for (std::string const text : {R"(,'a\,)", R"(,',\)", R"('\,)", R"(',\)", R"('\\,\,)"}) {
        auto const find = [&] { return places(text, ",", "'"); };
        EXPECT_EQ(outcome(find), std::nullopt) << text;
    }
    EXPECT_EQ(places(R"(',\ab)", ",", "'"), Positions{}) << "two characters follow the backslash";
}

TEST(StringFindAll, IgnoresQuotesAfterTheLastCharacter) {
    EXPECT_EQ(places(R"(a,'\)", ",", "'"), Positions{1});
    EXPECT_EQ(places(R"(a'\)", ",", "'"), Positions{});
}

TEST(StringFindAll, FindsNulsAndHighCharacters) {
    EXPECT_EQ(places("a\0b\xff\x80"s, "\0\xff"s, ""), (Positions{1, 3}));
    EXPECT_EQ(places("\0,\0,\xff,\xff,"s, ",", "\0\xff"s), (Positions{3, 7}));
}

TEST(StringFindAll, AgreesWithItsDefinitionOnAllShortTexts) {
    struct Arguments {
        char const *chars, *quotes;
    } const cases[] = {{",", "'"},  {",", "\""}, {",", "'\""},  {",'", "'"},
                       {"\\", "'"}, {",", "\\"}, {",\\", "\\'"}};
    test::forEachText(test::letters("'\"\\,a"), 7, [&](std::string const& text) {
        for (Arguments const& c : cases) {
            auto const fast = outcome([&] { return places(text, c.chars, c.quotes); });
            auto const slow = outcome([&] { return literal::findAll(text, c.chars, c.quotes); });
            ASSERT_EQ(fast, slow) << testing::PrintToString(text) << " " << c.chars << " "
                                  << c.quotes;
        }
    });
}

// --- tokenize ---

TEST(StringTokenize, ReturnsThePiecesBetweenSeparators) {
    EXPECT_EQ(tokens(",a,,'b,c',d,", ",", "'"), (Texts{"a", "'b,c'", "d"}));
    EXPECT_EQ(tokens("a b\tc", " \t", ""), (Texts{"a", "b", "c"}));
    EXPECT_EQ(tokens("abc", ",", "'"), Texts{"abc"});
    EXPECT_EQ(tokens("a,", ",", ""), Texts{"a"});
    EXPECT_EQ(tokens(",a", ",", ""), Texts{"a"});
    EXPECT_EQ(tokens(",,,", ",", ""), Texts{});
}

TEST(StringTokenize, ReturnsNothingForAnEmptyString) {
    EXPECT_EQ(tokens("", ",", "'"), Texts{});
    EXPECT_EQ(tokens("", "", ""), Texts{});
}

TEST(StringTokenize, ReturnsTheWholeStringWithoutSeparators) {
    EXPECT_EQ(tokens(",a,,'b", "", "'"), Texts{",a,,'b"});
    EXPECT_EQ(tokens(R"('\)", "", "'"), Texts{R"('\)"}) << "without separators, quotes are ignored";
}

TEST(StringTokenize, LeavesPiecesUnchanged) {
    EXPECT_EQ(tokens(R"( a , 'b\', ' ,"c)", ",", "'\""), (Texts{" a ", R"( 'b\', ' )", "\"c"}));
}

TEST(StringTokenize, EndsAPieceAtItsFirstNul) {
    EXPECT_EQ(tokens("a\0b,c\0,\0d,e"s, ",", ""), (Texts{"a", "c", "", "e"}));
    EXPECT_EQ(tokens("a\0b"s, "", ""), Texts{"a"});
    EXPECT_EQ(tokens("\0b"s, "", ""), Texts{""});
    EXPECT_EQ(tokens("a\0b\0"s, "\0"s, ""), (Texts{"a", "b"})) << "a NUL may be a separator";
}

TEST(StringTokenize, PassesOnTheErrorOfAnOpenQuote) {
    EXPECT_EQ(outcome([] { return tokens(R"(a,'b\,)", ",", "'"); }), std::nullopt);
}

TEST(StringTokenize, AppendsToTheContainer) {
    std::vector<String> out{"before"};
    String::tokenize("a,b", ",", out, "");
    EXPECT_EQ(out, (std::vector<String>{"before", "a", "b"}));
    String::tokenize("c", "", out, "");
    EXPECT_EQ(out, (std::vector<String>{"before", "a", "b", "c"}));
    String::tokenize("", ",", out, "");
    EXPECT_EQ(out.size(), 4U);
}

TEST(StringTokenize, LeavesTheContainerUnchangedWhenItThrows) {
    std::vector<String> out{"before"};
    EXPECT_THROW(String::tokenize(R"(a,'b\,)", ",", out, "'"), std::out_of_range);
    EXPECT_EQ(out, std::vector<String>{"before"});
}

TEST(StringTokenize, FillsAnyContainerThatGrowsAtItsEnd) {
    std::list<String> list;
    String::tokenize("a,b", ",", list, "");
    EXPECT_EQ(list, (std::list<String>{"a", "b"}));
    std::deque<std::string> texts;
    String::tokenize("a,b", ",", texts, "");
    EXPECT_EQ(texts, (std::deque<std::string>{"a", "b"}));
}

TEST(StringTokenize, AgreesWithItsDefinition) {
    Texts const alphabets[] = {test::letters("'\"\\,; a\0"s), test::letters("'\\,"),
                               test::letters("',"), test::letters("\\\xff\0"s)};
    for (Texts const& alphabet : alphabets) {
        test::RandomTexts texts(alphabet);
        test::RandomTexts sets(alphabet);
        for (int i = 0; i < 40000; ++i) {
            std::string const text = texts.next(16);
            std::string const chars = sets.next(2);
            std::string const quotes = sets.next(2);
            auto const fast = outcome([&] { return tokens(text, chars, quotes); });
            auto const slow = outcome([&] { return literal::tokenize(text, chars, quotes); });
            ASSERT_EQ(fast, slow) << testing::PrintToString(text) << " at "
                                  << testing::PrintToString(chars) << " outside "
                                  << testing::PrintToString(quotes);
            ASSERT_EQ(outcome([&] { return places(text, chars, quotes); }),
                      outcome([&] { return literal::findAll(text, chars, quotes); }))
                << testing::PrintToString(text) << " for " << testing::PrintToString(chars)
                << " outside " << testing::PrintToString(quotes);
        }
    }
}

// --- encodeHtml, decodeHtml ---

TEST(StringEncodeHtml, AgreesWithItsDefinition) {
    test::forEachText(test::letters("&<>'\"a;"), 6, [](std::string const& text) {
        ASSERT_EQ(String::encodeHtml(text), literal::encodeHtml(text));
    });
}

TEST(StringDecodeHtml, AgreesWithItsDefinitionOnPiecesOfEntities) {
    test::forEachText({"&", "amp;", "lt;", "gt;", "apos;", "quot;", "<"}, 6,
                      [](std::string const& text) {
                          ASSERT_EQ(String::decodeHtml(text), literal::decodeHtml(text)) << text;
                      });
}

TEST(StringDecodeHtml, AgreesWithItsDefinitionOnBrokenEntities) {
    test::RandomTexts texts({"&amp;", "&amp", "&lt;", "&", "&&", "amp;", "lt;", "am", "p;", "l",
                             "t;", "gt;", "quot;", "apos;", ";", "AMP;", "\0"s, "x"});
    for (int i = 0; i < 100000; ++i) {
        std::string const text = texts.next(10);
        ASSERT_EQ(String::decodeHtml(text), literal::decodeHtml(text))
            << testing::PrintToString(text);
    }
}

TEST(StringDecodeHtml, UndoesEncodeHtml) {
    test::forEachText(test::letters("&<'a;"), 5, [](std::string const& text) {
        // An entity in the text is encoded once but decoded twice.
        bool const holdsEntity = literal::decodeHtml(text) != text;
        ASSERT_TRUE(holdsEntity || String::decodeHtml(String::encodeHtml(text)) == text) << text;
    });
}

// --- null texts ---

TEST(NullText, IsTheEmptyText) {
    char const* const null = nullptr;
    EXPECT_EQ(String::sanitize(null, "a"), "");
    EXPECT_EQ(String("abc").extract(null, "c"), "ab");
    EXPECT_EQ(String("abc").extract("a", null), "");
    EXPECT_EQ(String("a,b").findAll(null, null), Positions{});
    EXPECT_EQ(String("',',").findAll(",", null), (Positions{1, 3}));
    EXPECT_EQ(String("a,b").tokenize(null, null), std::vector<String>{"a,b"});
    EXPECT_EQ(String::encodeHtml(null), "");
    EXPECT_EQ(String::decodeHtml(null), "");
    EXPECT_EQ(String("1<>2</>3").replaceElement(null, null), "13");
}

// --- long texts: quadratic time would not finish, and recursion would overflow the small stack ---

constexpr std::size_t many = 1000000;

Positions everyThird(unsigned int first) {
    Positions positions;
    for (unsigned int i = first; i < 3 * many; i += 3)
        positions.push_back(i);
    return positions;
}

TEST(LongText, OfBlanksIsTrimmed) {
    std::string const blanks(many, ' ');
    EXPECT_EQ(test::onSmallStack([&] { return String(blanks).trim(); }), "");
    EXPECT_EQ(test::onSmallStack([&] { return String(blanks + "x" + blanks).trim(); }), "x");
}

TEST(LongText, IsSanitizedToALongAlphabet) {
    std::string alphabet;
    for (int c = 1; c <= UCHAR_MAX; ++c)
        alphabet += static_cast<char>(c);
    std::string const forbidden(many, '\0');
    std::string const allowed(many, '\xff');
    auto const sanitize = [&](std::string const& text) {
        return test::onSmallStack([&] { return String::sanitize(text, alphabet.c_str()); });
    };
    EXPECT_EQ(sanitize(forbidden), "");
    EXPECT_TRUE(test::sameText(sanitize(forbidden + allowed + forbidden), allowed));
    alphabet = test::repeated(alphabet, 1000);
    EXPECT_TRUE(test::sameText(sanitize(allowed), allowed));
}

TEST(LongText, OfSeparatorsIsFoundAndHasNoTokens) {
    std::string const text(many, ',');
    Positions all(many);
    std::iota(all.begin(), all.end(), 0U);
    EXPECT_EQ(test::onSmallStack([&] { return places(text, ",", "'"); }), all);
    EXPECT_EQ(test::onSmallStack([&] { return tokens(text, ",", "'"); }), Texts{});
}

TEST(LongText, OfQuotesIsSkipped) {
    std::string const even(2 * many, '\'');
    for (std::string const& text : {even, even + "'"}) {
        EXPECT_EQ(test::onSmallStack([&] { return places(text, "'", "'"); }), Positions{});
        EXPECT_EQ(test::onSmallStack([&] { return places(text + ",", ",", "'"); }),
                  text == even ? Positions{2 * many} : Positions{});
        EXPECT_EQ(test::onSmallStack([&] { return tokens(text, ",", "'"); }), Texts{text});
    }
}

TEST(LongText, OfQuotedSectionsIsCutBetweenThem) {
    std::string const text = test::repeated("'',", many);
    EXPECT_EQ(test::onSmallStack([&] { return places(text, ",", "'"); }), everyThird(2));
    EXPECT_EQ(test::onSmallStack([&] { return tokens(text, ",", "'"); }), Texts(many, "''"));
}

TEST(LongText, InOneQuotedSectionIsSearchedOnce) {
    std::string const commas(many, ',');
    EXPECT_EQ(places("'" + commas, ",", "'"), Positions{});
    EXPECT_EQ(places("'" + commas + "',", ",", "'"), Positions{many + 2});
    EXPECT_EQ(places("'" + test::repeated("\\xy", many) + "',", ",", "'"), Positions{3 * many + 2});
    EXPECT_EQ(
        outcome([&] { return places("'" + test::repeated("\\\\,", many) + "\\,", ",", "'"); }),
        std::nullopt);
}

TEST(LongText, OfMarkupIsEncodedAndDecoded) {
    std::string const plain = test::repeated("&<>'\"", many / 5);
    std::string const encoded = test::repeated("&amp;&lt;&gt;&apos;&quot;", many / 5);
    EXPECT_TRUE(
        test::sameText(test::onSmallStack([&] { return String::encodeHtml(plain); }), encoded));
    EXPECT_TRUE(
        test::sameText(test::onSmallStack([&] { return String::decodeHtml(encoded); }), plain));
    std::string const ampersands(many, '&');
    EXPECT_TRUE(test::sameText(String::decodeHtml(ampersands), ampersands));
    EXPECT_TRUE(test::sameText(String::decodeHtml(test::repeated("&amp;amp;", many)),
                               test::repeated("&amp;", many)));
    EXPECT_TRUE(test::sameText(String::decodeHtml("&" + test::repeated("amp;", many)),
                               "&" + test::repeated("amp;", many - 1)));
}

TEST(LongText, IsExtractedBetweenLongMarkers) {
    std::string const as(many, 'a');
    EXPECT_EQ(String(as + "xb").extract(as, "b"), "x");
    EXPECT_EQ(String(as + as).extract(std::string(many / 2, 'a') + "b", ""), "");
    EXPECT_TRUE(test::sameText(String(as + "[" + as + "]" + as).extract("[", "]"), as));
}

} // namespace
