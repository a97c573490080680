// Malicious documents, and which documents are well-formed.

#include "xml/znxml_DomIterator.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Set.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"
#include "support/small_stack.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using zntl::String;
using znxml::DomIterator;

namespace {

std::string repeat(int count, std::string_view text) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

bool isRead(std::string const& document) { return !DomIterator::parse(document).atEnd(); }

TEST(Document, ThatIsWellFormedIsRead) {
    for (char const* const document :
         {"<a/>",
          "<a></a >",
          "<a\n/>",
          "<_a.-1/>",
          "<:/>",
          "<a:b/>",
          "<\xC3\xA9/>",
          "<?xml version=\"1.0\" encoding=\"utf-8\" standalone='yes'?>\n<a/>",
          "<a>]]</a>",
          "<a>\x7F</a>",
          "<a b='>'/>",
          "<a b=\"'\" c='\"'/>",
          "<a><!-- - --></a>",
          "<a><?b?></a>",
          "<!DOCTYPE a><a/>",
          "<!DOCTYPE a [<!-- b -->]><a/>",
          "<!DOCTYPE a PUBLIC 'b' 'c'><a/>",
          "<!DOCTYPE a [<!ENTITY b 'c'>]><a/>",
          "<!DOCTYPE a [<!ENTITY amp '&#38;#38;'>]><a>&amp;</a>",
          "<!DOCTYPE a [<!NOTATION b SYSTEM 'c'><!ELEMENT a (b|(c,d)*)><!ATTLIST a b ID "
          "#IMPLIED>]><a/>",
          "<!DOCTYPE a [<!ENTITY % b SYSTEM 'none'>%b;]><a/>",
          "<a>\xEF\xBF\xBD</a>",
          "<a>\xED\x9F\xBF\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF</a>",
          "<a>&#x10FFFF;</a>"}) {
        EXPECT_TRUE(isRead(document)) << document;
    }
}

TEST(Document, ThatIsNotWellFormedIsRefused) {
    for (char const* const document : {"",
                                       "a",
                                       "<",
                                       "<a",
                                       "<a>",
                                       "</a>",
                                       "<a></b>",
                                       "<a></A>",
                                       "<a><b></a></b>",
                                       "<a/><b/>",
                                       "<a/>b",
                                       "b<a/>",
                                       "<1/>",
                                       "<-/>",
                                       "< a/>",
                                       "<a / >",
                                       "<a><</a>",
                                       "<a>&</a>",
                                       "<a>&b</a>",
                                       "<a>&b;</a>",
                                       "<a>&amp</a>",
                                       "<a>&#;</a>",
                                       "<a>&#0;</a>",
                                       "<a>&#x1;</a>",
                                       "<a>&#xD800;</a>",
                                       "<a>&#x110000;</a>",
                                       "<a>&#xFFFF;</a>",
                                       "<a>]]></a>",
                                       "<a b/>",
                                       "<a b=c/>",
                                       "<a b='c/>",
                                       "<a b='<'/>",
                                       "<a b='&'/>",
                                       "<a b='1' b='2'/>",
                                       "<a b='1'c='2'/>",
                                       "<a><!-- -- --></a>",
                                       "<a><!-- --></a",
                                       "<a><![CDATA[]]</a>",
                                       "<a><?xml version='1.0'?></a>",
                                       " <?xml version='1.0'?><a/>",
                                       "<?xml?><a/>",
                                       "<?xml version='1.0' encoding='none'?><a/>",
                                       "<?xml encoding='utf-8'?><a/>",
                                       "<a/><!DOCTYPE a>",
                                       "<!DOCTYPE a [<!ELEMENT>]><a/>",
                                       "<!DOCTYPE a",
                                       "<!doctype a><a/>",
                                       "<a>\x01</a>",
                                       "<a>\x1F</a>",
                                       "<a b='\x0B'/>",
                                       "<a>\x80</a>",
                                       "<a>\xC3</a>",
                                       "<a>\xC0\x80</a>",
                                       "<a>\xE0\x80\x80</a>",
                                       "<a>\xED\xA0\x80</a>",
                                       "<a>\xEF\xBF\xBE</a>",
                                       "<a>\xEF\xBF\xBF</a>",
                                       "<a>\xF0\x80\x80\x80</a>",
                                       "<a>\xF4\x90\x80\x80</a>",
                                       "<a>\xF8\x88\x80\x80\x80</a>",
                                       "<a>\xC3(</a>",
                                       "<\xC3/>",
                                       "\xEF\xBB<a/>"}) {
        EXPECT_FALSE(isRead(document)) << document;
    }
}

TEST(Document, MayNotContainNul) {
    std::string const document = "<a>bc</a><!--d-->";
    for (std::size_t i = 0; i <= document.size(); ++i) {
        std::string changed = document;
        changed.insert(i, 1, '\0');
        EXPECT_FALSE(isRead(changed)) << i;
    }
}

TEST(Document, MayBeInTheEncodingsThatItDeclares) {
    using namespace std::string_literals;
    std::string const little = "\xFF\xFE<\0a\0>\0\xE9\0<\0b\0/\0>\0<\0/\0a\0>\0"s;
    std::string const big = "\xFE\xFF\0<\0a\0>\0\xE9\0<\0b\0/\0>\0<\0/\0a\0>"s;
    for (std::string const& document :
         {little, big, little.substr(2), big.substr(2),
          "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9<b/></a>"s,
          "<?xml version='1.0' encoding='utf-8'?><a>\xC3\xA9<b/></a>"s}) {
        DomIterator const root = DomIterator::parse(document);
        EXPECT_EQ(root.getValue(), "\xC3\xA9");
        EXPECT_EQ(root.toXML(), "<a>\xC3\xA9<b/></a>");
        EXPECT_EQ(root.childrenBegin().getName(), "b");
    }
    for (std::string const& document :
         {little.substr(0, little.size() - 1), "\xFF\xFE"s, "\xFE\xFF\0<"s, "\0"s, "<\0"s,
          "<?xml version='1.0' encoding='UTF-16'?><a/>"s,
          "<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA9</a>"s,
          "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</b>"s}) {
        EXPECT_FALSE(isRead(document));
    }
}

TEST(Entities, OfTheDocumentsOwnAreNotExpanded) {
    for (char const* const document :
         {"<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>", "<!DOCTYPE a [<!ENTITY b 'c'>]><a d='&b;'/>",
          "<!DOCTYPE a [<!ENTITY b 'c'><!ATTLIST a d CDATA '&b;'>]><a/>",
          "<!DOCTYPE a [<!ENTITY b 'c'>]><a><d e='&#65;&amp;&b;'>x</d></a>",
          "<!DOCTYPE a [<!ENTITY b SYSTEM '/etc/hostname'>]><a>&b;</a>",
          "<!DOCTYPE a SYSTEM 'none'><a>&b;</a>", "<!DOCTYPE a SYSTEM 'none'><a d='&b;'/>",
          "<!DOCTYPE a [<!ENTITY b '&b;'>]><a>&b;</a>"}) {
        EXPECT_FALSE(isRead(document)) << document;
    }
    DomIterator const root = DomIterator::parse(
        "<!DOCTYPE a [<!ENTITY b 'c'>]><a d='&#65;&amp;&lt;&gt;&apos;&quot;'>&lt;&#66;</a>");
    EXPECT_EQ(root.getAttribute("d"), "A&<>'\"");
    EXPECT_EQ(root.getValue(), "<B");
}

TEST(Entities, CannotMultiply) {
    std::string laughs = "<!DOCTYPE a [<!ENTITY b0 'lol'>";
    for (int i = 1; i < 10; ++i) {
        laughs += "<!ENTITY b" + std::to_string(i) + " '" +
                  repeat(10, "&b" + std::to_string(i - 1) + ";") + "'>";
    }
    laughs += "]>";
    for (char const* const element : {"<a>&b9;</a>", "<a c='&b9;'/>"}) {
        std::string const document = laughs + element;
        bool read = true;
        EXPECT_LT(test::largestAllocation([&] { read = isRead(document); }), 100'000U);
        EXPECT_FALSE(read) << element;
    }
    EXPECT_TRUE(isRead(laughs + "<a/>")) << "no element uses the entities";
}

TEST(DefaultAttributes, CannotMultiply) {
    std::string const doctype =
        "<!DOCTYPE a [<!ATTLIST b c CDATA '" + std::string(1000, 'x') + "'>]>";
    DomIterator const few = DomIterator::parse(doctype + "<a>" + repeat(5, "<b/>") + "</a>");
    EXPECT_EQ(few.childrenBegin().getAttribute("c").size(), 1000U);
    std::string const many = doctype + "<a>" + repeat(10000, "<b/>") + "</a>";
    bool read = true;
    EXPECT_LT(test::largestAllocation([&] { read = isRead(many); }), 40 * many.size());
    EXPECT_FALSE(read);
}

TEST(DeclaredAttributes, AreLimited) {
    auto const document = [](int count) {
        std::string declarations;
        for (int i = 0; i < count; ++i)
            declarations += " b" + std::to_string(i) + " CDATA #IMPLIED";
        return "<!DOCTYPE a [<!ATTLIST a" + declarations + ">]><a/>";
    };
    EXPECT_TRUE(isRead(document(1000)));
    EXPECT_FALSE(isRead(document(1001))) << "each start tag would take time for each of them";
}

TEST(Namespaces, CannotMultiply) {
    auto const read = [](std::size_t length, int children, std::string const& child) {
        return isRead("<r xmlns='" + std::string(length, 'u') + "' xmlns:p='" +
                      std::string(length, 'v') + "'>" + repeat(children, child) + "</r>");
    };
    EXPECT_TRUE(read(100, 10'000, "<a/>"));
    EXPECT_TRUE(read(100'000, 100, "<a/>"));
    EXPECT_FALSE(read(10'000, 10'000, "<a/>"));
    EXPECT_FALSE(read(10'000, 10'000, "<p:a/>"));
    EXPECT_FALSE(read(10'000, 10'000, "<a xmlns='' p:b=''/>"));
    EXPECT_TRUE(read(10'000, 10'000, "<a xmlns=''/>")) << "uses no outer declaration";
}

TEST(Namespaces, AreReadInALargeDocument) {
    std::string const start = "<p:r xmlns:p='u'><!--";
    std::string const end = "--><p:a/></p:r>";
    // 64 times this size is 2^32.
    std::size_t const size = std::size_t{64} << 20;
    EXPECT_TRUE(isRead(start + std::string(size - start.size() - end.size(), ' ') + end));
}

TEST(DeepDocument, IsReadWalkedAndReleasedOnASmallStack) {
    constexpr int depth = 100'000;
    for (char const* const tag : {"<a>", "<a b='1'>", "<p:a xmlns:p='q'>"}) {
        std::string const end = tag[1] == 'p' ? "</p:a>" : "</a>";
        std::string const document = repeat(depth, tag) + "text" + repeat(depth, end);
        int const levels = test::onSmallStack(
            [&] {
                int count = 0;
                DomIterator element = DomIterator::parse(document);
                for (; !element.atEnd(); element = element.childrenBegin())
                    ++count;
                return count;
            },
            512 * 1024);
        EXPECT_EQ(levels, depth) << tag;
    }
}

TEST(DeepDocument, ReturnsItsTextOnASmallStack) {
    constexpr int depth = 100'000;
    std::string const document = repeat(depth, "<a>") + repeat(depth, "</a>");
    bool const isSame = test::onSmallStack(
        [&] {
            DomIterator const child = DomIterator::parse(document).childrenBegin();
            return child.toXML().size() == document.size() - 7 && isRead(child.toXML());
        },
        512 * 1024);
    EXPECT_TRUE(isSame);
}

TEST(DeepDocument, ThatIsMalformedIsRefusedOnASmallStack) {
    for (std::string const& document :
         {repeat(100'000, "<a>"), repeat(100'000, "<!DOCTYPE a ["), repeat(100'000, "<![CDATA["),
          "<!DOCTYPE a [<!ELEMENT a " + repeat(100'000, "(") + "]><a/>"}) {
        EXPECT_FALSE(test::onSmallStack([&] { return isRead(document); }, 512 * 1024));
    }
    std::string const groups =
        "<!DOCTYPE a [<!ELEMENT a " + repeat(100'000, "(") + "b" + repeat(100'000, ")") + ">]><a/>";
    EXPECT_TRUE(test::onSmallStack([&] { return isRead(groups); }, 512 * 1024));
}

TEST(ManySiblings, AreWalkedInLinearTime) {
    // Quadratic time would take minutes.
    constexpr int count = 300'000;
    std::string const document = "<a xmlns:p='q'>" + repeat(count, "<p:b/>x<!---->") + "</a>";
    DomIterator const root = DomIterator::parse(document);
    int forwards = 0;
    for (DomIterator child = root.childrenBegin(); !child.atEnd(); child.nextSibling())
        forwards += child.toXML() == "<p:b xmlns:p=\"q\"/>";
    EXPECT_EQ(forwards, count);
    int backwards = 0;
    DomIterator child = root.childrenEnd();
    for (child.previousSibling(); !child.atEnd(); child.previousSibling())
        ++backwards;
    EXPECT_EQ(backwards, count);
}

TEST(ManyNames, AreReadInLinearTime) {
    std::string attributes;
    std::string declarations;
    std::string elements;
    for (int i = 0; i < 20'000; ++i) {
        attributes += " a" + std::to_string(i) + "=''";
        declarations += " xmlns:p" + std::to_string(i) + "='q'";
        elements += "<p" + std::to_string(i) + ":b/>";
    }
    EXPECT_EQ(DomIterator::parse("<a" + attributes + "/>").attributes().size(), 20'000U);
    DomIterator const root = DomIterator::parse("<a" + declarations + ">" + elements + "</a>");
    String nameSpace;
    for (DomIterator child = root.childrenBegin(); !child.atEnd(); child.nextSibling()) {
        EXPECT_EQ(child.getName(nameSpace), "b");
        EXPECT_EQ(nameSpace, "q");
        EXPECT_LT(child.toXML().size(), 40U);
    }
}

TEST(Parsing, TakesMemoryInProportionToTheDocument) {
    for (std::string const& document :
         {"<a>" + repeat(50'000, "<b/>") + "</a>", "<a>" + repeat(50'000, "<b c=''/>") + "</a>",
          "<a>" + std::string(500'000, 'x') + "</a>", "<a>" + repeat(50'000, "&lt;") + "</a>"}) {
        EXPECT_LT(test::largestAllocation([&] { EXPECT_TRUE(isRead(document)); }),
                  40 * document.size());
    }
}

TEST(AllocationFailure, LeaksNothing) {
    std::string const text(100, 'x');
    for (std::string const& document :
         {"<a><b>" + text + "</b></a>", "<a c='" + text + "'><b>" + text + "</b></a>",
          "<a xmlns='" + text + "'><b>" + text + "</b></a>",
          "<!DOCTYPE a [<!ATTLIST a c CDATA '" + text + "'>]><a><b>" + text + "</b></a>",
          "<?xml version='1.0' encoding='ISO-8859-1'?><a><b>" + text + "</b></a>"}) {
        long const failures = test::failEachAllocation([&](test::FailingRun& run) {
            String const source = document;
            run.runsOutOfMemory([&] {
                DomIterator const root = DomIterator::parse(source);
                EXPECT_EQ(root.childrenBegin().getValue(), text);
                EXPECT_FALSE(DomIterator::parse(root.childrenBegin().toXML()).atEnd());
                EXPECT_FALSE(DomIterator::parse(source, "<!ELEMENT a ANY>").atEnd());
            });
        });
        EXPECT_GT(failures, 5) << document;
    }
}

TEST(DocumentType, CanBeRemoved) {
    struct {
        char const* document;
        char const* without;
    } const rows[] = {
        {"<a/>", "<a/>"},
        {"<!DOCTYPE a><a/>", "<a/>"},
        {"<?xml version='1.0'?>\n<!-- <!DOCTYPE b> --><!DOCTYPE a SYSTEM \"]>\" [<!-- ]> --> "
         "<!ENTITY b ']>'>] ><?c?><a>&b;</a>x",
         "<?xml version='1.0'?>\n<!-- <!DOCTYPE b> --><?c?><a>&b;</a>x"},
        {"<a><!DOCTYPE a></a>", "<a><!DOCTYPE a></a>"},
        {"<!DOCTYPE a>", ""},
        {"<!DOCTYPE a [><a/>", ""},
        {"text", ""},
        {"", ""},
    };
    for (auto const& row : rows)
        EXPECT_EQ(DomIterator::removeDoctype(row.document), row.without) << row.document;
}

TEST(DocumentType, CanBeAdded) {
    struct {
        char const* document;
        char const* with;
    } const rows[] = {
        {"<a/>", "<!DOCTYPE a [<!ELEMENT a ANY>]><a/>"},
        {"<?xml version='1.0'?>\n<p:a b='1'/>",
         "<?xml version='1.0'?>\n<!DOCTYPE p:a [<!ELEMENT a ANY>]><p:a b='1'/>"},
        {"<!-- c --><!DOCTYPE b SYSTEM 'd'> <a/>",
         "<!-- c --><!DOCTYPE a [<!ELEMENT a ANY>]> <a/>"},
        {"text", ""},
    };
    for (auto const& row : rows)
        EXPECT_EQ(DomIterator::addDTD(row.document, "<!ELEMENT a ANY>"), row.with) << row.document;
    EXPECT_EQ(DomIterator::addDTD("<!DOCTYPE a><a/>", ""), "<a/>");
}

TEST(DocumentType, CanBeGivenToParse) {
    char const* const dtd = "<!ATTLIST a b CDATA 'c'>";
    EXPECT_EQ(DomIterator::parse("<a/>", dtd).getAttribute("b"), "c");
    EXPECT_EQ(DomIterator::parse("<!DOCTYPE a SYSTEM 'd'><a b='e'/>", dtd).getAttribute("b"), "e");
    EXPECT_TRUE(DomIterator::parse("<a/>", "<!ATTLIST").atEnd());
    EXPECT_TRUE(DomIterator::parse("<a>", dtd).atEnd());
    EXPECT_TRUE(DomIterator::parse("", dtd).atEnd());
    EXPECT_EQ(
        DomIterator::parse("<!DOCTYPE a [<!ATTLIST a b CDATA 'f'>]><a/>", "").getAttribute("b"),
        "f")
        << "an empty doctype leaves the document's own";
}

} // namespace
