#include "misc/zntl_Markup.h"

#include "support/literal_text.h"
#include "support/print_string.h"
#include "support/same_text.h"
#include "support/sample_texts.h"
#include "support/small_stack.h"

#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <ostream>

using zntl::String;
using namespace std::string_literals;

namespace literal {

bool operator==(OpenTag const& a, OpenTag const& b) {
    return a.start == b.start && a.end == b.end && a.selfClosing == b.selfClosing;
}

bool operator==(CloseTag const& a, CloseTag const& b) {
    return a.start == b.start && a.end == b.end;
}

void PrintTo(OpenTag const& tag, std::ostream* out) {
    *out << tag.start << " to " << tag.end << (tag.selfClosing ? ", self-closing" : "");
}

void PrintTo(CloseTag const& tag, std::ostream* out) { *out << tag.start << " to " << tag.end; }

} // namespace literal

namespace {

using literal::CloseTag;
using literal::OpenTag;

std::optional<OpenTag> openTag(String const& text, unsigned int from, String const& name) {
    unsigned int start = UINT_MAX;
    unsigned int end = UINT_MAX;
    // Starts as true or false, because the search must set it in both cases.
    bool selfClosing = from % 2 == 0;
    if (!zntl::findOpenTag(text, from, name, start, end, selfClosing))
        return std::nullopt;
    return OpenTag{start, end, selfClosing};
}

std::optional<CloseTag> closeTag(String const& text, unsigned int from, String const& name) {
    unsigned int start = UINT_MAX;
    unsigned int end = UINT_MAX;
    if (!zntl::findCloseTag(text, from, name, start, end))
        return std::nullopt;
    return CloseTag{start, end};
}

std::string replaced(std::string const& text, std::string const& name,
                     std::string const& replacement) {
    return String(text).replaceElement(name, replacement);
}

OpenTag opening(std::size_t start, std::size_t end) { return {start, end, false}; }
OpenTag selfClosing(std::size_t start, std::size_t end) { return {start, end, true}; }

constexpr std::nullopt_t none = std::nullopt;

// --- renderElement ---

TEST(RenderElement, PutsTheContentBetweenTwoTags) {
    EXPECT_EQ(zntl::renderElement("a", "text"), "<a>text</a>");
    EXPECT_EQ(zntl::renderElement("a", ""), "<a></a>");
    EXPECT_EQ(zntl::renderElement("", "text"), "<>text</>");
    EXPECT_EQ(zntl::renderElement("a", "<b/> & \0"s), "<a><b/> & \0</a>"s) << "not encoded";
    std::string const name(100, 'n');
    EXPECT_EQ(zntl::renderElement(name.c_str(), name), "<" + name + ">" + name + "</" + name + ">");
}

TEST(RenderElement, WithoutContentIsOneTag) {
    EXPECT_EQ(zntl::renderElement("a"), "<a/>");
    EXPECT_EQ(zntl::renderElement(""), "</>");
}

TEST(RenderElement, WithoutANameIsNothing) {
    EXPECT_EQ(zntl::renderElement(nullptr), "");
    EXPECT_EQ(zntl::renderElement(nullptr, "text"), "");
}

// --- findOpenTag ---

TEST(FindOpenTag, FindsATagOfTheWholeName) {
    EXPECT_EQ(openTag("<a>", 0, "a"), opening(0, 2));
    EXPECT_EQ(openTag("x<abc>y", 0, "abc"), opening(1, 5));
    EXPECT_EQ(openTag("<abc><ab x='1'/>", 0, "ab"), selfClosing(5, 15));
    EXPECT_EQ(openTag("<ab><a>", 0, "a"), opening(4, 6));
    EXPECT_EQ(openTag("<ab>", 0, "a"), none);
    EXPECT_EQ(openTag("<A>", 0, "a"), none);
    EXPECT_EQ(openTag("< a>", 0, "a"), none);
    EXPECT_EQ(openTag("</a>", 0, "a"), none);
    EXPECT_EQ(openTag("", 0, "a"), none);
}

TEST(FindOpenTag, TakesEverythingAfterABlankForAttributes) {
    for (char const blank : {' ', '\t', '\n', '\r'}) {
        std::string const name = "<a"s + blank;
        EXPECT_EQ(openTag(name + ">", 0, "a"), opening(0, 3));
        EXPECT_EQ(openTag(name + "x=1>", 0, "a"), opening(0, 6));
        EXPECT_EQ(openTag(name + "/>", 0, "a"), selfClosing(0, 4));
        EXPECT_EQ(openTag(name + "x/ >", 0, "a"), opening(0, 6));
        EXPECT_EQ(openTag(name, 0, "a"), none);
        EXPECT_EQ(openTag(name + "x", 0, "a"), none);
    }
    for (char const other : {'\v', '\f', '\0', '=', '-', '\xa0'})
        EXPECT_EQ(openTag("<a"s + other + ">", 0, "a"), none);
}

TEST(FindOpenTag, EndsATagAtAGreaterSignInAQuotedValue) {
    EXPECT_EQ(openTag("<a x='>'/>", 0, "a"), opening(0, 6));
    EXPECT_EQ(openTag("<a x='/>'>", 0, "a"), selfClosing(0, 7));
    EXPECT_EQ(openTag("<a <a>>", 0, "a"), opening(0, 5));
}

TEST(FindOpenTag, KnowsASelfClosingTag) {
    EXPECT_EQ(openTag("<a/>", 0, "a"), selfClosing(0, 3));
    EXPECT_EQ(openTag("<a />", 0, "a"), selfClosing(0, 4));
    EXPECT_EQ(openTag("<a/ >", 0, "a"), none);
    EXPECT_EQ(openTag("<a//>", 0, "a"), none);
    EXPECT_EQ(openTag("<a/", 0, "a"), none);
    EXPECT_EQ(openTag("<a/<a>", 0, "a"), opening(3, 5)) << "the search continues after the slash";
    EXPECT_EQ(openTag("<a/x><a/>", 0, "a"), selfClosing(5, 8));
}

TEST(FindOpenTag, ContinuesAfterTheNameOfALongerOne) {
    EXPECT_EQ(openTag("<a<a>", 0, "a"), opening(2, 4));
    EXPECT_EQ(openTag("<<a>", 0, "a"), opening(1, 3));
    EXPECT_EQ(openTag("<a<a<a>", 0, "a<a"), none) << "the second occurrence overlaps the first";
    EXPECT_EQ(openTag("<a<ab<a<a>", 0, "a<a"), opening(5, 9));
}

TEST(FindOpenTag, StopsWhereTheTextEndsWithTheName) {
    EXPECT_EQ(openTag("<a", 0, "a"), none);
    EXPECT_EQ(openTag("x<a", 0, "a"), none);
    EXPECT_EQ(openTag("<", 0, "a"), none);
}

TEST(FindOpenTag, StartsAtThePositionGiven) {
    EXPECT_EQ(openTag("<a><a>", 0, "a"), opening(0, 2));
    EXPECT_EQ(openTag("<a><a>", 1, "a"), opening(3, 5));
    EXPECT_EQ(openTag("<a><a>", 3, "a"), opening(3, 5));
    EXPECT_EQ(openTag("<a><a>", 4, "a"), none);
    EXPECT_EQ(openTag("<a><a>", 6, "a"), none);
    EXPECT_EQ(openTag("<a><a>", 7, "a"), none);
    EXPECT_EQ(openTag("<a><a>", UINT_MAX, "a"), none);
    EXPECT_EQ(openTag("", 1, "a"), none);
}

TEST(FindOpenTag, TakesAnyName) {
    EXPECT_EQ(openTag("<>", 0, ""), opening(0, 1));
    EXPECT_EQ(openTag("</>", 0, ""), selfClosing(0, 2));
    EXPECT_EQ(openTag("< x>", 0, ""), opening(0, 3));
    EXPECT_EQ(openTag("<a b>", 0, "a b"), opening(0, 4));
    EXPECT_EQ(openTag("<a>>", 0, "a>"), opening(0, 3));
    EXPECT_EQ(openTag("<a\0b>"s, 0, "a\0b"s), opening(0, 4));
    EXPECT_EQ(openTag("<\xc3\xa4>", 0, "\xc3\xa4"), opening(0, 3));
}

// --- findCloseTag ---

TEST(FindCloseTag, FindsTheTagOfAnElementWithoutNestedOnes) {
    EXPECT_EQ(closeTag("<a>x</a>", 3, "a"), (CloseTag{4, 7}));
    EXPECT_EQ(closeTag("<a></a>", 3, "a"), (CloseTag{3, 6}));
    EXPECT_EQ(closeTag("</a>", 0, "a"), (CloseTag{0, 3}));
    EXPECT_EQ(closeTag("<a></b></a>", 3, "a"), (CloseTag{7, 10}));
}

TEST(FindCloseTag, SkipsNestedElements) {
    EXPECT_EQ(closeTag("<a><a></a></a>", 3, "a"), (CloseTag{10, 13}));
    EXPECT_EQ(closeTag("<a><a></a><a></a></a>", 3, "a"), (CloseTag{17, 20}));
    EXPECT_EQ(closeTag("<a><a><a></a></a></a>", 3, "a"), (CloseTag{17, 20}));
    EXPECT_EQ(closeTag("<a><a><a></a></a></a>", 6, "a"), (CloseTag{13, 16}));
    EXPECT_EQ(closeTag("<a><a x='1'></a></a>", 3, "a"), (CloseTag{16, 19}));
}

TEST(FindCloseTag, DoesNotCountOtherTags) {
    EXPECT_EQ(closeTag("<a><a/></a>", 3, "a"), (CloseTag{7, 10}));
    EXPECT_EQ(closeTag("<a><a x=''/></a>", 3, "a"), (CloseTag{12, 15}));
    EXPECT_EQ(closeTag("<a><ab></a>", 3, "a"), (CloseTag{7, 10}));
    EXPECT_EQ(closeTag("<a><b></a>", 3, "a"), (CloseTag{6, 9}));
    EXPECT_EQ(closeTag("<a><a</a>", 3, "a"), (CloseTag{5, 8})) << "the inner tag has no end";
}

TEST(FindCloseTag, FindsNothingWhereATagIsMissing) {
    EXPECT_EQ(closeTag("<a>", 3, "a"), none);
    EXPECT_EQ(closeTag("<a><a></a>", 3, "a"), none);
    EXPECT_EQ(closeTag("<a></ab>", 3, "a"), none);
    EXPECT_EQ(closeTag("<a></a >", 3, "a"), none) << "a closing tag contains no blank";
    EXPECT_EQ(closeTag("<a></a", 3, "a"), none);
    EXPECT_EQ(closeTag("", 0, "a"), none);
}

TEST(FindCloseTag, SearchesAfterThePositionOnly) {
    EXPECT_EQ(closeTag("</a><a></a>", 7, "a"), (CloseTag{7, 10}));
    EXPECT_EQ(closeTag("</a><a></a>", 8, "a"), none);
    EXPECT_EQ(closeTag("<a></a>", 0, "a"), none) << "the opening tag counts as a nested one";
    EXPECT_EQ(closeTag("</a>", 4, "a"), none);
    EXPECT_EQ(closeTag("</a>", 5, "a"), none);
    EXPECT_EQ(closeTag("</a>", UINT_MAX, "a"), none);
}

TEST(FindCloseTag, TruncatesOpeningTagsAtTheClosingTag) {
    // Before the first closing tag, the inner opening tag "<a" has no end. When the search reaches
    // the second closing tag, the ">" of the first one ends the inner tag, which then counts.
    EXPECT_EQ(closeTag("<a <a></a></a>", 2, "a"), (CloseTag{10, 13}));
    EXPECT_EQ(closeTag("<a </a></a>", 0, "a"), (CloseTag{3, 6}));
    EXPECT_EQ(closeTag("<a><a><a </a></a></a>", 3, "a"), (CloseTag{17, 20}));
    EXPECT_EQ(closeTag("<a><a/</a>", 3, "a"), (CloseTag{6, 9}));
}

TEST(FindCloseTag, RecognisesATagWithinAnother) {
    EXPECT_EQ(closeTag("<a><b x='</a>'></a>", 3, "a"), (CloseTag{9, 12}));
    EXPECT_EQ(closeTag("<a><</a>", 3, "a"), (CloseTag{4, 7}));
}

TEST(FindCloseTag, TakesAnyName) {
    EXPECT_EQ(closeTag("<></>", 2, ""), (CloseTag{2, 4}));
    EXPECT_EQ(closeTag("<><></></>", 2, ""), (CloseTag{7, 9}));
    EXPECT_EQ(closeTag("</a b>", 0, "a b"), (CloseTag{0, 5}));
    EXPECT_EQ(closeTag("</\0>"s, 0, "\0"s), (CloseTag{0, 3}));
}

// --- replaceElement ---

struct Replacement {
    char const *text, *name, *result;
};

TEST(ReplaceElement, ReplacesWholeElements) {
    Replacement const cases[] = {
        {"1<b>2<b>3</b></b>4<b/>5", "b", "1X4X5"},
        {"<b></b>", "b", "X"},
        {"<b/>", "b", "X"},
        {"<b />", "b", "X"},
        {"<b c='d'>e</b>", "b", "X"},
        {"<b>1</b><b>2</b>", "b", "XX"},
        {"<b>1</b> <b>2</b>", "b", "X X"},
        {"<a><b>1</b></a>", "b", "<a>X</a>"},
        {"<bb>1</bb><b>2</b>", "b", "<bb>1</bb>X"},
        {"1</b>2", "b", "1</b>2"},
        {"<b>1</b>2</b>3", "b", "X2</b>3"},
        {"none", "b", "none"},
        {"", "b", ""},
    };
    for (Replacement const& c : cases)
        EXPECT_EQ(replaced(c.text, c.name, "X"), c.result) << c.text;
}

TEST(ReplaceElement, LeavesAnElementThatIsNotClosed) {
    Replacement const cases[] = {
        {"1<b>2", "b", "1<b>2"},           {"<b>", "b", "<b>"},
        {"<b x='1'>2", "b", "<b x='1'>2"}, {"<b>1<b>2</b>3", "b", "<b>1X3"},
        {"<b>1<b/>2", "b", "<b>1X2"},      {"<b><b><b>1</b></b>", "b", "<b>X"},
        {"<b>1</b>2<b>3", "b", "X2<b>3"},  {"<b>1<b>2<b>3</b>4<b>5", "b", "<b>1<b>2X4<b>5"},
        {"<b 1</b>", "b", "<b 1</b>"},
    };
    for (Replacement const& c : cases)
        EXPECT_EQ(replaced(c.text, c.name, "X"), c.result) << c.text;
}

TEST(ReplaceElement, DoesNotSearchTheReplacement) {
    EXPECT_EQ(replaced("<b>1</b>", "b", "<b>2</b>"), "<b>2</b>");
    EXPECT_EQ(replaced("<b><b/></b><b/>", "b", "<b>"), "<b><b>");
    EXPECT_EQ(replaced("1<b/>2", "b", ""), "12");
    EXPECT_EQ(replaced("<b/>", "b", "\0"s), "\0"s);
}

TEST(ReplaceElement, DoesNotChangeTheString) {
    String const text("<b/>");
    EXPECT_EQ(text.replaceElement("b", "X"), "X");
    EXPECT_EQ(text, "<b/>");
}

TEST(ReplaceElement, TakesAnyName) {
    EXPECT_EQ(replaced("1<>2</>3</>4", "", "X"), "1X3X4") << "a closing tag alone closes itself";
    EXPECT_EQ(replaced("1<a b>2</a b>3", "a b", "X"), "1X3");
    EXPECT_EQ(replaced("1<a>>2</a>>3", "a>", "X"), "1X3");
    EXPECT_EQ(replaced("1<a<>2</a<>3", "a<", "X"), "1X3");
    EXPECT_EQ(replaced("1<\0>2</\0>3"s, "\0"s, "X"), "1X3");
}

// --- comparison with the literal definitions ---

void compareAll(std::string const& text, std::string const& name) {
    for (unsigned int from = 0; from <= text.size() + 1; ++from) {
        ASSERT_EQ(openTag(text, from, name), literal::findOpenTag(text, from, name))
            << testing::PrintToString(text) << " from " << from << " for "
            << testing::PrintToString(name);
        ASSERT_EQ(closeTag(text, from, name), literal::findCloseTag(text, from, name))
            << testing::PrintToString(text) << " from " << from << " for "
            << testing::PrintToString(name);
    }
    ASSERT_EQ(replaced(text, name, "R"), literal::replaceElement(text, name, "R"))
        << testing::PrintToString(text) << " for " << testing::PrintToString(name);
}

TEST(Markup, AgreesWithItsDefinitionOnAllTextsOfTagPieces) {
    test::forEachText({"<a", "</a>", ">", "/", " ", "x"}, 6,
                      [](std::string const& text) { compareAll(text, "a"); });
}

TEST(Markup, AgreesWithItsDefinitionOnAllTextsOfSingleCharacters) {
    test::forEachText(test::letters("<a/> "), 7,
                      [](std::string const& text) { compareAll(text, "a"); });
}

TEST(Markup, ReplacesAsItsDefinitionInAllNestings) {
    for (char const* const replacement : {"", "<a>"}) {
        test::forEachText({"<a>", "</a>", "<a/>", "<a ", "x"}, 7, [&](std::string const& text) {
            ASSERT_EQ(replaced(text, "a", replacement),
                      literal::replaceElement(text, "a", replacement))
                << text;
        });
    }
}

TEST(Markup, AgreesWithItsDefinitionForAnyName) {
    std::string const names[] = {
        "",    "a",   "ab",     "<",  ">",   "/",   "//",   " ",   "\t",  "a<",  "<a",   "a>",
        ">a",  "a/",  "/a",     "a ", " a",  "a b", "a<a",  "<<",  "><",  "</",  "/>",   "</a>",
        "<a>", "a/>", "</a><a", "aa", "a>b", "\0"s, "a\0"s, "> <", "/a>", "></", "a></a"};
    for (std::string const& name : names) {
        std::string const pattern = "<" + name;
        test::RandomTexts texts({pattern, pattern + ">", pattern + "/>", "</" + name + ">",
                                 "</" + name, pattern + " ", "<", ">", "/", " ", "a", name});
        for (int i = 0; i < 3000; ++i)
            compareAll(texts.next(10), name);
    }
}

TEST(Markup, AgreesWithItsDefinitionOnLongerNestings) {
    test::RandomTexts texts(
        {"<a>", "<a>", "</a>", "</a>", "<a x='1'>", "<a/>", "<a ", "<ab>", "1"});
    for (int i = 0; i < 3000; ++i) {
        std::string const text = texts.next(60);
        ASSERT_EQ(replaced(text, "a", "R"), literal::replaceElement(text, "a", "R")) << text;
        ASSERT_EQ(closeTag(text, 0, "a"), literal::findCloseTag(text, 0, "a")) << text;
    }
}

// --- large texts: quadratic time would not finish, and recursion would overflow the small stack
// ---

constexpr unsigned int many = 100000;

std::string replacedOnSmallStack(std::string const& text, std::string const& name = "a") {
    return test::onSmallStack([&] { return replaced(text, name, "R"); });
}

std::optional<CloseTag> closeTagOnSmallStack(std::string const& text, unsigned int from) {
    return test::onSmallStack([&] { return closeTag(text, from, "a"); });
}

TEST(LargeMarkup, NestsDeeply) {
    std::string const text = test::repeated("<a>", many) + "x" + test::repeated("</a>", many);
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text), "R"));
    EXPECT_EQ(closeTagOnSmallStack(text, 3), (CloseTag{text.size() - 4, text.size() - 1}));
    EXPECT_EQ(closeTagOnSmallStack(text, 3 * many), (CloseTag{3 * many + 1, 3 * many + 4}));
    EXPECT_EQ(closeTagOnSmallStack(text, 0), none);
}

