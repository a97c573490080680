// The DOM iterator's results for documents, in a program linked with zn::xml.

#include "xml/znxml_DomIterator.h"

#include "misc/zntl_String.h"
#include "support/print_string.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using zntl::String;
using znxml::DomIterator;

namespace {

using Names = std::vector<std::string>;
using Attributes = std::map<String, String>;

Names namesOfChildren(DomIterator const& element) {
    Names names;
    for (DomIterator child = element.childrenBegin(); !child.atEnd(); child.nextSibling())
        names.push_back(child.getName());
    return names;
}

Names namesOfChildrenBackwards(DomIterator const& element) {
    Names names;
    DomIterator child = element.childrenEnd();
    for (child.previousSibling(); !child.atEnd(); child.previousSibling())
        names.push_back(child.getName());
    return names;
}

/// Returns the namespace and the local name.
std::string resolvedName(DomIterator const& element) {
    String nameSpace("before");
    String const name = element.getName(nameSpace);
    return nameSpace + "|" + name;
}

TEST(Parse, PointsAtTheRootElement) {
    for (char const* const document :
         {"<a>text</a>", " \n<a>text</a>\n", "<?xml version='1.0'?><a>text</a>",
          "<!-- <b/> --><?b c?><a>text</a><!-- end --><?end?>", "\xEF\xBB\xBF<a>text</a>",
          "<!DOCTYPE a SYSTEM 'none.dtd' [<!ELEMENT a ANY>]><a>text</a>"}) {
        DomIterator const root = DomIterator::parse(document);
        EXPECT_FALSE(root.atEnd()) << document;
        EXPECT_EQ(root.getName(), "a") << document;
        EXPECT_EQ(root.getValue(), "text") << document;
    }
}

TEST(Parse, ReturnsAnIteratorAtItsEndForMalformedDocuments) {
    for (char const* const document : {"", " ", "text", "<a>", "<a></b>", "<a/><b/>", "<a/>text"})
        EXPECT_TRUE(DomIterator::parse(document).atEnd()) << document;
    EXPECT_TRUE(DomIterator::parse(static_cast<char const*>(nullptr)).atEnd());
}

TEST(Children, AreTheElementsInTheElement) {
    DomIterator const root =
        DomIterator::parse("<a>x<b><inner/></b><!--c--><?d?><b/>y<c z='1'>t</c></a>");
    EXPECT_TRUE(root.hasChildren());
    EXPECT_EQ(root.numChildren(), 3U);
    EXPECT_EQ(namesOfChildren(root), (Names{"b", "b", "c"}));
    EXPECT_EQ(namesOfChildrenBackwards(root), (Names{"c", "b", "b"}));
    EXPECT_EQ(namesOfChildren(root.childrenBegin()), (Names{"inner"}));
}

TEST(Children, OfAnElementWithoutAnyBeginAtTheEnd) {
    for (char const* const document : {"<a/>", "<a></a>", "<a>text</a>", "<a><!--b--></a>"}) {
        DomIterator const root = DomIterator::parse(document);
        EXPECT_FALSE(root.hasChildren()) << document;
        EXPECT_EQ(root.numChildren(), 0U) << document;
        EXPECT_TRUE(root.childrenBegin().atEnd()) << document;
        EXPECT_TRUE(root.childrenBegin().isEqual(root.childrenEnd())) << document;
        EXPECT_EQ(namesOfChildrenBackwards(root), Names{}) << document;
    }
}

TEST(Children, AreFoundAndCountedByName) {
    DomIterator const root =
        DomIterator::parse("<a><c><b>inner</b></c><b>first</b><p:b>p</p:b><b>second</b></a>");
    EXPECT_EQ(root.findChild("b").getValue(), "first");
    EXPECT_EQ(root.searchChild("b").getValue(), "first");
    EXPECT_EQ(root.findChild("p:b").getValue(), "p");
    EXPECT_EQ(root.numChildren("b"), 2U);
    EXPECT_EQ(root.numChildren("p:b"), 1U);
    for (char const* const name : {"d", "B", "", "inner", "a"}) {
        EXPECT_EQ(root.numChildren(name), 0U) << name;
        EXPECT_TRUE(root.findChild(name).atEnd()) << name;
        EXPECT_TRUE(root.searchChild(name).isEqual(root.childrenEnd())) << name;
    }
}

TEST(Siblings, BeginAndEndAtTheEnd) {
    DomIterator const root = DomIterator::parse("<a><b/><c/></a>");
    DomIterator child = root.childrenBegin();
    child.previousSibling();
    EXPECT_TRUE(child.atEnd());
    child.previousSibling();
    EXPECT_EQ(child.getName(), "c") << "from the end, previousSibling moves to the last child";
    child.nextSibling();
    EXPECT_TRUE(child.isEqual(root.childrenEnd()));
    child.nextSibling();
    EXPECT_TRUE(child.isEqual(root.childrenEnd())) << "nextSibling stays at the end";
}

TEST(Siblings, AreNotThoseOfTheRootElement) {
    DomIterator root = DomIterator::parse("<a><b/></a>");
    root.nextSibling();
    EXPECT_TRUE(root.atEnd());
    root.previousSibling();
    EXPECT_EQ(root.getName(), "a");
    root.previousSibling();
    EXPECT_TRUE(root.atEnd());
}

TEST(Value, IsTheTextOfTheElementItself) {
    struct {
        char const* document;
        char const* value;
    } const rows[] = {
        {"<a> b </a>", " b "},
        {"<a>b<c>inner</c>d<e/>f</a>", "bdf"},
        {"<a>&lt;&gt;&amp;&apos;&quot;</a>", "<>&'\""},
        {"<a>&#65;&#x42;&#xe9;&#x1F600;</a>", "AB\xC3\xA9\xF0\x9F\x98\x80"},
        {"<a>b<![CDATA[<c>&amp;]]]]>d</a>", "b<c>&amp;]]d"},
        {"<a>b<!--c-->d<?e f?>g</a>", "bdg"},
        {"<a>one\r\ntwo\rthree\nfour</a>", "one\ntwo\nthree\nfour"},
        {"<a>&#13;&#10;</a>", "\r\n"},
        {"<a>&amp;lt;</a>", "&lt;"},
        {"<a>\xC3\xA9</a>", "\xC3\xA9"},
        {"<a>></a>", ">"},
    };
    for (auto const& row : rows) {
        DomIterator const root = DomIterator::parse(row.document);
        EXPECT_TRUE(root.hasValue()) << row.document;
        EXPECT_EQ(root.getValue(), row.value) << row.document;
    }
    for (char const* const document :
         {"<a/>", "<a></a>", "<a><b>c</b></a>", "<a><![CDATA[]]></a>"}) {
        EXPECT_FALSE(DomIterator::parse(document).hasValue()) << document;
        EXPECT_EQ(DomIterator::parse(document).getValue(), "") << document;
    }
}

TEST(AttributesOfAnElement, AreFoundByTheirNames) {
    DomIterator const root =
        DomIterator::parse("<a b='1' c=\"&lt;&#10;'\" p:d='\t2\r\n' e=''><f b='inner'/></a>");
    EXPECT_TRUE(root.hasAttributes());
    EXPECT_EQ(root.attributes(),
              (Attributes{{"b", "1"}, {"c", "<\n'"}, {"p:d", " 2 "}, {"e", ""}}));
    EXPECT_EQ(root.getAttribute("c"), "<\n'");
    EXPECT_TRUE(root.hasAttribute("e"));
    EXPECT_EQ(root.getAttribute("e"), "");
    EXPECT_FALSE(root.hasAttribute("d"));
    EXPECT_EQ(root.getAttribute("d"), "");
    EXPECT_EQ(root.childrenBegin().getAttribute("b"), "inner");
}

TEST(AttributesOfAnElement, MayBeNone) {
    DomIterator const root = DomIterator::parse("<a><b c='1'/></a>");
    EXPECT_FALSE(root.hasAttributes());
    EXPECT_FALSE(root.hasAttribute("c"));
    EXPECT_EQ(root.attributes(), Attributes{});
}

TEST(AttributesOfAnElement, MayComeFromTheDocumentType) {
    DomIterator const root = DomIterator::parse(
        "<!DOCTYPE a [<!ATTLIST a b CDATA 'x\"&#10;' c CDATA #IMPLIED>]><a d='1'><a b='2'/></a>");
    EXPECT_EQ(root.attributes(), (Attributes{{"b", "x\"\n"}, {"d", "1"}}));
    EXPECT_EQ(root.childrenBegin().attributes(), (Attributes{{"b", "2"}}));
    EXPECT_EQ(root.toXML(), "<a b=\"x&quot;&#10;\" d='1'><a b='2'/></a>");
}

TEST(NameOfAnElement, HasANamespaceByItsPrefix) {
    DomIterator const root = DomIterator::parse(
        "<a xmlns='one' xmlns:p='two'><p:b/><c xmlns=''/><c/><p:d xmlns:p='three'/><p:e/>"
        "<q:f/><xml:g/><q:f xmlns:q='&lt;'/></a>");
    EXPECT_EQ(resolvedName(root), "one|a");
    Names names;
    for (DomIterator child = root.childrenBegin(); !child.atEnd(); child.nextSibling())
        names.push_back(resolvedName(child));
    EXPECT_EQ(names, (Names{"two|b", "|c", "one|c", "three|d", "two|e", "|q:f",
                            "http://www.w3.org/XML/1998/namespace|g", "<|f"}));
    EXPECT_EQ(root.childrenBegin().getName(), "p:b") << "with its prefix";
}

TEST(ToXml, IsTheTextOfTheElementItself) {
    char const* const document = "<?xml version='1.0'?><a ><b c='1'  d=\"2\">t&lt;<![CDATA[<]]>"
                                 "<!--x--></b>  <e/><f></f></a>";
    DomIterator const root = DomIterator::parse(document);
    EXPECT_EQ(root.toXML(), document + std::string("<?xml version='1.0'?>").size());
    DomIterator child = root.childrenBegin();
    EXPECT_EQ(child.toXML(), "<b c='1'  d=\"2\">t&lt;<![CDATA[<]]><!--x--></b>");
    child.nextSibling();
    EXPECT_EQ(child.toXML(), "<e/>");
    child.nextSibling();
    EXPECT_EQ(child.toXML(), "<f></f>");
}

TEST(ToXml, DeclaresTheNamespacesThatTheElementTakesFromOthers) {
    DomIterator const root = DomIterator::parse(
        "<a xmlns='one' xmlns:p='t&amp;w&quot;o' xmlns:q='three'>"
        "<p:b/><c p:x='1'><q:d/></c><e xmlns='' q:y='1'><f/></e><p:g xmlns:p='four'/></a>");
    Names texts;
    for (DomIterator child = root.childrenBegin(); !child.atEnd(); child.nextSibling()) {
        texts.push_back(child.toXML());
        DomIterator const alone = DomIterator::parse(child.toXML());
        EXPECT_EQ(resolvedName(alone), resolvedName(child));
    }
    EXPECT_EQ(
        texts,
        (Names{"<p:b xmlns:p=\"t&amp;w&quot;o\"/>",
               "<c xmlns=\"one\" xmlns:p=\"t&amp;w&quot;o\" xmlns:q=\"three\" p:x='1'><q:d/></c>",
               "<e xmlns:q=\"three\" xmlns='' q:y='1'><f/></e>", "<p:g xmlns:p='four'/>"}));
}

TEST(ToXml, ReturnsASeparateDocument) {
    DomIterator const child =
        DomIterator::parse("<a><b x='1'><c>t</c><d/></b><e/></a>").childrenBegin();
    for (DomIterator root :
         {DomIterator::parse(child.toXML()), DomIterator::parse("<b x='1'><c>t</c><d/></b>")}) {
        EXPECT_EQ(root.toXML(), child.toXML());
        EXPECT_EQ(namesOfChildren(root), (Names{"c", "d"}));
        EXPECT_EQ(namesOfChildrenBackwards(root), (Names{"d", "c"}));
        root.nextSibling();
        EXPECT_TRUE(root.atEnd()) << "the siblings in the original document are not reachable";
        root.previousSibling();
        EXPECT_EQ(root.getName(), "b");
        root.previousSibling();
        EXPECT_TRUE(root.atEnd());
    }
}

TEST(ToXml, IsNotMistakenForAnEarlierText) {
    DomIterator child = DomIterator::parse("<a><b>1</b><b>2</b></a>").childrenBegin();
    String const one = child.toXML();
    child.nextSibling();
    String const two = child.toXML();
    EXPECT_EQ(DomIterator::parse(one).getValue(), "1");
    EXPECT_EQ(DomIterator::parse(two).getValue(), "2");
    EXPECT_TRUE(DomIterator::parse("<b>2</b").atEnd());
}

TEST(Iterators, AreEqualOnTheSameElement) {
    DomIterator const root = DomIterator::parse("<a><b/><b/></a>");
    DomIterator first = root.childrenBegin();
    EXPECT_TRUE(first.isEqual(root.findChild("b")));
    EXPECT_TRUE(first.isEqual(DomIterator(first)));
    EXPECT_FALSE(first.isEqual(root));
    DomIterator second = first;
    second.nextSibling();
    EXPECT_FALSE(second.isEqual(first));
    EXPECT_FALSE(second.isEqual(root.childrenEnd()));
    second.previousSibling();
    EXPECT_TRUE(second.isEqual(first));
    EXPECT_FALSE(root.isEqual(DomIterator::parse("<a><b/><b/></a>"))) << "another document";
    EXPECT_TRUE(DomIterator().isEqual(DomIterator::parse(""))) << "both without a document";
    EXPECT_FALSE(DomIterator().isEqual(root.childrenEnd()));
}

TEST(Iterators, AreOrderedLikeTheDocument) {
    DomIterator const a = DomIterator::parse("<a><b><c/></b><d/></a>");
    DomIterator const b = a.childrenBegin();
    DomIterator const c = b.childrenBegin();
    DomIterator const d = a.findChild("d");
    DomIterator afterRoot = a;
    afterRoot.nextSibling();
    std::vector<DomIterator> const all{
        a, b, c, c.childrenEnd(), b.childrenEnd(), d, d.childrenEnd(), a.childrenEnd(), afterRoot};
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = 0; j < all.size(); ++j) {
            EXPECT_EQ(all[i] < all[j], i < j) << i << " " << j;
            EXPECT_EQ(all[i].isEqual(all[j]), i == j) << i << " " << j;
        }
    }
}

