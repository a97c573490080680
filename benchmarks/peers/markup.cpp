// Markup: encoded, decoded, replaced, searched.

#include "support/data.h"
#include "support/row.h"

#include "misc/zntl_Markup.h"
#include "misc/zntl_String.h"

#include <absl/strings/str_replace.h>
#include <boost/algorithm/string/replace.hpp>

#include <cstring>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

namespace {

// What a user of the standard library writes: one pass, appending.

std::string stdEncode(std::string const& text) {
    std::string result;
    result.reserve(text.size());
    for (char const c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '\'':
            result += "&apos;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

constexpr std::pair<std::string_view, char> entities[] = {
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&apos;", '\''}, {"&quot;", '"'}};

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

std::string boostEncode(std::string text) {
    boost::replace_all(text, "&", "&amp;");
    boost::replace_all(text, "<", "&lt;");
    boost::replace_all(text, ">", "&gt;");
    boost::replace_all(text, "'", "&apos;");
    boost::replace_all(text, "\"", "&quot;");
    return text;
}

std::string boostDecode(std::string text) {
    boost::replace_all(text, "&amp;", "&");
    boost::replace_all(text, "&lt;", "<");
    boost::replace_all(text, "&gt;", ">");
    boost::replace_all(text, "&apos;", "'");
    boost::replace_all(text, "&quot;", "\"");
    return text;
}

std::string abslEncode(std::string const& text) {
    return absl::StrReplaceAll(
        text, {{"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"'", "&apos;"}, {"\"", "&quot;"}});
}

std::string abslDecode(std::string const& text) {
    return absl::StrReplaceAll(
        text, {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&apos;", "'"}, {"&quot;", "\""}});
}

auto copying(std::string const& text) {
    return [=, copy = text]() mutable {
        std::memcpy(copy.data(), text.data(), text.size());
        return copy.data();
    };
}

/// One character in `spacing` is markup; none when it is 0.
std::string markupText(std::size_t length, int spacing) {
    generator().seed(5);
    std::string text = randomText(length);
    for (char& c : text) {
        if (spacing != 0 && randomInt(1, spacing) == 1)
            c = "&<>'\""[randomInt(0, 4)];
    }
    return text;
}

void addEscapeRows(std::string const& name, std::string const& plain) {
    Row("markup: encode " + name)
        .library([text = zntl::String(plain)] { return zntl::String::encodeHtml(text); })
        .peer("std", [=] { return stdEncode(plain); })
        .peer("boost", [=] { return boostEncode(plain); })
        .peer("absl", [=] { return abslEncode(plain); })
        .limit("memcpy", copying(plain));
    std::string const encoded = stdEncode(plain);
    Row("markup: decode " + name)
        .library([text = zntl::String(encoded)] { return zntl::String::decodeHtml(text); })
        .peer("std", [=] { return stdDecode(encoded); })
        .peer("boost", [=] { return boostDecode(encoded); })
        .peer("absl", [=] { return abslDecode(encoded); })
        .limit("memcpy", copying(encoded));
}

// Elements: no peer knows them, so a user writes the loop. `isOpening` looks at the text behind
// "<name".

bool isOpening(std::string_view text, std::size_t behindName) {
    return behindName < text.size() && std::strchr(" \t\r\n/>", text[behindName]) != nullptr;
}

/// The end of the element whose opening tag ends at `from`: every tag of the name on the way counts
/// up or down. npos when it is not closed.
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

std::string repeated(std::string const& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

void addReplaceRow(std::string const& name, std::string const& plain) {
    Row("element: replace " + name)
        .library([text = zntl::String(plain)] { return text.replaceElement("item", "X"); })
        .peer("std", [=] { return stdReplaceElement(plain, "item", "X"); })
        .limit("memcpy", copying(plain));
}

void addElementRows() {
    generator().seed(6);
    std::string const word = randomText(40);
    std::string const siblings =
        repeated("<item id='1'>" + word + "</item><b>" + word + "</b>", 500);
    addReplaceRow("500 siblings", siblings);
    addReplaceRow("500 nested", repeated("<item>" + word, 500) + repeated(word + "</item>", 500));
    addReplaceRow("500 unclosed", repeated("<item>" + word, 500));
    addReplaceRow("without a hit", repeated("<b>" + word + "</b>", 1000));
    addReplaceRow("in a short text", "1<item>2</item>3<item/>4");

    static std::regex const element("<item[^>]*>[^<]*</item>");
    Row("element: replace 500 siblings, by a pattern")
        .library([text = zntl::String(siblings)] { return text.replaceElement("item", "X"); })
        .peer("std::regex", [=] { return std::regex_replace(siblings, element, "X"); });

    std::string const far = repeated("<items>" + word + "</items>", 200) + "<item id='1'>";
    Row("tag: find an opening tag behind 20 KB")
        .library([text = zntl::String(far), name = zntl::String("item")] {
            unsigned int start;
            unsigned int end;
            bool selfClosing;
            zntl::findOpenTag(text, 0, name, start, end, selfClosing);
            return start + end;
        })
        .peer("std",
              [=] {
                  std::size_t start = far.find("<item");
                  while (!isOpening(far, start + 5))
                      start = far.find("<item", start + 5);
                  return static_cast<unsigned int>(start + far.find('>', start));
              })
        .limit("memchr", [=] { return std::memchr(far.data(), '\1', far.size()); });

    std::string const nested = repeated("<item>" + word, 200) + repeated(word + "</item>", 200);
    Row("tag: find the closing tag of 200 nested ones")
        .library([text = zntl::String(nested), name = zntl::String("item")] {
            unsigned int start;
            unsigned int end;
            zntl::findCloseTag(text, 6, name, start, end);
            return end;
        })
        .peer("std",
              [=] {
                  return static_cast<unsigned int>(stdElementEnd(nested, "<item", "</item>", 6) -
                                                   1);
              })
        .limit("memchr", [=] { return std::memchr(nested.data(), '\1', nested.size()); });
}

[[maybe_unused]] bool const added = [] {
    addEscapeRows("64 KB without markup", markupText(64 * 1024, 0));
    addEscapeRows("64 KB, a tenth of it markup", markupText(64 * 1024, 10));
    addEscapeRows("64 KB, all of it markup", markupText(64 * 1024, 1));
    addEscapeRows("20 characters without markup", markupText(20, 0));
    addEscapeRows("20 characters with markup", "if (a < b && c > d) ");
    addElementRows();
    return true;
}();

} // namespace

} // namespace bench
