#include "znxml_Position.h"

#include <string_view>
#include <utility>

namespace znxml {

namespace {

// What is remembered owns its document. It forgets the document when it is the last owner, and when
// the thread ends; what has a destructor must not be used after that.
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
    void arrange() const {} // its first use does it
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
