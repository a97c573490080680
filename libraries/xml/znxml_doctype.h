#pragma once

#include <string>

namespace znxml {

/// The document with a document type declaration that has `dtd` as its internal subset, in place of
/// any that it had; with none when `dtd` is empty. Empty when the document is not well-formed up to
/// its root element's start tag.
std::string replaceDoctype(std::string const& source, std::string const& dtd);

} // namespace znxml
