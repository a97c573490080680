#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace znxml {

/// Counts, offsets and indexes in a document.
using Index = std::uint32_t;

/// The maximum size of a document in bytes. Expat takes lengths as int.
constexpr std::size_t maxDocumentSize = 0x7FFFFFFF;

// Values of `nameSpace` that are no index of a declaration. The prefix "xml" needs no declaration.
constexpr Index noNamespace = 0xFFFFFFFF;
constexpr Index namespaceOfXml = 0xFFFFFFFE;

struct Span {
    Index begin = 0;
    Index length = 0;
};

/// Elements refer to each other by index. Element 0 is the document itself. It is never a child or
/// a sibling, so 0 also means "none".
struct Element {
    Span xml; ///< in `Document::text`
    Index nameLength = 0;
    Span value; ///< in `Document::allCharacters`
    Index parent = 0;
    Index previous = 0;
    Index next = 0;
    Index lastChild = 0;
    Index children = 0;
    Index end = 0;            ///< the index after its last descendant
    Index firstAttribute = 0; ///< its attributes end where the next element's begin
    Index nameSpace = noNamespace;
};

struct Attribute {
    Span name;
    Span value;
    Index nameSpace = noNamespace;
};

/// A declaration of a namespace. Names refer to it by its index.
struct NamespaceDeclaration {
    Span prefix;
    Span uri;
    Index element = 0;            ///< the element that has the declaration
    Index shadowed = noNamespace; ///< the outer declaration of the same prefix that it hides
};

/// A parsed document: its text in UTF-8, and its elements in document order. It never changes after
/// it is built. No operation recurses, so deep nesting needs no stack.
class Document {
public:
    Document() : elements(1) {}

    std::string_view characters(Span span) const;
    std::string_view name(Index element) const;
    /// The name without its prefix; the whole name if the element is in no namespace.
    std::string_view localName(Index element) const;
    std::string_view nameSpace(Index element) const;
    std::string_view value(Index element) const { return characters(elements[element].value); }

    /// The element's text, with added declarations of the namespaces that it uses but that outer
    /// elements declare.
    std::string xml(Index element) const;

    /// Whether the element's text, parsed alone, has the same meaning as in this document: no
    /// document type and no outer namespace declaration affects it.
    bool standsAlone(Index element) const {
        return !hasDoctype && (declarations.empty() || outerDeclarations(element).empty());
    }

    /// The index after the element's last attribute.
    Index endOfAttributes(Index element) const;
    /// The index of the element's attribute `name`; `endOfAttributes` if it has none.
    Index findAttribute(Index element, std::string_view name) const;
    /// The index of the first child; 0 if there is none.
    Index firstChild(Index element) const {
        return elements[element].children != 0 ? element + 1 : 0;
    }
    /// The index of the first child called `name`; 0 if there is none.
    Index findChild(Index element, std::string_view name) const;

    std::string text;
    std::string allCharacters; ///< the decoded values, and the names and values of attributes
    std::vector<Element> elements;
    std::vector<Attribute> attributes;
    std::vector<NamespaceDeclaration> declarations;
    bool hasDoctype = false;
    /// The number of iterators and threads that keep the document alive.
    mutable std::atomic<unsigned int> owners{0};

private:
    std::vector<Index> outerDeclarations(Index element) const;
};

} // namespace znxml
