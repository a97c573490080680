#include "znxml_names.h"

namespace znxml {

namespace {

/// The reference to write for a character that an attribute's value cannot contain; empty for other
/// characters. Line ends and tabs need references too, because parsers turn plain ones into spaces.
std::string_view reference(char character) {
    switch (character) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    default:
        return {};
    }
}

} // namespace

void appendAttribute(std::string& out, std::string_view name, std::string_view value) {
    out += ' ';
    out += name;
    out += "=\"";
    for (char const character : value) {
        std::string_view const replacement = reference(character);
        if (replacement.empty())
            out += character;
        else
            out += replacement;
    }
    out += '"';
}

bool refersToEntity(std::string_view markup) {
    for (std::size_t at = markup.find('&'); at != std::string_view::npos;
         at = markup.find('&', at + 1)) {
        std::string_view const name = markup.substr(at + 1, markup.find(';', at) - at - 1);
        bool const isCharacter = !name.empty() && name.front() == '#';
        bool const isPredefined =
            name == "amp" || name == "lt" || name == "gt" || name == "apos" || name == "quot";
        if (!isCharacter && !isPredefined)
            return true;
    }
    return false;
}

} // namespace znxml
