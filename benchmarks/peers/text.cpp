// Text: trimmed, filtered, folded, tested, cut into pieces, compared.

#include "support/data.h"
#include "support/row.h"

#include "misc/zntl_String.h"

#include <absl/strings/ascii.h>
#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_split.h>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/erase.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/lexical_cast/try_lexical_convert.hpp>
#include <boost/range/algorithm_ext/erase.hpp>
#include <boost/tokenizer.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <string>
#include <string_view>
#include <strings.h>
#include <vector>

namespace bench {

namespace {

constexpr std::string_view blanks = " \t\n\r";

auto copying(std::string const& text) {
    return [=, copy = text]() mutable {
        std::memcpy(copy.data(), text.data(), text.size());
        return copy.data();
    };
}

auto scanning(std::string const& text) {
    return [=] { return std::memchr(text.data(), '\1', text.size()); };
}

std::string stdTrim(std::string_view text) {
    std::size_t const begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos)
        return {};
    return std::string(text.substr(begin, text.find_last_not_of(blanks) - begin + 1));
}

void addTrimRow(std::string const& name, std::string const& plain) {
    Row("text: trim " + name)
        .library([text = zntl::String(plain)] { return text.trim(); })
        .peer("std", [=] { return stdTrim(plain); })
        .peer("boost", [=] { return boost::trim_copy_if(plain, boost::is_any_of(" \t\n\r")); })
        .peer("absl", [=] { return std::string(absl::StripAsciiWhitespace(plain)); })
        .limit("memcpy", copying(plain));
}

void addSanitizeRow(std::string const& name, std::string const& plain) {
    static char const allowed[] = "abcdefghijklmnopqrstuvwxyz0123456789_-";
    Row("text: sanitize " + name)
        .library([text = zntl::String(plain)] { return zntl::String::sanitize(text, allowed); })
        .peer("std",
              [=] {
                  std::string kept;
                  std::copy_if(plain.begin(), plain.end(), std::back_inserter(kept),
                               [](char c) { return std::strchr(allowed, c) != nullptr; });
                  return stdTrim(kept);
              })
        .peer("boost",
              [=] {
                  std::string kept = plain;
                  boost::remove_erase_if(kept, !boost::is_any_of(allowed));
                  boost::trim(kept);
                  return kept;
              })
        .limit("memcpy", copying(plain));
}

void addLowerRow(std::string const& name, std::string const& plain) {
    Row("text: lower case of " + name)
        .library([text = zntl::String(plain)] { return text.toLower(); })
        .peer("std",
              [=] {
                  std::string text = plain;
                  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
                      return static_cast<char>(std::tolower(c));
                  });
                  return text;
              })
        .peer("boost", [=] { return boost::to_lower_copy(plain, std::locale::classic()); })
        .peer("absl", [=] { return absl::AsciiStrToLower(plain); })
        .limit("memcpy", copying(plain));
}

void addNumericRow(std::string const& name, std::string const& plain) {
    Row("text: numeric test of " + name)
        .library([text = zntl::String(plain)] {
            bool isInteger;
            return text.isNumeric(isInteger);
        })
        .peer("strtod",
              [=] {
                  char* end;
                  std::strtod(plain.c_str(), &end);
                  return *end == '\0' && end != plain.c_str();
              })
        .peer("std::from_chars",
              [=] {
                  double number;
                  char const* const end = plain.data() + plain.size();
                  auto const [read, error] = std::from_chars(plain.data(), end, number);
                  return error == std::errc() && read == end;
              })
        .peer("boost",
              [=] {
                  double number;
                  return boost::conversion::try_lexical_convert(plain, number);
              })
        .peer("absl", [=] {
            double number;
            return absl::SimpleAtod(plain, &number);
        });
}

/// Separators outside quotes; the peers' rules for backslashes differ, so the data has none.
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

