#include "xml/znxml_DomIterator.h"

#include "znxml_Document.h"
#include "znxml_Position.h"
#include "znxml_doctype.h"
#include "znxml_readers.h"

#include <functional>
#include <utility>

// The link flags of zn::xml refer to this symbol (`-u zn_xml_is_linked`). Without that reference a
// linker would drop this file if only the library zn uses the operations below.
extern "C" {
extern char const zn_xml_is_linked;
char const zn_xml_is_linked = 1;
}

namespace znxml {

namespace {

/// A sort key for positions in one document. The position after an element's children sorts after
/// everything inside the element, and the one of an inner element before that of an outer one.
std::pair<Index, Index> orderOf(Position const& position) {
    constexpr Index laterThanEnds = 0xFFFFFFFF;
    if (!position.atEnd() || !position.document)
        return {position.element, laterThanEnds};
    Index const isAfterRoot = position.kind == Position::afterRoot ? 1 : 0;
    return {(*position).end, laterThanEnds - 2 - 2 * position.element + isAfterRoot};
}

} // namespace

DomIterator::DomIterator() = default;

DomIterator::DomIterator(DomIterator const& other) { store(text_, load(other.text_)); }

DomIterator& DomIterator::operator=(DomIterator const& other) {
    store(text_, load(other.text_));
    return *this;
}

DomIterator::~DomIterator() {
    if (Document const* const document = load(text_).document)
        disown(*document);
}

DomIterator DomIterator::parse(zntl::String const& document) {
    DomIterator root;
    store(root.text_, recall(document));
    if (!root.text_.empty())
        return root;
    if (auto read = readDocument(document)) {
        store(root.text_, {read.get(), read->firstChild(0), Position::onRoot});
        static_cast<void>(read.release()); // from here on, its iterators own it
    }
    return root;
}

DomIterator DomIterator::parse(zntl::String const& document, zntl::String const& doctype) {
    return doctype.empty() ? parse(document) : parse(addDTD(document, doctype));
}

DomIterator DomIterator::childrenBegin() const {
    DomIterator child;
    Position const at = load(text_);
    if (!at.atEnd())
        store(child.text_, at.childOrEnd(at.document->firstChild(at.element)));
    return child;
}

DomIterator DomIterator::childrenEnd() const {
    DomIterator end;
    Position const at = load(text_);
    if (!at.atEnd())
        store(end.text_, at.childOrEnd(0));
    return end;
}

DomIterator DomIterator::searchChild(zntl::String const& name) const { return findChild(name); }

DomIterator DomIterator::findChild(zntl::String const& name) const {
    DomIterator child;
    Position const at = load(text_);
    if (!at.atEnd())
        store(child.text_, at.childOrEnd(at.document->findChild(at.element, name)));
    return child;
}

bool DomIterator::atEnd() const { return load(text_).atEnd(); }

bool DomIterator::hasChildren() const { return numChildren() != 0; }

unsigned int DomIterator::numChildren() const {
    Position const at = load(text_);
    return at.atEnd() ? 0 : (*at).children;
}

unsigned int DomIterator::numChildren(zntl::String const& name) const {
    unsigned int count = 0;
    Position const at = load(text_);
    if (at.atEnd())
        return count;
    Document const& document = *at.document;
    for (Index i = document.firstChild(at.element); i != 0; i = document.elements[i].next)
        count += document.name(i) == name;
    return count;
}

bool DomIterator::isEqual(DomIterator const& other) const { return text_ == other.text_; }

bool DomIterator::operator<(DomIterator const& other) const {
    Position const left = load(text_);
    Position const right = load(other.text_);
    if (left.document != right.document)
        return std::less<>()(left.document, right.document);
    return orderOf(left) < orderOf(right);
}

bool DomIterator::hasValue() const {
    Position const at = load(text_);
    return !at.atEnd() && (*at).value.length != 0;
}

bool DomIterator::hasAttributes() const {
    Position const at = load(text_);
    return !at.atEnd() && (*at).firstAttribute != at.document->endOfAttributes(at.element);
}

bool DomIterator::hasAttribute(zntl::String const& name) const {
    Position const at = load(text_);
    return !at.atEnd() &&
           at.document->findAttribute(at.element, name) != at.document->endOfAttributes(at.element);
}

std::map<zntl::String, zntl::String> DomIterator::attributes() const {
    std::map<zntl::String, zntl::String> all;
    Position const at = load(text_);
    if (at.atEnd())
        return all;
    Document const& document = *at.document;
    for (Index i = (*at).firstAttribute; i != document.endOfAttributes(at.element); ++i) {
        Attribute const& attribute = document.attributes[i];
        all.emplace(std::string(document.characters(attribute.name)),
                    std::string(document.characters(attribute.value)));
    }
    return all;
}

zntl::String DomIterator::getName() const {
    Position const at = load(text_);
    return std::string(at.atEnd() ? "" : at.document->name(at.element));
}

zntl::String DomIterator::getName(zntl::String& nameSpace) const {
    Position const at = load(text_);
    if (at.atEnd())
        return {};
    nameSpace = std::string(at.document->nameSpace(at.element));
    return std::string(at.document->localName(at.element));
}

zntl::String DomIterator::getValue() const {
    Position const at = load(text_);
    return std::string(at.atEnd() ? "" : at.document->value(at.element));
}

zntl::String DomIterator::getAttribute(zntl::String const& name) const {
    Position const at = load(text_);
    if (at.atEnd())
        return {};
    Index const attribute = at.document->findAttribute(at.element, name);
    bool const isFound = attribute != at.document->endOfAttributes(at.element);
    return std::string(isFound ? at.document->characters(at.document->attributes[attribute].value)
                               : std::string_view());
}

zntl::String DomIterator::toXML() const {
    Position const at = load(text_);
    if (at.atEnd())
        return {};
    if (at.document->standsAlone(at.element))
        remember(*at.document, at.element);
    return at.document->xml(at.element);
}

void DomIterator::nextSibling() {
    Position const at = load(text_);
    if (!at.atEnd())
        store(text_, at.siblingOrEnd((*at).next));
}

void DomIterator::previousSibling() {
    Position const at = load(text_);
    if (!at.document)
        return;
    if (at.kind == Position::afterRoot)
        store(text_, {at.document, at.element, Position::onRoot});
    else if (at.kind == Position::afterChildren)
        store(text_, at.childOrEnd((*at).lastChild));
    else
        store(text_, at.siblingOrEnd((*at).previous));
}

zntl::String DomIterator::removeDoctype(zntl::String const& document) {
    return replaceDoctype(document, "");
}

zntl::String DomIterator::addDTD(zntl::String const& document, zntl::String const& dtd) {
    return replaceDoctype(document, dtd);
}

void initialize() {}

void uninitialize() {}

zntl::String open(char const* name) {
    return name && *name ? zntl::String("<" + std::string(name) + ">") : zntl::String();
}

zntl::String close(char const* name) {
    return name && *name ? zntl::String("</" + std::string(name) + ">") : zntl::String();
}

} // namespace znxml
