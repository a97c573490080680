// Compares the XML reader with Expat: both accept the same documents, and a walk over the elements
// finds everything that Expat reports. Input: a document.

#include "fuzz.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Set.h"
#include "xml/znxml_DomIterator.h"

#include <expat.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

using fuzz::require;
using zntl::String;
using znxml::DomIterator;

namespace {

/// The content of a document: start tags with their attributes, end tags, and each element's own
/// text.
struct Events {
    std::string tags;
    std::vector<std::string> values; // in the order of the end tags
    std::vector<std::string> open;
    bool hasDoctype = false;
    bool isWellFormed = false;
};

Events eventsOf(std::string const& document) {
    Events events;
    XML_Parser const parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &events);
    XML_SetElementHandler(
        parser,
        [](void* data, char const* name, char const** attributes) {
            auto& all = *static_cast<Events*>(data);
            all.tags.append("<").append(name);
            all.open.emplace_back();
            // Sorted, because an iterator returns the attributes sorted.
            std::map<std::string, std::string> sorted;
            for (; *attributes; attributes += 2)
                sorted.emplace(attributes[0], attributes[1]);
            for (auto const& [attribute, value] : sorted)
                all.tags.append(" ").append(attribute).append("=").append(value);
            all.tags += '>';
        },
        [](void* data, char const* name) {
            auto& all = *static_cast<Events*>(data);
            all.tags.append("</").append(name).append(">");
            all.values.push_back(std::move(all.open.back()));
            all.open.pop_back();
        });
    XML_SetCharacterDataHandler(parser, [](void* data, char const* text, int length) {
        static_cast<Events*>(data)->open.back().append(text, static_cast<std::size_t>(length));
    });
    XML_SetStartDoctypeDeclHandler(parser,
                                   [](void* data, char const*, char const*, char const*, int) {
                                       static_cast<Events*>(data)->hasDoctype = true;
                                   });
    events.isWellFormed = XML_Parse(parser, document.data(), static_cast<int>(document.size()),
                                    XML_TRUE) == XML_STATUS_OK;
    XML_ParserFree(parser);
    return events;
}

/// Collects the same content with iterators. The recursion is safe, because inputs are short.
void walk(DomIterator const& element, Events& events) {
    events.tags.append("<").append(element.getName());
    for (auto const& [name, value] : element.attributes()) {
        events.tags.append(" ").append(name).append("=").append(value);
        require(element.hasAttribute(name) && element.getAttribute(name) == value, "an attribute");
    }
    events.tags += '>';
    unsigned int count = 0;
    for (DomIterator child = element.childrenBegin(); !child.atEnd(); child.nextSibling()) {
        walk(child, events);
        ++count;
    }
    require(count == element.numChildren(), "the number of children");
    for (DomIterator child = element.childrenEnd(); count != 0; --count) {
        child.previousSibling();
        require(!child.atEnd() && element < child, "a child on the way back");
    }
    events.tags.append("</").append(element.getName()).append(">");
    events.values.push_back(element.getValue());
}

Events walked(DomIterator const& root) {
    Events events;
    walk(root, events);
    return events;
}

/// Requires that `toXML` of every element returns a document with the same name and values.
void requireTextsAlone(DomIterator const& element) {
    String const text = element.toXML();
    DomIterator const alone = DomIterator::parse(String(text + "\n"));
    require(!alone.atEnd(), "an element's text is a document");
    String one;
    String other;
    require(alone.getName(one) == element.getName(other) && one == other, "its name and namespace");
    require(walked(alone).values == walked(element).values, "its values");
    require(walked(DomIterator::parse(text)).tags == walked(alone).tags, "parsed again or not");
    for (DomIterator child = element.childrenBegin(); !child.atEnd(); child.nextSibling())
        requireTextsAlone(child);
}

} // namespace

void fuzz::run(Input& input) {
    String const document = input.takeRest();
    Events const expected = eventsOf(document);
    DomIterator const root = DomIterator::parse(document);

    require(root.atEnd() || expected.isWellFormed, "a malformed document is rejected");
    // A document with a document type may be rejected: it can declare entities, which may not be
    // used.
    require(!root.atEnd() || !expected.isWellFormed || expected.hasDoctype,
            "a well-formed document is accepted");
    if (!root.atEnd()) {
        Events const found = walked(root);
        require(found.tags == expected.tags, "elements and attributes");
        require(found.values == expected.values, "values");
        requireTextsAlone(root);
    }

    znsl::Set<String> texts;
    require(texts.fromXML(document.c_str()) == DomIterator::parse(document.c_str()).hasChildren(),
            "a set is read from children");
    DomIterator::removeDoctype(document);
    require(root.atEnd() || !DomIterator::parse(document, "<!ELEMENT a ANY>").atEnd() ||
                expected.hasDoctype,
            "a document type can be added");
}