/// Boost.Tokenizer takes the quotes away; everything else is the same.
std::size_t boostQuotedPieces(std::string const& text) {
    using Separator = boost::escaped_list_separator<char>;
    boost::tokenizer<Separator> const tokens(text, Separator("\\", ",;", "'"));
    std::vector<std::string> pieces(tokens.begin(), tokens.end());
    return pieces.size();
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

void addListRows(std::string const& name, int entries, std::size_t length) {
    std::string const quoted = list(entries, length, true);
    std::string const plain = list(entries, length, false);
    Row("list: find separators outside quotes, " + name)
        .library([text = zntl::String(quoted), chars = zntl::String(",;"),
                  quotes = zntl::String("'")] { return text.findAll(chars, quotes); })
        .peer("std", [=] { return stdFindAll(quoted); })
        .limit("memchr", scanning(quoted));
    Row("list: tokenize with quotes, " + name)
        .library([text = zntl::String(quoted), chars = zntl::String(",;"),
                  quotes = zntl::String("'")] { return text.tokenize(chars, quotes).size(); })
        .peer("std", [=] { return stdTokenize(quoted).size(); })
        .peer("boost", [=] { return boostQuotedPieces(quoted); })
        .limit("memchr", scanning(quoted));
    Row("list: tokenize, " + name)
        .library([text = zntl::String(plain), chars = zntl::String(",;"), none = zntl::String()] {
            return text.tokenize(chars, none);
        })
        .peer("std", [=] { return stdSplit(plain); })
        .peer("boost",
              [=] {
                  using Separator = boost::char_separator<char>;
                  boost::tokenizer<Separator> const tokens(plain, Separator(",;"));
                  return std::vector<std::string>(tokens.begin(), tokens.end());
              })
        .peer("absl",
              [=] {
                  return std::vector<std::string>(
                      absl::StrSplit(plain, absl::ByAnyChar(",;"), absl::SkipEmpty()));
              })
        .limit("memchr", scanning(plain));
}

void addPrefixRow(std::string const& name, std::string const& plain, std::string const& start) {
    Row("text: prefix, " + name)
        .library([text = zntl::String(plain), prefix = zntl::String(start)] {
            return text.hasPrefix(prefix);
        })
        .peer("std", [=] { return plain.compare(0, start.size(), start) == 0; })
        .peer("std::rfind", [=] { return plain.rfind(start, 0) == 0; })
        .peer("boost", [=] { return boost::starts_with(plain, start); })
        .peer("absl", [=] { return absl::StartsWith(plain, start); });
}

void addCompareRow(std::string const& name, std::string const& one, std::string const& other) {
    Row("text: compare without case, " + name)
        .library([text = zntl::String(one), second = zntl::String(other)] {
            return text.iCompare(second) == 0;
        })
        .peer("strcasecmp", [=] { return strcasecmp(one.c_str(), other.c_str()) == 0; })
        .peer("boost", [=] { return boost::iequals(one, other, std::locale::classic()); })
        .peer("absl", [=] { return absl::EqualsIgnoreCase(one, other); });
}

void addNumberRow() {
    Row("text: unsigned integer")
        .library([text = zntl::String("1048576")] { return text.toUnsignedInt(); })
        .peer("strtol",
              [text = std::string("1048576")] {
                  return static_cast<unsigned int>(std::strtol(text.c_str(), nullptr, 10));
              })
        .peer("std::from_chars",
              [text = std::string("1048576")] {
                  unsigned int number = 0;
                  std::from_chars(text.data(), text.data() + text.size(), number);
                  return number;
              })
        .peer("boost",
              [text = std::string("1048576")] {
                  unsigned int number = 0;
                  boost::conversion::try_lexical_convert(text, number);
                  return number;
              })
        .peer("absl", [text = std::string("1048576")] {
            unsigned int number = 0;
            [[maybe_unused]] bool const isRead = absl::SimpleAtoi(text, &number);
            return number;
        });
}

void addExtractRow() {
    generator().seed(8);
    std::string const plain = randomText(2000) + "<value>" + randomText(100) + "</value>";
    Row("text: extract between markers behind 2 KB")
        .library([text = zntl::String(plain), begin = zntl::String("<value>"),
                  end = zntl::String("</value>")] { return text.extract(begin, end); })
        .peer("std",
              [=] {
                  std::size_t const start = plain.find("<value>") + std::strlen("<value>");
                  return plain.substr(start, plain.find("</value>", start) - start);
              })
        .limit("memchr", scanning(plain));
}

[[maybe_unused]] bool const added = [] {
    generator().seed(9);
    std::string const word = randomWord(12);
    std::string const page = randomText(4096);
    std::string upper = page;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return static_cast<char>(c == ' ' ? ' ' : c - 'a' + 'A'); });
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
    addListRows("10 entries", 10, 8);
    addListRows("10,000 entries", 10'000, 8);
    addPrefixRow("a hit", page, page.substr(0, 16));
    addPrefixRow("a miss", page, "xyz" + page.substr(0, 16));
    addCompareRow("12 equal characters", shortUpper, page.substr(0, 12));
    addCompareRow("4 KB of equal characters", upper, page);
    addCompareRow("different at the start", "1" + word, "2" + word);
    addNumberRow();
    addExtractRow();
    return true;
}();

} // namespace

} // namespace bench
