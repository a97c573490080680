// The DOM iterator without a parser: every operation has a fixed result.

#include "xml/znxml_DomIterator.h"

#include "misc/zntl_String.h"
#include "support/print_string.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

using zntl::String;
using znxml::DomIterator;

static_assert(std::is_polymorphic_v<DomIterator>);
static_assert(std::has_virtual_destructor_v<DomIterator>);
static_assert(sizeof(DomIterator) == sizeof(void*) + sizeof(String), "no base and one text");

namespace {

char const* const document = "<!DOCTYPE a><a b='c'>text<d/><d/></a>";

/// Returns iterators from every operation that returns one.
std::vector<std::pair<char const*, DomIterator>> iteratorsOfEveryOrigin() {
    DomIterator const root = DomIterator::parse(document);
    DomIterator assigned;
    assigned = root;
    std::vector<std::pair<char const*, DomIterator>> iterators;
    iterators.emplace_back("default", DomIterator());
    iterators.emplace_back("parsed", root);
    iterators.emplace_back("parsed from nothing", DomIterator::parse(""));
    iterators.emplace_back("parsed from null", DomIterator::parse(nullptr));
    iterators.emplace_back("parsed with a document type", DomIterator::parse(document, "dtd"));
    iterators.emplace_back("first child", root.childrenBegin());
    iterators.emplace_back("past the last child", root.childrenEnd());
    iterators.emplace_back("searched child", root.searchChild("d"));
    iterators.emplace_back("found child", root.findChild("d"));
    iterators.emplace_back("copied", DomIterator(root));
    iterators.emplace_back("assigned", assigned);
    return iterators;
}

void expectEmptyAnswers(DomIterator const& iterator) {
    EXPECT_FALSE(iterator.atEnd()) << "never at its end";
    EXPECT_FALSE(iterator.hasChildren());
    EXPECT_EQ(iterator.numChildren(), 0U);
    EXPECT_EQ(iterator.numChildren("d"), 0U);
    EXPECT_FALSE(iterator.isEqual(DomIterator()));
    EXPECT_FALSE(iterator.isEqual(iterator)) << "not even to itself";
    EXPECT_FALSE(iterator < DomIterator());
    EXPECT_FALSE(DomIterator() < iterator);
    EXPECT_FALSE(iterator.hasValue());
    EXPECT_FALSE(iterator.hasAttributes());
    EXPECT_FALSE(iterator.hasAttribute("b"));
    EXPECT_TRUE(iterator.attributes().empty());
    EXPECT_EQ(iterator.getName(), "");
    EXPECT_EQ(iterator.getValue(), "");
    EXPECT_EQ(iterator.getAttribute("b"), "");
    EXPECT_EQ(iterator.toXML(), "");

    String nameSpace("untouched");
    EXPECT_EQ(iterator.getName(nameSpace), "");
    EXPECT_EQ(nameSpace, "untouched");
}

TEST(DomIterator, ReturnsTheEmptyAnswersWhereverItComesFrom) {
    for (auto const& [origin, iterator] : iteratorsOfEveryOrigin()) {
        SCOPED_TRACE(origin);
        expectEmptyAnswers(iterator);
    }
}

TEST(DomIterator, DoesNotMove) {
    DomIterator iterator = DomIterator::parse(document).childrenBegin();
    for (int i = 0; i < 3; ++i) {
        iterator.nextSibling();
        expectEmptyAnswers(iterator);
    }
    iterator.previousSibling();
    expectEmptyAnswers(iterator);
}

TEST(DomIterator, AssignmentReturnsTheTarget) {
    DomIterator iterator;
    DomIterator const other = DomIterator::parse(document);
    EXPECT_EQ(&(iterator = other), &iterator);
    DomIterator const& same = iterator;
    EXPECT_EQ(&(iterator = same), &iterator);
    expectEmptyAnswers(iterator);
}

/// Returns the private string of an iterator, which no operation sets or returns.
String& textOf(DomIterator& iterator) {
    return *reinterpret_cast<String*>(reinterpret_cast<unsigned char*>(&iterator) + sizeof(void*));
}

TEST(DomIterator, CopyingAndAssigningCarryNoTextOver) {
    DomIterator source;
    textOf(source) = "source";
    DomIterator copy(source);
    EXPECT_EQ(textOf(copy), "");
    DomIterator target;
    textOf(target) = "target";
    target = source;
    EXPECT_EQ(textOf(target), "target") << "assignment does not change the target";
    EXPECT_EQ(textOf(source), "source");
}

TEST(DomIterator, ChangesNoDocument) {
    EXPECT_EQ(DomIterator::removeDoctype(document), "");
    EXPECT_EQ(DomIterator::addDTD(document, "dtd"), "");
}

TEST(DomIterator, IsDestroyedThroughItsBase) {
    struct Subclass : DomIterator {
        explicit Subclass(bool& flag) : destroyed(flag) {}
        ~Subclass() override { destroyed = true; }
        bool& destroyed;
    };
    bool destroyed = false;
    std::unique_ptr<DomIterator>(std::make_unique<Subclass>(destroyed)).reset();
    EXPECT_TRUE(destroyed);
}

TEST(DomIterator, ItsTypesAreThoseOfARealParser) {
    static_assert(std::is_same_v<decltype(std::declval<DomIterator const&>().attributes()),
                                 std::map<String, String>>);
    static_assert(std::is_same_v<decltype(DomIterator::parse("")), DomIterator>);
    static_assert(std::is_same_v<decltype(DomIterator().numChildren()), unsigned int>);
    static_assert(std::is_same_v<decltype(DomIterator().nextSibling()), void>);
    static_assert(std::is_same_v<decltype(DomIterator().previousSibling()), void>);
}

TEST(XmlLayer, CanBeBracketedAnyNumberOfTimes) {
    znxml::uninitialize();
    znxml::initialize();
    znxml::initialize();
    expectEmptyAnswers(DomIterator::parse(document));
    znxml::uninitialize();
    znxml::uninitialize();
    expectEmptyAnswers(DomIterator::parse(document));
}

TEST(XmlLayer, HasEmptyTags) {
    for (char const* const name : {"a", "", static_cast<char const*>(nullptr)}) {
        EXPECT_EQ(znxml::open(name), "");
        EXPECT_EQ(znxml::close(name), "");
    }
}

} // namespace
