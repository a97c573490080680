#pragma once

#include "misc/zntl_String.h"

#include <map>

/// XML documents.
///
/// The library zn has no parser, so every operation returns a fixed empty result. Each comment
/// states it after "Without zn::xml". A program that also links the library zn::xml reads documents
/// through this same header. docs/xml.md describes which documents zn::xml accepts.
namespace znxml {

/// A cursor over a parsed XML document: it points at one element, moves to its children and
/// siblings, and reads names, values and attributes.
///
/// An iterator keeps its document alive and shares it with its copies and with the iterators that
/// it returns. Copying takes constant time. Several threads may use different iterators of one
/// document at the same time, but each iterator belongs to one thread.
///
/// An iterator is at its end if it is past an element's children, default-constructed, or the
/// result of parsing a malformed document. At the end no operation fails: queries return false, 0
/// or an empty string, and new iterators are like default-constructed ones. The only exception ever
/// thrown is std::bad_alloc.
///
/// Without zn::xml, `atEnd()` is always false. Call `hasChildren()` before a loop over siblings, or
/// the loop never ends.
class DomIterator {
public:
    /// Makes an iterator at its end, without a document.
    DomIterator();
    /// Copies the other's position. Without zn::xml: copies nothing.
    DomIterator(DomIterator const& other);
    /// Copies the other's position. Without zn::xml: no effect.
    DomIterator& operator=(DomIterator const& other);
    /// Releases the document if this was its last iterator. A document that another thread's last
    /// `toXML` came from stays until that thread ends or calls `toXML` on another one.
    virtual ~DomIterator();

    /// Parses a document and returns an iterator on its root element, or one at its end if the
    /// document is malformed. Takes time and memory in proportion to the document, except that text
    /// which this thread's last `toXML` returned is usually not read again: the iterator then
    /// shares the earlier document. Without zn::xml: a default-constructed iterator.
    static DomIterator parse(zntl::String const& document);

    /// Returns `parse(addDTD(document, doctype))`, so attributes have the defaults that `doctype`
    /// declares; `parse(document)` if `doctype` is empty. Does not validate: a document that breaks
    /// the rules of `doctype` is accepted. Without zn::xml: a default-constructed iterator.
    static DomIterator parse(zntl::String const& document, zntl::String const& doctype);

    /// Returns an iterator on the first child, or at its end if the element has no children. Only
    /// elements are children; text, comments and processing instructions are not. Without zn::xml:
    /// a default-constructed iterator.
    DomIterator childrenBegin() const;
    /// Returns an iterator past the last child. Without zn::xml: a default-constructed iterator.
    DomIterator childrenEnd() const;
    /// The same as `findChild`. Without zn::xml: a default-constructed iterator.
    DomIterator searchChild(zntl::String const& name) const;
    /// Returns an iterator on the first child whose `getName()` is `name`; `childrenEnd()` if there
    /// is none. Takes time in proportion to the number of children. Without zn::xml: a
    /// default-constructed iterator.
    DomIterator findChild(zntl::String const& name) const;

    /// Whether the iterator is past the last sibling or has no document. Without zn::xml: false.
    bool atEnd() const;
    /// Whether the element has children. Without zn::xml: false.
    bool hasChildren() const;
    /// The number of children, in constant time. Without zn::xml: 0.
    unsigned int numChildren() const;
    /// The number of children whose `getName()` is `name`. Without zn::xml: 0.
    unsigned int numChildren(zntl::String const& name) const;
    /// Whether both are at the same position of the same document, or both have no document. Two
    /// documents parsed from the same text are different documents, unless `parse` shared an
    /// earlier one. Without zn::xml: false.
    bool isEqual(DomIterator const& other) const;
    /// Whether this position comes before the other's in the document. An element comes before its
    /// descendants, and the position past its children comes after them. The order of different
    /// documents is unspecified, but the positions of one document sort next to each other. Without
    /// zn::xml: false.
    bool operator<(DomIterator const& other) const;
    /// Whether `getValue()` is not empty. Without zn::xml: false.
    bool hasValue() const;
    /// Whether the element has attributes. Without zn::xml: false.
    bool hasAttributes() const;
    /// Whether the element has an attribute called `name`, including the prefix. Without zn::xml:
    /// false.
    bool hasAttribute(zntl::String const& name) const;
    /// The values of the attributes by name, including namespace declarations. Without zn::xml: an
    /// empty map.
    std::map<zntl::String, zntl::String> attributes() const;
    /// The element's name, including the prefix. Without zn::xml: empty.
    zntl::String getName() const;
    /// Returns the element's name without its prefix. Sets `nameSpace` to the URI of its namespace,
    /// or to the empty string if it is in none. A prefix that is not declared stays in the name.
    /// At the end, and without zn::xml: returns the empty string and does not change `nameSpace`.
    zntl::String getName(zntl::String& nameSpace) const;
    /// The element's text in UTF-8, with references decoded. Joins the pieces between its children
    /// and its CDATA sections, but leaves out the text of its children. Without zn::xml: empty.
    zntl::String getValue() const;
    /// The value of the attribute `name`, in UTF-8; empty if there is none. Without zn::xml: empty.
    zntl::String getAttribute(zntl::String const& name) const;
    /// The element's XML text in UTF-8, as the document contains it, with additions that make it
    /// complete on its own: declarations of the namespaces that it uses but that outer elements
    /// declare, and default attributes from the document type. The types of attributes are not
    /// added, so blanks that they removed from values appear again. Takes time in proportion to
    /// that text. Without zn::xml: empty.
    zntl::String toXML() const;

    /// Moves to the next sibling, or to the end if there is none; stays at the end. Takes
    /// constant time. Without zn::xml: no effect.
    void nextSibling();
    /// Moves to the previous sibling, or to the end if there is none; from the end, moves to the
    /// last sibling. Takes constant time. Without a document, and without zn::xml: no effect.
    void previousSibling();

    /// Returns the document without its document type declaration, otherwise unchanged. Returns the
    /// empty string if the document is malformed before the end of the root element's start tag;
    /// the rest is not checked. Without zn::xml: empty.
    static zntl::String removeDoctype(zntl::String const& document);
    /// Returns the document with a document type declaration that contains the declarations in
    /// `dtd`. It replaces an existing one, or removes it if `dtd` is empty. Returns the empty
    /// string if the document is malformed before the end of the root element's start tag; neither
    /// the rest nor `dtd` is checked. Without zn::xml: empty.
    static zntl::String addDTD(zntl::String const& document, zntl::String const& dtd);

private:
    zntl::String text_; // zn::xml keeps the position in it
};

/// A no-op, with and without zn::xml. A program may call it before it uses XML, any number of
/// times.
void initialize();
/// A no-op, with and without zn::xml. A program may call it after it used XML, any number of times.
void uninitialize();

/// Returns the opening tag of an element: `open("a")` returns "<a>". Does not check the name. The
/// result is empty for an empty or null name. Without zn::xml: empty.
zntl::String open(char const* name);
/// Returns the closing tag of an element: `close("a")` returns "</a>". Does not check the name. The
/// result is empty for an empty or null name. Without zn::xml: empty.
zntl::String close(char const* name);

} // namespace znxml
