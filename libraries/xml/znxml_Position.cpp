#include "znxml_Position.h"

#include <string_view>
#include <utility>

namespace znxml {

namespace {

// Each thread remembers one element and counts as an owner of its document. It forgets both when it
// gives up the document's last iterator, when it remembers another document, and when it ends.
// These variables have no destructors, so they can still be used while the ending thread destroys
// its other objects.
thread_local Document const* rememberedDocument = nullptr;
thread_local Index rememberedElement = 0;
thread_local bool threadHasEnded = false;

void forget() {
    if (Document const* const document = std::exchange(rememberedDocument, nullptr))
        disown(*document);
}

struct AtThreadEnd {
    AtThreadEnd() = default;
    AtThreadEnd(AtThreadEnd const&) = delete;
    AtThreadEnd& operator=(AtThreadEnd const&) = delete;
    ~AtThreadEnd() {
        forget();
        threadHasEnded = true;
    }
    void arrange() const {} // the first call constructs the object, which registers the destructor
};

thread_local AtThreadEnd const atThreadEnd;

} // namespace

void disown(Document const& document) {
    unsigned int const left = document.owners.fetch_sub(1, std::memory_order_acq_rel) - 1;
    bool const isOnlyRemembered = left == 1 && &document == rememberedDocument;
    if (isOnlyRemembered)
        rememberedDocument = nullptr;
    if (isOnlyRemembered || left == 0)
        delete &document;
}

void remember(Document const& document, Index element) {
    if (threadHasEnded)
        return;
    if (rememberedDocument != &document) {
        forget();
        atThreadEnd.arrange();
        own(document);
        rememberedDocument = &document;
    }
    rememberedElement = element;
}

Position recall(std::string const& text) {
    if (!rememberedDocument)
        return {};
    Span const xml = rememberedDocument->elements[rememberedElement].xml;
    if (text != std::string_view(rememberedDocument->text).substr(xml.begin, xml.length))
        return {};
    return {rememberedDocument, rememberedElement, Position::onRoot};
}

} // namespace znxml
