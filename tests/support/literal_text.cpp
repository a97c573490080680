#include "support/literal_text.h"

#include <cstdlib>
#include <strings.h>

namespace literal {

namespace {

constexpr std::size_t npos = std::string::npos;

void replaceAll(std::string& text, std::string const& what, std::string const& by) {
    std::size_t at = text.find(what);
    while (at != npos) {
        text.replace(at, what.size(), by);
        at = text.find(what, at + by.size());
    }
}

/// Returns the text from `start` up to `end`, truncated at its first NUL.
std::string piece(std::string const& text, std::size_t start, std::size_t end) {
    return text.substr(start, end - start).c_str();
}

} // namespace

std::string trim(std::string const& text) {
    char const* const blanks = " \t\n\r";
    std::size_t const first = text.find_first_not_of(blanks);
    if (first == npos)
        return "";
    std::size_t const last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::string sanitize(std::string const& text, std::string const& allowed) {
    std::string result = text;
    std::size_t at = result.find_first_not_of(allowed);
    while (at != npos) {
        result.erase(at, 1);
        at = result.find_first_not_of(allowed);
    }
    return trim(result);
}

bool toBool(std::string const& text) {
    if (strcasecmp(text.c_str(), "true") == 0)
        return true;
    if (strcasecmp(text.c_str(), "t") == 0)
        return true;
    if (strcasecmp(text.c_str(), "yes") == 0)
        return true;
    if (strcasecmp(text.c_str(), "y") == 0)
        return true;
    if (strcasecmp(text.c_str(), "on") == 0)
        return true;
    return std::strtol(text.c_str(), nullptr, 10) != 0;
}

std::string extract(std::string const& text, std::string const& begin, std::string const& end) {
    std::size_t const opening = text.find(begin);
    if (opening == npos)
        return "";
    std::size_t const start = opening + begin.size();
    std::size_t const closing = text.find(end, start);
    if (closing == npos)
        return "";
    return text.substr(start, closing - start);
}

std::string abbreviate(std::string const& text, std::size_t length) {
    if (length < 3)
        return "";
    if (length >= text.size())
        return text;
    std::string result = text.substr(0, length);
    result.replace(length - 3, 3, "...");
    return result;
}

std::vector<unsigned int> findAll(std::string const& text, std::string const& chars,
                                  std::string const& quotes) {
    std::vector<unsigned int> found;
    std::size_t m = text.find_first_of(chars);
    std::size_t q = quotes.empty() ? npos : text.find_first_of(quotes);
    while (true) {
        while (m != npos && (q == npos || q > m)) {
            found.push_back(static_cast<unsigned int>(m));
            m = text.find_first_of(chars, m + 1);
        }
        if (m == npos)
            return found;

        char const c = text.at(q);
        std::string const stops = std::string("\\") + c;
        std::size_t p = text.find_first_of(stops, q + 1);
        std::size_t z = npos;
        while (z == npos) {
            if (p == npos)
                return found;
            if (text.at(p) == c)
                z = p;
            else if (text.at(p + 2) == c)
                z = p + 2;
            else
                p = text.find_first_of(stops, p + 3);
        }

        m = text.find_first_of(chars, z + 1);
        q = text.find_first_of(quotes, z + 1);
    }
}

std::vector<std::string> tokenize(std::string const& text, std::string const& separators,
                                  std::string const& quotes) {
    std::vector<std::string> pieces;
    if (text.empty())
        return pieces;
    if (separators.empty()) {
        pieces.push_back(piece(text, 0, text.size()));
        return pieces;
    }
    std::size_t start = 0;
    for (std::size_t const p : findAll(text, separators, quotes)) {
        if (p > start)
            pieces.push_back(piece(text, start, p));
        start = p + 1;
    }
    if (start < text.size())
        pieces.push_back(piece(text, start, text.size()));
    return pieces;
}

std::string encodeHtml(std::string const& text) {
    std::string result = text;
    replaceAll(result, "&", "&amp;");
    replaceAll(result, "<", "&lt;");
    replaceAll(result, ">", "&gt;");
    replaceAll(result, "'", "&apos;");
    replaceAll(result, "\"", "&quot;");
    return result;
}

std::string decodeHtml(std::string const& text) {
    std::string result = text;
    replaceAll(result, "&amp;", "&");
    replaceAll(result, "&lt;", "<");
    replaceAll(result, "&gt;", ">");
    replaceAll(result, "&apos;", "'");
    replaceAll(result, "&quot;", "\"");
    return result;
}

std::optional<OpenTag> findOpenTag(std::string const& text, std::size_t from,
                                   std::string const& name) {
    std::string const pattern = "<" + name;
    while (true) {
        std::size_t const start = text.find(pattern, from);
        if (start == npos)
            return std::nullopt;
        std::size_t end = start + pattern.size();
        if (end >= text.size())
            return std::nullopt;
        switch (text.at(end)) {
        case ' ':
        case '\t':
        case '\n':
        case '\r':
            end = text.find('>', end + 1);
            if (end == npos)
                return std::nullopt;
            return OpenTag{start, end, text.at(end - 1) == '/'};
        case '>':
            return OpenTag{start, end, false};
        case '/':
            if (end + 1 < text.size() && text.at(end + 1) == '>')
                return OpenTag{start, end + 1, true};
            from = end + 1;
            break;
        default:
            from = end;
            break;
        }
    }
}

std::optional<CloseTag> findCloseTag(std::string const& text, std::size_t from,
                                     std::string const& name) {
    std::string const pattern = "</" + name + ">";
    long depth = 0;
    std::size_t p = from;
    std::size_t s = from;
    while (true) {
        std::size_t const c = text.find(pattern, p);
        if (c == npos)
            return std::nullopt;
        std::optional<OpenTag> tag = findOpenTag(text.substr(s, c - s), 0, name);
        while (tag) {
            s += tag->end;
            if (!tag->selfClosing)
                ++depth;
            tag = findOpenTag(text.substr(s, c - s), 0, name);
        }
        --depth;
        p = c + pattern.size();
        if (depth < 0)
            return CloseTag{c, p - 1};
    }
}

std::string replaceElement(std::string const& text, std::string const& name,
                           std::string const& replacement) {
    if (text.empty())
        return "";
    std::size_t pos = 0;
    std::string result;
    while (true) {
        std::optional<OpenTag> const open = findOpenTag(text, pos, name);
        if (!open)
            return result + text.substr(pos);
        result += text.substr(pos, open->start - pos);
        std::size_t const behindOpen = open->end + 1;
        std::size_t elementEnd = open->end;
        if (!open->selfClosing) {
            std::optional<CloseTag> const close = findCloseTag(text, behindOpen, name);
            if (!close) {
                result += text.substr(open->start, behindOpen - open->start);
                return result + replaceElement(text.substr(behindOpen), name, replacement);
            }
            elementEnd = close->end;
        }
        result += replacement;
        pos = elementEnd + 1;
        if (pos >= text.size())
            return result;
    }
}

} // namespace literal
