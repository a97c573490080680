#pragma once

#include <string>

namespace znxml {

/// Replaces the document type declaration of a document, or adds one, with `dtd` as its internal
/// subset. Removes the declaration if `dtd` is empty. Returns the new document in UTF-8, or the
/// empty string if the source is malformed before the end of its root element's start tag.
std::string replaceDoctype(std::string const& source, std::string const& dtd);

} // namespace znxml
