#pragma once

#include <string>
#include <string_view>

// Names and attributes in the form in which a document contains them.

namespace znxml {

/// The part of a name before its colon; empty if it has no colon.
inline std::string_view prefixOf(std::string_view name) {
    std::size_t const colon = name.find(':');
    return name.substr(0, colon == std::string_view::npos ? 0 : colon);
}

/// Whether an attribute of that name declares a namespace.
inline bool declaresNamespace(std::string_view attribute) {
    return attribute == "xmlns" || prefixOf(attribute) == "xmlns";
}

/// Appends ` name="value"`.
void appendAttribute(std::string& out, std::string_view name, std::string_view value);

/// Whether markup refers to an entity other than amp, lt, gt, apos and quot.
bool refersToEntity(std::string_view markup);

} // namespace znxml
