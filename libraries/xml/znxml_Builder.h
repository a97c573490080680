#pragma once

#include "znxml_Document.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace znxml {

/// Builds a document. A reader calls it for each tag and text, in the order of the source.
/// Positions are offsets in the source. Names and texts are passed decoded.
class Builder {
public:
    /// `document` must be empty, and the source at most `maxDocumentSize` long. Both must outlive
    /// the builder.
    Builder(Document& document, std::string_view source);

    /// Adds an element, which becomes the open one. Its start tag begins at `position`.
    void start(std::size_t position, std::string_view name);
    void addAttribute(std::string_view name, std::string_view value);
    /// Adds an attribute from the document type, and inserts it into the element's text. Returns
    /// false if such attributes have made the document too much longer than its source.
    bool addDefaultAttribute(std::string_view name, std::string_view value);
    /// Finds the namespaces of the open element and of its attributes. Call it after all attributes
    /// are added; not needed for documents without colons and namespace declarations. Returns false
    /// if the names need too many and too long declarations of outer elements.
    bool resolveNames();

    void addText(std::string_view text) { openText_ += text; }

    /// Closes the open element. `position` is the offset after its end tag.
    void end(std::size_t position);

    /// Completes the document. Call it once, after the root element is closed.
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
    Index use(Index declaration);

    Document& document_;
    std::string_view source_;
    std::size_t copied_ = 0;     // the source is copied to the document's text up to this offset
    std::size_t defaults_ = 0;   // the number of characters added from the document type
    std::uint64_t repeated_ = 0; // see `use`
    Index open_ = 0;
    std::size_t openNameEnd_ = 0;
    std::string openText_; // the text of all open elements, the outermost first
    std::map<std::string, Index, std::less<>> declared_; // by prefix: the innermost declaration
    std::vector<Index> scope_;                           // the declarations on all open elements
};

} // namespace znxml
