#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace znxml {

/// Counts and positions in a document.
using Index = std::uint32_t;

/// The size of the longest document, so that an index has a bit to spare.
constexpr std::size_t maxDocumentSize = 0x7FFFFFFF;

// Names that refer to no declaration: those in no namespace, and those with the prefix "xml".
constexpr Index noNamespace = 0xFFFFFFFF;
constexpr Index namespaceOfXml = 0xFFFFFFFE;

struct Span {
    Index begin = 0;
    Index length = 0;
};

/// Elements refer to each other by index. Element 0 is the document itself, which is no element's
/// child or sibling, so 0 also means "none".
struct Element {
    Span xml; ///< in the document's text
    Index nameLength = 0;
    Span value; ///< in the document's characters
    Index parent = 0;
    Index previous = 0;
    Index next = 0;
    Index lastChild = 0;
    Index children = 0;
    Index end = 0;            ///< the index after its last descendant
    Index firstAttribute = 0; ///< they end where the next element's begin
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
    Index element = 0;            ///< where it stands
    Index shadowed = noNamespace; ///< the declaration of the same prefix that it hides
};

/// A parsed document: its text in UTF-8, and its elements in document order. Elements refer to each
/// other by index, so nothing here recurses, however deep the document is. It does not change once
/// it is built.
class Document {
public:
    Document() : elements(1) {}

    std::string_view characters(Span span) const;
    std::string_view name(Index element) const;
    /// The name without its prefix; the whole name when the element is in no namespace.
    std::string_view localName(Index element) const;
    std::string_view nameSpace(Index element) const;
    std::string_view value(Index element) const { return characters(elements[element].value); }

    /// The element's text. It declares the namespaces that it takes from the elements around it.
    std::string xml(Index element) const;

    /// Whether the element's text says all about it that this document does.
    bool standsAlone(Index element) const {
        return !hasDoctype && (declarations.empty() || outerDeclarations(element).empty());
    }

    /// The index after the element's last attribute.
    Index endOfAttributes(Index element) const;
    /// The element's attribute of that name; `endOfAttributes` when it has none.
    Index findAttribute(Index element, std::string_view name) const;
    /// 0 when there is none.
    Index firstChild(Index element) const {
        return elements[element].children != 0 ? element + 1 : 0;
    }
    /// The first child of that name; 0 when there is none.
    Index findChild(Index element, std::string_view name) const;

    std::string text;
    std::string allCharacters; ///< what values, attributes and declarations refer to
    std::vector<Element> elements;
    std::vector<Attribute> attributes;
    std::vector<NamespaceDeclaration> declarations;
    bool hasDoctype = false;
    /// The number of iterators.
    mutable std::atomic<unsigned int> owners{0};

private:
    std::vector<Index> outerDeclarations(Index element) const;
};

} // namespace znxml
