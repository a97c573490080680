#include "znxml_Builder.h"
#include "znxml_Expat.h"
#include "znxml_names.h"
#include "znxml_readers.h"

#include <string>
#include <string_view>
#include <utility>

namespace znxml {

namespace {

/// Builds a document. It fetches nothing. It refuses a document that refers to an entity that the
/// document declares, because its text would be incomplete. In values of attributes, Expat has
/// expanded the entity by then, within limits of its own.
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
        // After a call of this function, even with null, Expat no longer expands entities in text.
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
                                     int) { run(self, &Reader::inspectDeclaration); });
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
        if (!builder_.resolveNames())
            stop();
    }

    void end() { builder_.end(position() + length()); }

    void addText(char const* text, int length) {
        builder_.addText({text, static_cast<std::size_t>(length)});
    }

    void skipEntity(bool isParameter) {
        if (!isParameter)
            stop();
    }

    /// Checks an attribute declaration, and the default value in it if there is one.
    void inspectDeclaration() {
        // Expat looks at all attributes declared for an element at each of its start tags.
        constexpr unsigned int mostDeclared = 1000;
        if (++declared_ > mostDeclared)
            return stop();
        std::size_t const begin = position();
        char const quote = source_[begin];
        if (quote == '\'' || quote == '"')
            inspect(begin, source_.find(quote, begin + 1) - begin);
    }

    /// Stops if this part of the source refers to an entity. Needed for values of attributes:
    /// Expat expands entities there without calling a handler.
    void inspect(std::size_t begin, std::size_t length) {
        if (refersToEntity(std::string_view(source_).substr(begin, length)))
            stop();
    }

    std::string const& source_;
    Document& document_;
    Builder builder_;
    unsigned int declared_ = 0; // attributes in the document type
};

} // namespace

std::unique_ptr<Document> readByExpat(std::string const& source) {
    if (source.size() > maxDocumentSize)
        return nullptr;
    auto document = std::make_unique<Document>();
    return Reader(source, *document).read() ? std::move(document) : nullptr;
}

} // namespace znxml
