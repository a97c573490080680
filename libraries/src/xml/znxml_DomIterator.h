#pragma once

#include "misc/zntl_String.h"

#include <map>

namespace znxml {

/// A cursor over a parsed XML document: it points at one element, moves to children and siblings,
/// and reads names, values and attributes.
///
/// THIS IS THE NULL BACKEND: no parser stands behind the interface, and every operation gives the
/// empty answer that it is documented with. A real backend can fill the same interface without
/// a change to its callers. Because `atEnd()` is always false, a caller must ask `hasChildren()`
/// before it walks siblings, or it walks for ever.
class DomIterator {
public:
    DomIterator();
    /// Carries nothing over.
    DomIterator(DomIterator const& other);
    /// Leaves the iterator as it was.
    DomIterator& operator=(DomIterator const& other);
    virtual ~DomIterator();

    /// Parses a document and returns an iterator on its root element.
    static DomIterator parse(zntl::String const& document);
    /// Parses a document together with a document type to check it against.
    static DomIterator parse(zntl::String const& document, zntl::String const& doctype);

    /// An iterator on the first child.
    DomIterator childrenBegin() const;
    /// An iterator past the last child.
    DomIterator childrenEnd() const;
    /// An iterator on a child found by name.
    DomIterator searchChild(zntl::String const& name) const;
    /// An iterator on a child found by name.
    DomIterator findChild(zntl::String const& name) const;

    /// Whether the iterator is past the last sibling: false.
    bool atEnd() const;
    /// Whether the element has children: false.
    bool hasChildren() const;
    /// The number of children: 0.
    unsigned int numChildren() const;
    /// The number of children of that name: 0.
    unsigned int numChildren(zntl::String const& name) const;
    /// Whether both point at the same element: false.
    bool isEqual(DomIterator const& other) const;
    /// Whether this comes before the other in the document: false.
    bool operator<(DomIterator const& other) const;
    /// Whether the element has a value: false.
    bool hasValue() const;
    /// Whether the element has attributes: false.
    bool hasAttributes() const;
    /// Whether the element has that attribute: false.
    bool hasAttribute(zntl::String const& name) const;
    /// The attributes by name: none.
    std::map<zntl::String, zntl::String> attributes() const;
    /// The element's name: empty.
    zntl::String getName() const;
    /// The element's name without its namespace, which goes to the argument: empty, and the
    /// argument is not touched.
    zntl::String getName(zntl::String& nameSpace) const;
    /// The element's value: empty.
    zntl::String getValue() const;
    /// That attribute's value: empty.
    zntl::String getAttribute(zntl::String const& name) const;
    /// The element's own XML text: empty.
    zntl::String toXML() const;

    /// Moves to the next sibling: no effect.
    void nextSibling();
    /// Moves to the previous sibling: no effect.
    void previousSibling();

    /// A document without its document type: empty.
    static zntl::String removeDoctype(zntl::String const& document);
    /// A document with a document type added: empty.
    static zntl::String addDTD(zntl::String const& document, zntl::String const& dtd);

private:
    zntl::String text_;
};

/// Brackets the use of the XML layer with `uninitialize`; no effect, and may be left out or called
/// any number of times.
void initialize();
/// See `initialize`.
void uninitialize();

/// The opening tag of an element: empty.
zntl::String open(char const* name);
/// The closing tag of an element: empty.
zntl::String close(char const* name);

} // namespace znxml
