#include "znxml_readers.h"

namespace znxml {

std::unique_ptr<Document> readDocument(std::string const& source) {
    if (auto document = readPlain(source))
        return document;
    std::string storage;
    return readByExpat(asUtf8(source, storage));
}

} // namespace znxml
