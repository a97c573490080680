#pragma once

#include "znxml_Document.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace znxml {

/// Builds a document from what a reader finds in its source, from front to back. Positions are
/// positions in the source; names and texts are decoded.
class Builder {
public:
    /// The document is empty, and the source at most `maxDocumentSize` long.
    Builder(Document& document, std::string_view source);

    /// The start tag of an element, which becomes the open one. Its text begins at `position`.
    void start(std::size_t position, std::string_view name);
    void addAttribute(std::string_view name, std::string_view value);
    /// An attribute that comes from the document type, and becomes part of the element's text.
    /// False when such attributes have made the document much longer than its source.
    bool addDefaultAttribute(std::string_view name, std::string_view value);
    /// Needed when all attributes of the open element are known and names may have a namespace.
    void resolveNames();

    void addText(std::string_view text) { openText_ += text; }

    /// The end tag of the open element. `position` is the one after it.
    void end(std::size_t position);

    /// After the root's end.
    void finish();

    /// Whether an element is open.
    bool isOpen() const { return open_ != 0; }
    /// The name of the open element.
    std::string_view openName() const;

private:
    Index place(std::size_t position) const;
    Span keep(std::string_view characters);
    void copySource(std::size_t end);
    void declare(Attribute const& attribute);
    Index nameSpaceOf(std::string_view prefix) const;

    Document& document_;
    std::string_view source_;
    std::size_t copied_ = 0;   // of the source, to the document's text
    std::size_t defaults_ = 0; // characters that came from the document type
    Index open_ = 0;
    std::size_t openNameEnd_ = 0;
    std::string openText_; // of all open elements, the outermost first
    std::map<std::string, Index, std::less<>> declared_; // by prefix, where the open element is
    std::vector<Index> scope_;                           // the declarations on all open elements
};

} // namespace znxml