TEST(LargeMarkup, HasManySiblings) {
    std::string const text = test::repeated("<a>x</a>", many);
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text), std::string(many, 'R')));
    EXPECT_TRUE(test::sameText(replacedOnSmallStack("<a>" + text + "</a>"), "R"));
    EXPECT_EQ(closeTagOnSmallStack("<a>" + text + "</a>", 3),
              (CloseTag{3 + text.size(), 6 + text.size()}));
    EXPECT_TRUE(
        test::sameText(replacedOnSmallStack(test::repeated("<a/>", many)), std::string(many, 'R')));
}

TEST(LargeMarkup, OpensAndNeverCloses) {
    std::string const text = test::repeated("<a>", many);
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text), text));
    EXPECT_EQ(closeTagOnSmallStack(text, 3), none);
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text + "<a/>"), text + "R"));
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text + text + test::repeated("</a>", many)),
                               text + "R"));
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(test::repeated("<a><a></a>", many)),
                               test::repeated("<a>R", many)));
    EXPECT_EQ(closeTagOnSmallStack(test::repeated("<a><a></a>", many), 3), none);
}

TEST(LargeMarkup, OpensAndNeverClosesUnderAnyName) {
    for (std::string const name : {"<", "a<b", "</", ">", "/", "a>b"}) {
        std::string const text = test::repeated("<" + name + ">", many);
        EXPECT_TRUE(test::sameText(replacedOnSmallStack(text, name), text)) << name;
    }
}

