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
#include <cctype>
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

std::string stdTrim(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\r";
    std::size_t const begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return std::string(text.substr(begin, text.find_last_not_of(blanks) - begin + 1));
}

void addTrimRow(std::string const& name, std::string const& plain) {
    Row("text: trim " + name)
        .library([text = String(plain)] { return text.trim(); })
        .peer("std", [=] { return stdTrim(plain); })
        .peer("absl", [=] { return std::string(absl::StripAsciiWhitespace(plain)); });
}

void addSanitizeRow(std::string const& name, std::string const& plain) {
    static char const allowed[] = "abcdefghijklmnopqrstuvwxyz0123456789_-";
    Row("text: sanitize " + name)
        .library([text = String(plain)] { return String::sanitize(text, allowed); })
        .peer("std", [=] {
            std::string kept;
            std::copy_if(plain.begin(), plain.end(), std::back_inserter(kept),
                         [](char c) { return std::strchr(allowed, c) != nullptr; });
            return stdTrim(kept);
        });
}

char lower(unsigned char c) { return static_cast<char>(std::tolower(c)); }

void addLowerRow(std::string const& name, std::string const& plain) {
    Row("text: lower case of " + name)
        .library([text = String(plain)] { return text.toLower(); })
        .peer("std",
              [=] {
                  std::string text = plain;
                  std::transform(text.begin(), text.end(), text.begin(), lower);
                  return text;
              })
        .peer("absl", [=] { return absl::AsciiStrToLower(plain); });
}

template <class Number>
bool fromChars(std::string const& text, Number& number) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

void addNumericRow(std::string const& name, std::string const& plain) {
    Row("text: numeric test of " + name)
        .library([text = String(plain)] {
            bool isInteger;
            return text.isNumeric(isInteger);
        })
        .peer("std::from_chars",
              [=] {
                  double number;
                  return fromChars(plain, number);
              })
        .peer("absl", [=] {
            double number;
            return absl::SimpleAtod(plain, &number);
        });
}

/// Finds separators outside quotes. The peers treat backslashes differently, so the data contains
/// none.
std::vector<unsigned int> stdFindAll(std::string const& text) {
    std::vector<unsigned int> found;
    std::size_t at = 0;
    while ((at = text.find_first_of(",;'", at)) != std::string::npos) {
        if (text[at] != '\'')
            found.push_back(static_cast<unsigned int>(at));
        else if ((at = text.find('\'', at + 1)) == std::string::npos)
            break;
        ++at;
    }
    return found;
}

std::vector<std::string> stdTokenize(std::string const& text) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (unsigned int const cut : stdFindAll(text)) {
        if (cut > start)
            pieces.push_back(text.substr(start, cut - start));
        start = cut + 1;
    }
    if (start < text.size())
        pieces.push_back(text.substr(start));
    return pieces;
}

std::vector<std::string> stdSplit(std::string const& text) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    while ((start = text.find_first_not_of(",;", start)) != std::string::npos) {
        std::size_t const end = text.find_first_of(",;", start);
        pieces.push_back(text.substr(start, end - start));
        start = end;
    }
    return pieces;
}

template <class Separator>
std::vector<std::string> boostTokenize(std::string const& text, Separator const& separator) {
    boost::tokenizer<Separator> const tokens(text, separator);
    return {tokens.begin(), tokens.end()};
}

std::string list(int entries, std::size_t length, bool isQuoted) {
    generator().seed(7);
    std::string text;
    for (int i = 0; i < entries; ++i) {
        if (i > 0)
            text += i % 3 == 0 ? ';' : ',';
        std::string const entry = randomWord(length);
        text += isQuoted && i % 4 == 0 ? '\'' + entry + ",x'" : entry;
    }
    return text;
}

