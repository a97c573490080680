#pragma once

#include "znxml_Document.h"

#include "misc/zntl_String.h"

#include <cstddef>
#include <cstring>
#include <string>

namespace znxml {

/// The position of an iterator: on an element, after the last child of an element, or after the
/// root. Without a document, the iterator is at its end.
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

// The only member of an iterator is a string, so the position is stored as the string's bytes. Only
// the iterator's own operations copy or destroy that string, and they count the document's owners.

constexpr unsigned int kindShift = 30;
static_assert(maxDocumentSize / sizeof "<a/>" < Index{1} << kindShift, "an index leaves two bits");
constexpr std::size_t pointerSize = sizeof(void const*);
constexpr std::size_t storedSize = pointerSize + sizeof(Index);

/// Adds an owner.
inline void own(Document const& document) {
    document.owners.fetch_add(1, std::memory_order_relaxed);
}
/// Removes an owner. Deletes the document if no owner is left, or only this thread (see
/// `remember`).
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

/// Stores `position` in place of the old one, and updates the owners of both documents.
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

/// Remembers the element whose text `toXML` returns, for this thread. `fromXML` of a set or of a
/// class with members passes the text of each child straight back to `parse`, which then need not
/// parse it again.
void remember(Document const& document, Index element);
/// Returns the position of the remembered element if `text` is its text; otherwise a position
/// without a document.
Position recall(std::string const& text);

} // namespace znxml
