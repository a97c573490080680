#include "znxml_doctype.h"
#include "znxml_Expat.h"
#include "znxml_readers.h"

#include <cstddef>
#include <string_view>

namespace znxml {

namespace {

/// Finds the root element, and the document type declaration before it.
class PrologReader : public Expat {
public:
    explicit PrologReader(std::string const& source) {
        XML_SetDefaultHandler(parser(), [](void* self, char const* text, int length) {
            run(self, &PrologReader::inspect, text, length);
        });
        XML_SetEndDoctypeDeclHandler(parser(),
                                     [](void* self) { run(self, &PrologReader::endDoctype); });
        XML_SetStartElementHandler(parser(), [](void* self, char const* name, char const**) {
            run(self, &PrologReader::startRoot, name);
        });
        parse(source);
    }

    /// Empty if the document is malformed before the end of its root element's start tag.
    std::string rootName;
    /// The position of the document type declaration. If there is none, both are the start of the
    /// root element, where one can be inserted.
    std::size_t doctypeBegin = 0;
    std::size_t doctypeEnd = 0;

private:
    void inspect(char const* text, int length) {
        if (std::string_view(text, static_cast<std::size_t>(length)) == "<!DOCTYPE")
            doctypeBegin = position();
    }

    void endDoctype() { doctypeEnd = position() + length(); }

    void startRoot(char const* name) {
        rootName = name;
        if (doctypeEnd == 0)
            doctypeBegin = doctypeEnd = position();
        stop();
    }
};

} // namespace

std::string replaceDoctype(std::string const& source, std::string const& dtd) {
    std::string storage;
    std::string document = asUtf8(source, storage);
    PrologReader const prolog(document);
    if (prolog.rootName.empty())
        return {};
    std::string doctype;
    if (!dtd.empty())
        doctype = "<!DOCTYPE " + prolog.rootName + " [" + dtd + "]>";
    document.replace(prolog.doctypeBegin, prolog.doctypeEnd - prolog.doctypeBegin, doctype);
    return document;
}

} // namespace znxml
