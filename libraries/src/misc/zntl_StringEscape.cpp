#include "misc/zntl_String.h"

#include "misc/internal/zntl_CharacterSet.h"

#include <cstddef>
#include <string_view>

namespace zntl {

namespace {

constexpr CharacterSet markup("&<>'\"");

std::string_view entityOf(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\'':
        return "&apos;";
    default:
        return "&quot;";
    }
}

struct Entity {
    std::string_view rest; // what follows the "&"
    char character;
};

constexpr std::string_view ampersandRest = "amp;";
constexpr Entity otherEntities[] = {{"lt;", '<'}, {"gt;", '>'}, {"apos;", '\''}, {"quot;", '"'}};

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

} // namespace

String String::encodeHtml(String const& text) {
    String result;
    result.reserve(text.size());
    std::size_t copied = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!markup.contains(text[i]))
            continue;
        result.append(text, copied, i - copied);
        result += entityOf(text[i]);
        copied = i + 1;
    }
    result.append(text, copied);
    return result;
}

// One pass with the result of five: "&amp;" first, and then, in the result, the others. An "&",
// decoded or not, begins another entity exactly when that entity's rest follows it in the text.
String String::decodeHtml(String const& text) {
    std::string_view const all = text;
    String result;
    result.reserve(text.size());
    std::size_t copied = 0;
    for (std::size_t at = all.find('&'); at != npos; at = all.find('&', copied)) {
        result.append(all, copied, at - copied);
        char decoded = '&';
        copied = at + 1;
        if (startsWith(all.substr(copied), ampersandRest))
            copied += ampersandRest.size();
        for (Entity const& entity : otherEntities) {
            if (startsWith(all.substr(copied), entity.rest)) {
                decoded = entity.character;
                copied += entity.rest.size();
                break;
            }
        }
        result.push_back(decoded);
    }
    result.append(all, copied);
    return result;
}

} // namespace zntl