TEST(LargeMarkup, ClosesWithoutOpening) {
    std::string const text = test::repeated("</a>", many);
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text), text));
    EXPECT_EQ(closeTagOnSmallStack(text, 4), (CloseTag{4, 7}));
}

TEST(LargeMarkup, HasTagsThatNeverEnd) {
    for (char const* const piece : {"<a ", "<a", "<a/", "<", "<ab>", "<a </a"}) {
        std::string const text = test::repeated(piece, many);
        EXPECT_TRUE(test::sameText(replacedOnSmallStack(text), text)) << piece;
        EXPECT_EQ(closeTagOnSmallStack(text, 0), none) << piece;
    }
    // The ">" ends the first tag; all others are its attributes.
    std::string const text = test::repeated("<a ", many) + ">";
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text + "</a>"), "R"));
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(test::repeated("<a ", many) + "/>"), "R"));
}

TEST(LargeMarkup, StraddlesItsClosingTags) {
    // The ">" of each closing tag also ends the opening tag before it.
    std::string const text = test::repeated("<a </a>", many);
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(text), std::string(many / 2, 'R')));
    EXPECT_TRUE(
        test::sameText(replacedOnSmallStack("<a>" + text), std::string(many / 2, 'R') + "<a </a>"));
}

TEST(LargeMarkup, HasALongName) {
    std::string const name(many, 'a');
    std::string const element = "<" + name + "></" + name + ">";
    EXPECT_TRUE(test::sameText(replacedOnSmallStack(element + "-" + element, name), "R-R"));
    EXPECT_TRUE(test::sameText(
        replacedOnSmallStack(test::repeated("<" + std::string(many - 1, 'a'), 10), name),
        test::repeated("<" + std::string(many - 1, 'a'), 10)));
}

} // namespace