TEST(Iterators, OfDifferentDocumentsHaveSomeOrder) {
    DomIterator const one = DomIterator::parse("<a><b/></a>");
    DomIterator const other = DomIterator::parse("<a><b/></a>");
    EXPECT_NE(one < other, other < one);
    EXPECT_EQ(one < other, one.childrenBegin() < other)
        << "positions of one document stay together";
    EXPECT_EQ(one < other, one < other.childrenBegin());
    EXPECT_FALSE(DomIterator() < DomIterator());
    EXPECT_TRUE(DomIterator() < one);
    EXPECT_FALSE(one < DomIterator());
}

TEST(Iterators, KeepTheirDocument) {
    DomIterator child;
    {
        DomIterator const root = DomIterator::parse("<a><b>text</b><c/></a>");
        child = root.childrenBegin();
    }
    EXPECT_EQ(child.getValue(), "text");
    child.nextSibling();
    EXPECT_EQ(child.getName(), "c");
}

TEST(Iterators, AreCopiedAndAssigned) {
    DomIterator const root = DomIterator::parse("<a><b/></a>");
    DomIterator copy(root);
    EXPECT_TRUE(copy.isEqual(root));
    DomIterator assigned = DomIterator::parse("<other/>");
    EXPECT_EQ(&(assigned = copy), &assigned);
    EXPECT_TRUE(assigned.isEqual(root));
    DomIterator const& itself = assigned;
    assigned = itself;
    EXPECT_EQ(assigned.getName(), "a");
    assigned = DomIterator();
    EXPECT_TRUE(assigned.atEnd());
    EXPECT_EQ(copy.getName(), "a");
}

