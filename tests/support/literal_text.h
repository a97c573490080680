#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The text and markup operations of zntl::String, implemented literally as they are defined: whole
/// passes over the text, fresh searches, recursion, copies of substrings. They are slow and use
/// much stack, but are easy to check by reading, and share no code with the library. Tests compare
/// the library's results with theirs.
namespace literal {

std::string trim(std::string const& text);
std::string sanitize(std::string const& text, std::string const& allowed);
bool toBool(std::string const& text);
std::string extract(std::string const& text, std::string const& begin, std::string const& end);
std::string abbreviate(std::string const& text, std::size_t length);

/// Throws std::out_of_range as the operation does.
std::vector<unsigned int> findAll(std::string const& text, std::string const& chars,
                                  std::string const& quotes);
/// Throws std::out_of_range as the operation does.
std::vector<std::string> tokenize(std::string const& text, std::string const& separators,
                                  std::string const& quotes);

std::string encodeHtml(std::string const& text);
std::string decodeHtml(std::string const& text);

struct OpenTag {
    std::size_t start; // the "<"
    std::size_t end;   // the ">"
    bool selfClosing;
};

struct CloseTag {
    std::size_t start; // the "<"
    std::size_t end;   // the ">"
};

std::optional<OpenTag> findOpenTag(std::string const& text, std::size_t from,
                                   std::string const& name);
std::optional<CloseTag> findCloseTag(std::string const& text, std::size_t from,
                                     std::string const& name);
std::string replaceElement(std::string const& text, std::string const& name,
                           std::string const& replacement);

} // namespace literal
