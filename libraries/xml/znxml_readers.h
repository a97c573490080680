#pragma once

#include "znxml_Document.h"

#include <memory>
#include <string>

namespace znxml {

/// Reads a document. Returns null if it is malformed, refers to an entity other than the five
/// predefined ones, has an encoding that Expat does not know, or exceeds `maxDocumentSize`.
std::unique_ptr<Document> readDocument(std::string const& source);

/// As `readDocument`, for documents in UTF-8 only. Expat parses them.
std::unique_ptr<Document> readByExpat(std::string const& source);

/// Reads a plain document: elements without attributes, ASCII names without colons, and text in
/// UTF-8 with the five predefined entities. Returns null for any other document, well-formed or
/// not. Most stored values are plain documents, and creating an Expat parser takes longer than
/// reading a short one.
std::unique_ptr<Document> readPlain(std::string const& source);

/// Returns `source` itself if it is in UTF-8. Otherwise converts it to UTF-8 in `storage`, without
/// an XML declaration, and returns `storage`, which is empty if the source is malformed.
std::string const& asUtf8(std::string const& source, std::string& storage);

} // namespace znxml
