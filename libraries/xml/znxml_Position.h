#pragma once

#include "znxml_Document.h"

#include "misc/zntl_String.h"

#include <cstddef>
#include <cstring>
#include <string>

namespace znxml {

/// Where an iterator is: on an element or after one, in a document that it shares. An iterator
/// without a document is at its end.
struct Position {
    enum Kind : Index { onChild, onRoot, afterChildren, afterRoot };

    Document const* document = nullptr;
    Index element = 0;
    Kind kind = afterRoot;

    bool atEnd() const { return kind == afterChildren || kind == afterRoot; }
    Element const& operator*() const { return document->elements[element]; }

    Position childOrEnd(Index child) const {
        return child != 0 ? Position{document, child, onChild}
                          : Position{document, element, afterChildren};
    }

    /// A root element has no siblings, even if it is part of a larger document.
    Position siblingOrEnd(Index sibling) const {
        if (kind == onRoot)
            return {document, element, afterRoot};
        return sibling != 0 ? Position{document, sibling, onChild}
                            : Position{document, (**this).parent, afterChildren};
    }
};

// An iterator has room for a string only. It holds the bytes of the position, and the iterator's
// own operations, which are all that copies and destroys it, count the document's owners.

constexpr unsigned int kindShift = 30;
static_assert(maxDocumentSize / sizeof "<a/>" < Index{1} << kindShift, "an index leaves two bits");
constexpr std::size_t pointerSize = sizeof(void const*);
constexpr std::size_t storedSize = pointerSize + sizeof(Index);

/// Counts one owner more.
inline void own(Document const& document) {
    document.owners.fetch_add(1, std::memory_order_relaxed);
}
/// Counts one owner less; the last one deletes the document.
void disown(Document const& document);

inline Position load(zntl::String const& storage) {
    Position position;
    if (storage.empty())
        return position;
    Index index;
    std::memcpy(&position.document, storage.data(), pointerSize);
    std::memcpy(&index, storage.data() + pointerSize, sizeof index);
    position.element = index & ((Index{1} << kindShift) - 1);
    position.kind = static_cast<Position::Kind>(index >> kindShift);
    return position;
}

/// Replaces what the storage holds.
inline void store(zntl::String& storage, Position const& position) {
    Document const* const before = load(storage).document;
    storage.resize(position.document ? storedSize : 0);
    if (position.document) {
        Index const index = position.element | position.kind << kindShift;
        std::memcpy(storage.data(), &position.document, pointerSize);
        std::memcpy(storage.data() + pointerSize, &index, sizeof index);
    }
    if (before == position.document)
        return;
    if (position.document)
        own(*position.document);
    if (before)
        disown(*before);
}

/// Makes `parse` quick for text that `toXML` has just returned on this thread: a set reads each of
/// its elements like that, and so does every element with members of its own.
void remember(Document const& document, Index element);
/// The element that was remembered, if this is its text; otherwise a position at its end.
Position recall(std::string const& text);

} // namespace znxml
