// Text operations: trimming, filtering, changing letter case, testing, splitting, comparing.

#include "support/data.h"
#include "support/row.h"

#include "misc/zntl_String.h"

#include <absl/strings/ascii.h>
#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_split.h>
#include <boost/tokenizer.hpp>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <strings.h>
#include <vector>

namespace bench {

namespace {

using zntl::String;
using Text = String const&;

std::string stdTrim(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\r";
    std::size_t const begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return std::string(text.substr(begin, text.find_last_not_of(blanks) - begin + 1));
}

std::string stdSanitize(Text text, char const* allowed) {
    std::string kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
                 [=](char c) { return std::strchr(allowed, c) != nullptr; });
    return stdTrim(kept);
}

void addTextRows(std::string const& length, std::string const& text) {
    Row("text: trim " + length, String("    " + text + "    "))
        .library([](Text padded) { return padded.trim(); })
        .peer("std", [](Text padded) { return stdTrim(padded); })
        .peer("absl", [](Text padded) { return std::string(absl::StripAsciiWhitespace(padded)); });
    char const* const allowed = "abcdefghijklmnopqrstuvwxyz0123456789_-";
    Row("text: sanitize " + length, String(text), allowed)
        .library(String::sanitize)
        .peer("std", stdSanitize);
    String const upper = absl::AsciiStrToUpper(text);
    Row("text: lower case of " + length, upper)
        .library([](Text shouted) { return shouted.toLower(); })
        .peer("absl", [](Text shouted) { return absl::AsciiStrToLower(shouted); });
    Row("text: compare without case, " + length, upper, String(text))
        .library([](Text one, Text other) { return one.iCompare(other) == 0; })
        .peer("strcasecmp",
              [](Text one, Text other) { return strcasecmp(one.c_str(), other.c_str()) == 0; })
        .peer("absl", [](Text one, Text other) { return absl::EqualsIgnoreCase(one, other); });
}

template <class Number>
bool fromChars(Text text, Number& number) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

void addNumberRows() {
    Row("text: numeric test of a fraction", String("-1234.5678"))
        .library([isInteger = false](Text text) mutable { return text.isNumeric(isInteger); })
        .peer("std::from_chars",
              [number = 0.0](Text text) mutable { return fromChars(text, number); })
        .peer("absl",
              [number = 0.0](Text text) mutable { return absl::SimpleAtod(text, &number); });
    Row("text: unsigned integer", String("1048576"))
        .library([](Text text) { return text.toUnsignedInt(); })
        .peer("std::from_chars",
              [](Text text) {
                  unsigned int number = 0;
                  return fromChars(text, number) ? number : 0;
              })
        .peer("absl", [](Text text) {
            unsigned int number = 0;
            return absl::SimpleAtoi(text, &number) ? number : 0;
        });
}

/// Finds separators outside quotes. The peers treat backslashes differently, so the data contains
/// none.
std::vector<unsigned int> stdFindAll(Text text, Text separators, Text quotes) {
    std::string const special = separators + quotes;
    std::vector<unsigned int> found;
    std::size_t at = 0;
    while ((at = text.find_first_of(special, at)) != std::string::npos) {
        if (quotes.find(text[at]) == std::string::npos)
            found.push_back(static_cast<unsigned int>(at));
        else if ((at = text.find(text[at], at + 1)) == std::string::npos)
            break;
        ++at;
    }
    return found;
}

std::vector<std::string> stdTokenize(Text text, Text separators, Text quotes) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (unsigned int const cut : stdFindAll(text, separators, quotes)) {
        if (cut > start)
            pieces.push_back(text.substr(start, cut - start));
        start = cut + 1;
    }
    if (start < text.size())
        pieces.push_back(text.substr(start));
    return pieces;
}

template <class Separator>
std::vector<std::string> boostTokenize(Text text, Separator const& separator) {
    boost::tokenizer<Separator> const tokens(text, separator);
    return {tokens.begin(), tokens.end()};
}

String list(bool isQuoted) {
    std::string text;
    for (int i = 0; i < 10'000; ++i) {
        std::string const entry = randomWord(8);
        text += i == 0 ? "" : i % 3 == 0 ? ";" : ",";
        text += isQuoted && i % 4 == 0 ? '\'' + entry + ",x'" : entry;
    }
    return text;
}

void addListRows() {
    String const plain = list(false);
    String const quoted = list(true);
    String const separators = ",;";
    auto const findAll = [](Text text, Text chars, Text quotes) {
        return text.findAll(chars, quotes);
    };
    Row("list: find separators, 10,000 entries", plain, separators, String())
        .library(findAll)
        .peer("std", stdFindAll);
    Row("list: find separators outside quotes, 10,000 entries", quoted, separators, String("'"))
        .library(findAll)
        .peer("std", stdFindAll);
    // Boost.Tokenizer removes the quotes, so the row compares only the number of pieces.
    Row("list: tokenize with quotes, 10,000 entries", quoted, separators, String("'"))
        .library(
            [](Text text, Text chars, Text quotes) { return text.tokenize(chars, quotes).size(); })
        .peer("std", [](auto&... inputs) { return stdTokenize(inputs...).size(); })
        .peer("boost", [](Text text, Text chars, Text quotes) {
            boost::escaped_list_separator<char> const rules("\\", chars, quotes);
            return boostTokenize(text, rules).size();
        });
    Row("list: tokenize, 10,000 entries", plain, separators)
        .library([](Text text, Text chars) { return text.tokenize(chars, ""); })
        .peer("boost",
              [](Text text, Text chars) {
                  return boostTokenize(text, boost::char_separator<char>(chars.c_str()));
              })
        .peer("absl", [](Text text, Text chars) {
            return std::vector<std::string>(
                absl::StrSplit(text, absl::ByAnyChar(chars), absl::SkipEmpty()));
        });
}

std::string stdExtract(Text text, Text begin, Text end) {
    std::size_t const start = text.find(begin) + begin.size();
    return text.substr(start, text.find(end, start) - start);
}

} // namespace

void addRows() {
    addTextRows("a short text", "a-B c_D!" + randomWord(12));
    addTextRows("4 KB", randomText(4096));
    addNumberRows();
    addListRows();
    std::string const page = randomText(2000);
    Row("text: prefix", String(page), String(page.substr(0, 16)))
        .library([](Text text, Text prefix) { return text.hasPrefix(prefix); })
        .peer("std",
              [](Text text, Text start) { return text.compare(0, start.size(), start) == 0; })
        .peer("absl", [](Text text, Text prefix) { return absl::StartsWith(text, prefix); });
    Row("text: extract between markers behind 2 KB",
        String(page + "<value>" + page.substr(0, 100) + "</value>"), String("<value>"),
        String("</value>"))
        .library([](Text text, Text begin, Text end) { return text.extract(begin, end); })
        .peer("std", stdExtract);
}

} // namespace bench
