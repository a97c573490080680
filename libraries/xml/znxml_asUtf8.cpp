#include "znxml_Expat.h"
#include "znxml_readers.h"

#include <cstddef>
#include <strings.h>
#include <utility>

namespace znxml {

namespace {

/// A UTF-16 document starts with a byte order mark or with "<", which has a NUL byte in UTF-16.
bool isUtf16(std::string const& source) {
    if (source.size() < 2)
        return false;
    return source.compare(0, 2, "\xFE\xFF") == 0 || source.compare(0, 2, "\xFF\xFE") == 0 ||
           source[0] == '\0' || source[1] == '\0';
}

bool hasDeclaration(std::string const& source) {
    return source.compare(0, 5, "<?xml") == 0 || source.compare(0, 8, "\xEF\xBB\xBF<?xml") == 0;
}

/// Collects the document from Expat's default handler, which receives all of it in UTF-8.
class Converter : public Expat {
public:
    explicit Converter(std::string const& source) : needed_(isUtf16(source)) {
        XML_SetXmlDeclHandler(parser(), [](void* self, char const*, char const* encoding, int) {
            run(self, &Converter::declare, encoding);
        });
        XML_SetDefaultHandler(parser(), [](void* self, char const* text, int length) {
            run(self, &Converter::repeat, text, length);
        });
        isWellFormed_ = parse(source);
    }

    bool isNeeded() const { return needed_; }
    std::string takeResult() { return isWellFormed_ ? std::move(result_) : std::string(); }

private:
    void declare(char const* encoding) {
        if (encoding && strcasecmp(encoding, "UTF-8") != 0 && strcasecmp(encoding, "US-ASCII") != 0)
            needed_ = true;
        stopUnlessNeeded();
    }

    void repeat(char const* text, int length) {
        stopUnlessNeeded();
        result_.append(text, static_cast<std::size_t>(length));
    }

    void stopUnlessNeeded() {
        if (!needed_)
            stop();
    }

    bool needed_;
    bool isWellFormed_ = false;
    std::string result_;
};

} // namespace

std::string const& asUtf8(std::string const& source, std::string& storage) {
    if (!isUtf16(source) && !hasDeclaration(source))
        return source;
    Converter converter(source);
    if (!converter.isNeeded())
        return source;
    return storage = converter.takeResult();
}

} // namespace znxml
