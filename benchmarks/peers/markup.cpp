// Encoding and decoding markup, replacing elements.

#include "support/data.h"
#include "support/row.h"
#include "support/sample_texts.h"

#include "misc/zntl_String.h"

#include <absl/strings/str_replace.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <regex>
#include <string>
#include <string_view>
#include <utility>

namespace bench {

namespace {

using zntl::String;

constexpr std::pair<std::string_view, char> entities[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&apos;", '\''}, {"&quot;", '"'}};

// The code that a user of the standard library would write: one pass that appends to the result.

std::string stdEncode(std::string const& text) {
    std::string result;
    result.reserve(text.size());
    for (char const c : text) {
        auto const* const found =
            std::find_if(std::begin(entities), std::end(entities),
                         [=](auto const& entry) { return entry.second == c; });
        if (found == std::end(entities))
            result += c;
        else
            result += found->first;
    }
    return result;
}

std::string stdDecode(std::string const& text) {
    std::string result;
    result.reserve(text.size());
    std::size_t copied = 0;
    std::size_t at;
    while ((at = text.find('&', copied)) != std::string::npos) {
        result.append(text, copied, at - copied);
        copied = at;
        for (auto const& [entity, character] : entities) {
            if (text.compare(at, entity.size(), entity) == 0) {
                result += character;
                copied += entity.size();
                break;
            }
        }
        if (copied == at) {
            result += '&';
            ++copied;
        }
    }
    return result.append(text, copied);
}

std::string abslEncode(std::string const& text) {
    return absl::StrReplaceAll(
        text, {{"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"'", "&apos;"}, {"\"", "&quot;"}});
}

std::string abslDecode(std::string const& text) {
    return absl::StrReplaceAll(
        text, {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&apos;", "'"}, {"&quot;", "\""}});
}

/// Returns text in which about `percent` of a hundred characters are markup.
std::string markupText(std::size_t length, int percent) {
    std::string text = randomText(length);
    for (char& c : text) {
        if (randomInt(0, 99) < percent)
            c = "&<>'\""[randomInt(0, 4)];
    }
    return text;
}

void addEscapeRows(std::string const& name, String const& plain) {
    Row("markup: encode " + name, plain)
        .library(String::encodeHtml)
        .peer("std", stdEncode)
        .peer("absl", abslEncode);
    Row("markup: decode " + name, String::encodeHtml(plain))
        .library(String::decodeHtml)
        .peer("std", stdDecode)
        .peer("absl", abslDecode);
}

// No peer replaces elements, so a user would write the loop. `isOpening` checks the character after
// "<name".

bool isOpening(std::string_view text, std::size_t afterName) {
    return afterName < text.size() && std::strchr(" \t\r\n/>", text[afterName]) != nullptr;
}

/// Returns the end of the element whose opening tag ends at `from`; npos if it is not closed.
/// Counts nested elements of the same name.
std::size_t stdElementEnd(std::string_view text, std::string_view open, std::string_view close,
                          std::size_t from) {
    std::size_t depth = 1;
    std::size_t nextOpen = text.find(open, from);
    std::size_t nextClose = text.find(close, from);
    while (nextClose != std::string_view::npos) {
        if (nextOpen < nextClose) {
            std::size_t const end = text.find('>', nextOpen);
            if (isOpening(text, nextOpen + open.size()) && text[end - 1] != '/')
                ++depth;
            nextOpen = text.find(open, nextOpen + open.size());
        } else {
            if (--depth == 0)
                return nextClose + close.size();
            nextClose = text.find(close, nextClose + close.size());
        }
    }
    return std::string_view::npos;
}

std::string stdReplaceElement(std::string_view text, std::string const& name,
                              std::string_view replacement) {
    std::string const open = '<' + name;
    std::string const close = "</" + name + '>';
    std::string result;
    std::size_t copied = 0;
    std::size_t start = text.find(open);
    while (start != std::string_view::npos) {
        std::size_t next = start + open.size();
        std::size_t const tagEnd = text.find('>', next);
        if (tagEnd == std::string_view::npos)
            break;
        if (isOpening(text, next)) {
            std::size_t const end =
                text[tagEnd - 1] == '/' ? tagEnd + 1 : stdElementEnd(text, open, close, tagEnd + 1);
            if (end != std::string_view::npos) {
                result += text.substr(copied, start - copied);
                result += replacement;
                copied = next = end;
            }
        }
        start = text.find(open, next);
    }
    result += text.substr(copied);
    return result;
}

auto addReplaceRow(std::string const& name, String const& text) {
    return Row("element: replace " + name, text)
        .library([](String const& all) { return all.replaceElement("item", "X"); })
        .peer("std", [](std::string const& all) { return stdReplaceElement(all, "item", "X"); });
}

} // namespace

void addRows() {
    addEscapeRows("64 KB without markup", markupText(64 * 1024, 0));
    addEscapeRows("64 KB, a tenth of it markup", markupText(64 * 1024, 10));
    addEscapeRows("64 KB, all of it markup", markupText(64 * 1024, 100));
    addEscapeRows("20 characters with markup", "if (a < b && c > d) ");

    using test::repeated;
    std::string const word = randomText(40);
    std::string const sibling = "<item id='1'>" + word + "</item><b>" + word + "</b>";
    addReplaceRow("500 siblings", repeated(sibling, 500))
        .peer("std::regex", [](std::string const& text) {
            static std::regex const element("<item[^>]*>[^<]*</item>");
            return std::regex_replace(text, element, "X");
        });
    addReplaceRow("500 nested", repeated("<item>" + word, 500) + repeated(word + "</item>", 500));
    addReplaceRow("500 unclosed", repeated("<item>" + word, 500));
    addReplaceRow("in a short text", "1<item>2</item>3<item/>4");
}

} // namespace bench