TEST(Iterators, OfOneDocumentServeManyThreads) {
    DomIterator const root = DomIterator::parse("<a><b>1</b><b>2</b><b>3</b></a>");
    std::vector<std::string> values(4);
    std::vector<std::thread> threads;
    for (std::string& value : values) {
        threads.emplace_back([&value, root] {
            for (int i = 0; i < 100; ++i) {
                value.clear();
                for (DomIterator child = root.childrenBegin(); !child.atEnd(); child.nextSibling())
                    value += DomIterator::parse(child.toXML()).getValue();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(values, std::vector<std::string>(4, "123"));
}

TEST(Iterators, OutliveTheThreadThatReadTheDocument) {
    auto child = std::make_unique<DomIterator>();
    std::thread([&child] {
        *child = DomIterator::parse("<a><b>1</b></a>").childrenBegin();
        EXPECT_EQ(DomIterator::parse(child->toXML()).getValue(), "1");
    }).join();
    EXPECT_EQ(child->getValue(), "1");
    std::thread([&child] { child.reset(); }).join();
}

/// Returns iterators at their end, from every operation that returns one.
std::vector<std::pair<char const*, DomIterator>> iteratorsAtTheirEnd() {
    DomIterator const root = DomIterator::parse("<a xmlns='n' b='1'>t<c/></a>");
    DomIterator afterRoot = root;
    afterRoot.nextSibling();
    DomIterator afterChildren = root.childrenBegin();
    afterChildren.nextSibling();
    return {{"default", DomIterator()},
            {"of a malformed document", DomIterator::parse("<a>")},
            {"after the root", afterRoot},
            {"after the children", afterChildren},
            {"the children's end", root.childrenEnd()},
            {"not found", root.findChild("d")}};
}

TEST(AtTheEnd, AllAnswersAreEmpty) {
    for (auto const& [origin, iterator] : iteratorsAtTheirEnd()) {
        SCOPED_TRACE(origin);
        EXPECT_TRUE(iterator.atEnd());
        EXPECT_TRUE(iterator.isEqual(iterator));
        EXPECT_FALSE(iterator < iterator);
        EXPECT_FALSE(iterator.hasChildren());
        EXPECT_EQ(iterator.numChildren(), 0U);
        EXPECT_EQ(iterator.numChildren("c"), 0U);
        EXPECT_FALSE(iterator.hasValue());
        EXPECT_EQ(iterator.getValue(), "");
        EXPECT_FALSE(iterator.hasAttributes());
        EXPECT_FALSE(iterator.hasAttribute("b"));
        EXPECT_EQ(iterator.getAttribute("b"), "");
        EXPECT_EQ(iterator.attributes(), Attributes{});
        EXPECT_EQ(iterator.getName(), "");
        EXPECT_EQ(resolvedName(iterator), "before|") << "the argument is unchanged";
        EXPECT_EQ(iterator.toXML(), "");
        for (DomIterator const& other : {iterator.childrenBegin(), iterator.childrenEnd(),
                                         iterator.findChild("c"), iterator.searchChild("c")}) {
            EXPECT_TRUE(other.isEqual(DomIterator()));
        }
    }
}

TEST(WithoutADocument, MovingHasNoEffect) {
    DomIterator iterator = DomIterator::parse("<a>");
    iterator.nextSibling();
    EXPECT_TRUE(iterator.isEqual(DomIterator()));
    iterator.previousSibling();
    EXPECT_TRUE(iterator.isEqual(DomIterator()));
}

TEST(XmlLayer, MayBeBracketedOrNot) {
    znxml::uninitialize();
    DomIterator const root = DomIterator::parse("<a/>");
    znxml::initialize();
    znxml::initialize();
    EXPECT_EQ(root.getName(), "a");
    znxml::uninitialize();
    EXPECT_EQ(root.getName(), "a");
    EXPECT_EQ(DomIterator::parse("<b/>").getName(), "b");
}

TEST(Tags, AreThoseOfAName) {
    EXPECT_EQ(znxml::open("a"), "<a>");
    EXPECT_EQ(znxml::close("a"), "</a>");
    for (char const* const name : {"", static_cast<char const*>(nullptr)}) {
        EXPECT_EQ(znxml::open(name), "");
        EXPECT_EQ(znxml::close(name), "");
    }
}

} // namespace
