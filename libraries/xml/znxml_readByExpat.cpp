#include "znxml_Builder.h"
#include "znxml_Expat.h"
#include "znxml_names.h"
#include "znxml_readers.h"

#include <string>
#include <string_view>
#include <utility>

namespace znxml {

namespace {

/// Builds a document. Nothing is fetched, and entities of the document's own are not expanded: a
/// document that refers to one is refused, because its text would be incomplete.
class Reader : public Expat {
public:
    Reader(std::string const& source, Document& document)
        : source_(source), document_(document), builder_(document, source) {
        XML_SetElementHandler(
            parser(),
            [](void* self, char const* name, char const** attributes) {
                run(self, &Reader::start, name, attributes);
            },
            [](void* self, char const* /*name*/) { run(self, &Reader::end); });
        XML_SetCharacterDataHandler(parser(), [](void* self, char const* text, int length) {
            run(self, &Reader::addText, text, length);
        });
        // Without a default handler nothing is expanded; setting none is what tells Expat so.
        XML_SetDefaultHandler(parser(), nullptr);
        XML_SetSkippedEntityHandler(parser(),
                                    [](void* self, char const* /*name*/, int isParameter) {
                                        run(self, &Reader::skipEntity, isParameter != 0);
                                    });
        XML_SetExternalEntityRefHandler(parser(),
                                        [](XML_Parser /*parser*/, char const*, char const*,
                                           char const*,
                                           char const*) -> int { return XML_STATUS_ERROR; });
        XML_SetStartDoctypeDeclHandler(
            parser(), [](void* self, char const*, char const*, char const*, int) {
                static_cast<Reader*>(static_cast<Expat*>(self))->document_.hasDoctype = true;
            });
        XML_SetAttlistDeclHandler(parser(),
                                  [](void* self, char const*, char const*, char const*, char const*,
                                     int) { run(self, &Reader::inspectDefault); });
    }

    bool read() {
        bool const isRead = parse(source_);
        if (isRead)
            builder_.finish();
        return isRead;
    }

private:
    void start(char const* name, char const** attributes) {
        if (document_.hasDoctype)
            inspect(position(), length());
        builder_.start(position(), name);
        char const** const defaults = attributes + XML_GetSpecifiedAttributeCount(parser());
        for (; *attributes; attributes += 2) {
            if (attributes < defaults)
                builder_.addAttribute(attributes[0], attributes[1]);
            else if (!builder_.addDefaultAttribute(attributes[0], attributes[1]))
                return stop();
        }
        builder_.resolveNames();
    }

    void end() { builder_.end(position() + length()); }

    void addText(char const* text, int length) {
        builder_.addText({text, static_cast<std::size_t>(length)});
    }

    void skipEntity(bool isParameter) {
        if (!isParameter)
            stop();
    }

    /// An attribute's default value, in quotes, if it has one.
    void inspectDefault() {
        std::size_t const begin = position();
        char const quote = source_[begin];
        if (quote == '\'' || quote == '"')
            inspect(begin, source_.find(quote, begin + 1) - begin);
    }

    /// Expat expands entities in the values of attributes, and reports none of them.
    void inspect(std::size_t begin, std::size_t length) {
        if (refersToEntity(std::string_view(source_).substr(begin, length)))
            stop();
    }

    std::string const& source_;
    Document& document_;
    Builder builder_;
};

} // namespace

std::unique_ptr<Document> readByExpat(std::string const& source) {
    auto document = std::make_unique<Document>();
    return Reader(source, *document).read() ? std::move(document) : nullptr;
}

} // namespace znxml
