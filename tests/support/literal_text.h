#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// A second implementation of the text and markup operations of zntl::String, literally as they are
/// defined. It is slow and uses much stack, but it is easy to verify by reading, and it shares no
/// code with the library. Tests compare the library's results with its results.
namespace literal {

std::string trim(std::string const& text);
std::string sanitize(std::string const& text, std::string const& allowed);
bool toBool(std::string const& text);
std::string extract(std::string const& text, std::string const& begin, std::string const& end);
std::string abbreviate(std::string const& text, std::size_t length);

/// Throws std::out_of_range as String::findAll does.
std::vector<unsigned int> findAll(std::string const& text, std::string const& chars,
                                  std::string const& quotes);
/// Throws std::out_of_range as String::tokenize does.
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
