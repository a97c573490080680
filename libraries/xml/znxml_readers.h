#pragma once

#include "znxml_Document.h"

#include <memory>
#include <string>

namespace znxml {

/// Reads a document. Null when it is not well-formed, refers to an entity other than the five that
/// every document has, is in an encoding that Expat does not know, or exceeds `maxDocumentSize`.
std::unique_ptr<Document> readDocument(std::string const& source);

/// Reads any document in UTF-8. Expat decides what is well-formed.
std::unique_ptr<Document> readByExpat(std::string const& source);

/// Reads plain documents: elements without attributes, their names ASCII without colons, and text
/// in UTF-8 with the five entities. Most values are written like that, and setting up Expat takes
/// longer than reading a short one. Null when the document is anything else, well-formed or not.
std::unique_ptr<Document> readPlain(std::string const& source);

/// The document in UTF-8, converted to `storage` unless it is UTF-8 already. A converted document
/// has no XML declaration; it is empty when the source is not well-formed.
std::string const& asUtf8(std::string const& source, std::string& storage);

} // namespace znxml
