#pragma once

#include "misc/zntl_String.h"

#include <map>

/// XML documents.
///
/// The library zn has no parser: every operation here has a fixed empty answer, which its
/// description names last, as "Without zn::xml". A program that is also linked with the library
/// zn::xml reads documents: the same header, nothing else to include. What that library takes for
/// well-formed, and what it refuses, is in docs/xml.md.
namespace znxml {

/// A cursor over a parsed XML document: it points at one element, moves to its children and
/// siblings, and reads names, values and attributes.
///
/// An iterator shares its document with its copies and with the iterators made from it, and keeps
/// the document alive. Copying takes constant time. Several threads may use iterators of one
/// document at once, but not one iterator.
///
/// An iterator that is past an element's children, that is default-constructed, or that comes from
/// a malformed document is at its end. There, questions are answered with false, 0 or an empty
/// string, iterators made from it are like default-constructed ones, and nothing is an error. The
/// operations throw nothing but std::bad_alloc.
///
/// Without zn::xml `atEnd()` is always false, so a caller asks `hasChildren()` before it walks
/// siblings, or it walks for ever.
class DomIterator {
public:
    /// An iterator at its end, without a document.
    DomIterator();
    /// An iterator at the same position. Without zn::xml carries nothing over.
    DomIterator(DomIterator const& other);
    /// Takes the other's position. Without zn::xml leaves the iterator as it was.
    DomIterator& operator=(DomIterator const& other);
    /// Releases the document if this was its last iterator.
    virtual ~DomIterator();

    /// Parses a document and returns an iterator on its root element; one at its end when the
    /// document is malformed. Takes time and memory in proportion to the document. Text that
    /// `toXML` has just returned on this thread is not parsed a second time; the new iterator then
    /// shares the document, but has no siblings. Without zn::xml: a default-constructed iterator.
    static DomIterator parse(zntl::String const& document);

    /// `parse(addDTD(document, doctype))`, so that the document's attributes have the defaults that
    /// `doctype` declares. The document is not validated: one that breaks the rules of `doctype` is
    /// read. With an empty `doctype`, `parse(document)`. Without zn::xml: a default-constructed
    /// iterator.
    static DomIterator parse(zntl::String const& document, zntl::String const& doctype);

    /// An iterator on the first child; at its end when the element has none. Children are elements:
    /// text, comments and processing instructions are none. Without zn::xml: a default-constructed
    /// iterator.
    DomIterator childrenBegin() const;
    /// An iterator past the last child. Without zn::xml: a default-constructed iterator.
    DomIterator childrenEnd() const;
    /// The same as `findChild`. Without zn::xml: a default-constructed iterator.
    DomIterator searchChild(zntl::String const& name) const;
    /// An iterator on the first child of that name, as `getName()` returns it; `childrenEnd()` when
    /// there is none. Takes time in proportion to the number of children. Without zn::xml: a
    /// default-constructed iterator.
    DomIterator findChild(zntl::String const& name) const;

    /// Whether the iterator is past the last sibling, or without a document. Without zn::xml:
    /// false.
    bool atEnd() const;
    /// Whether the element has children. Without zn::xml: false.
    bool hasChildren() const;
    /// The number of children, in constant time. Without zn::xml: 0.
    unsigned int numChildren() const;
    /// The number of children of that name, as `getName()` returns it. Without zn::xml: 0.
    unsigned int numChildren(zntl::String const& name) const;
    /// Whether both are at the same position of the same document, or both without a document. Two
    /// documents parsed from the same text are different documents. Without zn::xml: false.
    bool isEqual(DomIterator const& other) const;
    /// Whether this comes before the other in the document. An element comes before what is in it,
    /// and the end of its children after that. Positions in different documents have some order, in
    /// which those of one document stay together. Without zn::xml: false.
    bool operator<(DomIterator const& other) const;
    /// Whether `getValue()` is not empty. Without zn::xml: false.
    bool hasValue() const;
    /// Whether the element has attributes. Without zn::xml: false.
    bool hasAttributes() const;
    /// Whether the element has an attribute of that name, as it is written, prefix included.
    /// Without zn::xml: false.
    bool hasAttribute(zntl::String const& name) const;
    /// The attributes by name, namespace declarations included. Without zn::xml: none.
    std::map<zntl::String, zntl::String> attributes() const;
    /// The element's name as it is written, prefix included. Without zn::xml: empty.
    zntl::String getName() const;
    /// The element's name without its prefix; the URI of its namespace goes to the argument, which
    /// becomes empty when the element is in none. A prefix that nobody declared is part of the
    /// name. At the end, and without zn::xml: empty, and the argument is not touched.
    zntl::String getName(zntl::String& nameSpace) const;
    /// The element's own text, all pieces of it together, in UTF-8, with references decoded and
    /// CDATA sections included; the text of its children is not part of it. Without zn::xml: empty.
    zntl::String getValue() const;
    /// That attribute's value, in UTF-8; empty when there is none. Without zn::xml: empty.
    zntl::String getAttribute(zntl::String const& name) const;
    /// The element's XML text in UTF-8, as it is in the document, which can be parsed alone: it
    /// declares the namespaces that names in it take from elements around it, and has the
    /// attributes that the document type adds. Takes time in proportion to that text. Without
    /// zn::xml: empty.
    zntl::String toXML() const;

    /// Moves to the next sibling, or to the end when there is none; stays at the end. Takes
    /// constant time. Without zn::xml: no effect.
    void nextSibling();
    /// Moves to the previous sibling, or to the end when there is none; from the end to the last
    /// sibling. Takes constant time. Without a document, and without zn::xml: no effect.
    void previousSibling();

    /// The document without its document type declaration; otherwise as it is. Empty when it is not
    /// well-formed up to the start tag of its root element; what comes after that is not checked.
    /// Without zn::xml: empty.
    static zntl::String removeDoctype(zntl::String const& document);
    /// The document with a document type declaration for its root element that consists of the
    /// declarations in `dtd`, in place of any that it had; with none when `dtd` is empty. Empty
    /// when the document is not well-formed up to the start tag of its root element; neither `dtd`
    /// nor what comes after that is checked. Without zn::xml: empty.
    static zntl::String addDTD(zntl::String const& document, zntl::String const& dtd);

private:
    zntl::String text_;
};

/// Brackets the use of the XML layer with `uninitialize`; no effect, and may be left out or called
/// any number of times. The same without zn::xml.
void initialize();
/// See `initialize`.
void uninitialize();

/// The opening tag of an element: `open("a")` is "<a>". The name is not checked; empty for an empty
/// or null name. Without zn::xml: empty.
zntl::String open(char const* name);
/// The closing tag of an element: `close("a")` is "</a>". The name is not checked; empty for an
/// empty or null name. Without zn::xml: empty.
zntl::String close(char const* name);

} // namespace znxml
