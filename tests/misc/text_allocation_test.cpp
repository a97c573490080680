// On allocation failure, and only then, the text operations throw std::bad_alloc. They leak nothing
// and do not change their strings.

#include "misc/zntl_Markup.h"
#include "misc/zntl_SmartArray.h"
#include "misc/zntl_String.h"
#include "streams/znsl_EndOfFile.h"
#include "support/failing_allocation.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using zntl::String;

// These strings are too long for the small-string optimisation, so each copy allocates.
String const text =
    " one,'two,three',four <element>in here</element> &lt;five&gt; <element/> rest ";
String const name = "element";
String const longName = "an-element-with-a-long-name";

struct Operation {
    char const* name;
    void (*run)();

    friend std::ostream& operator<<(std::ostream& out, Operation const& operation) {
        return out << operation.name;
    }
};

class TextAllocation : public testing::TestWithParam<Operation> {};

TEST_P(TextAllocation, FailsCleanly) {
    std::string const before = text;
    EXPECT_GT(test::failEachAllocationOf(GetParam().run), 0);
    EXPECT_EQ(text, before);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, TextAllocation,
    testing::Values(
        Operation{"trim", [] { text.trim(); }},
        Operation{"sanitize", [] { String::sanitize(text, "abcdefghijklmnopqrstuvwxyz "); }},
        Operation{"extract", [] { text.extract("'", "</"); }},
        Operation{"abbreviate", [] { text.abbreviate(40); }},
        Operation{"abbreviateNothing", [] { text.abbreviate(400); }},
        Operation{"padEnd", [] { text.padEnd(200, '*'); }},
        Operation{"findAll", [] { text.findAll(", <>", "'"); }},
        Operation{"tokenize", [] { text.tokenize(",", "'"); }},
        Operation{"tokenizeWhole", [] { text.tokenize("", ""); }},
        Operation{"replaceElement", [] { text.replaceElement(name, "replacement of it"); }},
        Operation{"replaceUnclosed", [] { text.replaceElement("five", "replacement of it"); }},
        Operation{"findOpenTag",
                  [] {
                      unsigned int start = 0;
                      unsigned int end = 0;
                      bool selfClosing = false;
                      zntl::findOpenTag(text, 0, longName, start, end, selfClosing);
                  }},
        Operation{"findCloseTag",
                  [] {
                      unsigned int start = 0;
                      unsigned int end = 0;
                      zntl::findCloseTag(text, 0, longName, start, end);
                  }},
        Operation{"toArray", [] { zntl::SmartArray<char> const array = text; }},
        Operation{"locatedMessage", [] { zntl::locatedMessage("source", 1, "Class", "text()"); }},
        Operation{"markerToXml", [] { znsl::EndOfFile().toXML(longName.c_str()); }}),
    [](auto const& test) { return test.param.name; });

// The container keeps its earlier pieces, and may also contain some pieces of the failed call.
TEST(TokenizeAllocationFailure, KeepsWhatTheContainerHeld) {
    long const failures = test::failEachAllocation([](test::FailingRun& run) {
        std::vector<String> pieces{"before"};
        run.runsOutOfMemory([&] { String::tokenize(text, ",", pieces, "'"); });
        EXPECT_EQ(pieces.at(0), "before");
        EXPECT_EQ(pieces.size() == 4, !run.happened());
    });
    EXPECT_GT(failures, 3);
}

} // namespace