void addListRows(std::string const& name, int entries) {
    std::string const quoted = list(entries, 8, true);
    std::string const plain = list(entries, 8, false);
    Row("list: find separators outside quotes, " + name)
        .library([text = String(quoted), chars = String(",;"), quotes = String("'")] {
            return text.findAll(chars, quotes);
        })
        .peer("std", [=] { return stdFindAll(quoted); });
    // Boost.Tokenizer removes the quotes, so the row compares only the number of pieces.
    Row("list: tokenize with quotes, " + name)
        .library([text = String(quoted), chars = String(",;"), quotes = String("'")] {
            return text.tokenize(chars, quotes).size();
        })
        .peer("std", [=] { return stdTokenize(quoted).size(); })
        .peer("boost", [=] {
            return boostTokenize(quoted, boost::escaped_list_separator<char>("\\", ",;", "'"))
                .size();
        });
    Row("list: tokenize, " + name)
        .library([text = String(plain), chars = String(",;"), none = String()] {
            return text.tokenize(chars, none);
        })
        .peer("std", [=] { return stdSplit(plain); })
        .peer("boost", [=] { return boostTokenize(plain, boost::char_separator<char>(",;")); })
        .peer("absl", [=] {
            return std::vector<std::string>(
                absl::StrSplit(plain, absl::ByAnyChar(",;"), absl::SkipEmpty()));
        });
}

void addPrefixRow(std::string const& name, std::string const& plain, std::string const& start) {
    Row("text: prefix, " + name)
        .library([text = String(plain), prefix = String(start)] { return text.hasPrefix(prefix); })
        .peer("std", [=] { return plain.compare(0, start.size(), start) == 0; })
        .peer("absl", [=] { return absl::StartsWith(plain, start); });
}

void addCompareRow(std::string const& name, std::string const& one, std::string const& other) {
    Row("text: compare without case, " + name)
        .library(
            [text = String(one), second = String(other)] { return text.iCompare(second) == 0; })
        .peer("strcasecmp", [=] { return strcasecmp(one.c_str(), other.c_str()) == 0; })
        .peer("absl", [=] { return absl::EqualsIgnoreCase(one, other); });
}

void addNumberRow(std::string const& plain) {
    Row("text: unsigned integer")
        .library([text = String(plain)] { return text.toUnsignedInt(); })
        .peer("std::from_chars",
              [=] {
                  unsigned int number = 0;
                  fromChars(plain, number);
                  return number;
              })
        .peer("absl", [=] {
            unsigned int number = 0;
            return absl::SimpleAtoi(plain, &number) ? number : 0;
        });
}

void addExtractRow() {
    generator().seed(8);
    std::string const plain = randomText(2000) + "<value>" + randomText(100) + "</value>";
    Row("text: extract between markers behind 2 KB")
        .library([text = String(plain), begin = String("<value>"), end = String("</value>")] {
            return text.extract(begin, end);
        })
        .peer("std", [=] {
            std::size_t const start = plain.find("<value>") + std::strlen("<value>");
            return plain.substr(start, plain.find("</value>", start) - start);
        });
}

[[maybe_unused]] bool const added = [] {
    generator().seed(9);
    std::string const word = randomWord(12);
    std::string const page = randomText(4096);
    std::string upper = page;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::string const shortUpper = upper.substr(0, 12);

    addTrimRow("a short text", " \t" + word + " \r\n");
    addTrimRow("4 KB", "    " + page + "    ");
    addSanitizeRow("a short text", "a-B c_D!" + word);
    addSanitizeRow("4 KB", page);
    addLowerRow("a short text", shortUpper);
    addLowerRow("4 KB", upper);
    addNumericRow("an integer", "1048576");
    addNumericRow("a fraction", "-1234.5678");
    addNumericRow("a word", word);
    addListRows("10 entries", 10);
    addListRows("10,000 entries", 10'000);
    addPrefixRow("a hit", page, page.substr(0, 16));
    addPrefixRow("a miss", page, "xyz" + page.substr(0, 16));
    addCompareRow("12 equal characters", shortUpper, page.substr(0, 12));
    addCompareRow("4 KB of equal characters", upper, page);
    addCompareRow("different at the start", "1" + word, "2" + word);
    addNumberRow("1048576");
    addExtractRow();
    return true;
}();

} // namespace

} // namespace bench
