#include "misc/zntl_Markup.h"

#include "misc/internal/zntl_SearchPattern.h"
#include "misc/internal/zntl_blank.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace zntl {

namespace {

constexpr std::size_t npos = std::string_view::npos;

struct Tag {
    std::size_t start; // the "<"
    std::size_t end;   // the ">"
    bool selfClosing;
};

/// What the tags of an element begin with, or are.
struct Patterns {
    explicit Patterns(std::string_view name) {
        opening += name;
        closing += name;
        closing += '>';
    }

    std::string opening = "<";
    std::string closing = "</";
};

/// Walks the opening tags of an element, from a position on, as if the text ended at a limit that
/// moves ahead from call to call. What is found out about a text that ends earlier and stays true
/// when more of it is shown is not looked at again, so a whole walk is linear.
class OpenTagScan {
public:
    OpenTagScan(std::string_view text, Patterns const& patterns, std::size_t from)
        : text_(text), pattern_(patterns.opening), position_(from) {}

    bool next(std::size_t limit, Tag& tag);

    void moveTo(std::size_t position) { position_ = position; }

private:
    std::string_view text_;
    SearchPattern pattern_;
    std::size_t position_; // no tag that is still to be found starts before it
};

bool OpenTagScan::next(std::size_t limit, Tag& tag) {
    std::string_view const shown = text_.substr(0, limit);
    while (true) {
        tag.start = pattern_.findIn(shown, position_);
        if (tag.start == npos) {
            // The pattern may still begin in the last characters and go on behind the limit.
            std::size_t const tail = pattern_.size() - 1;
            if (shown.size() > tail && position_ < shown.size() - tail)
                position_ = shown.size() - tail;
            return false;
        }
        // From here on a tag that is cut off by the limit is looked at again with the next one.
        position_ = tag.start;
        tag.end = tag.start + pattern_.size();
        if (tag.end >= shown.size())
            return false;
        char const behindName = shown[tag.end];
        if (behindName == '>') {
            tag.selfClosing = false;
            break;
        }
        if (isBlank(behindName)) {
            tag.end = shown.find('>', tag.end + 1);
            if (tag.end == npos)
                return false;
            tag.selfClosing = shown[tag.end - 1] == '/';
            break;
        }
        if (behindName == '/') {
            ++tag.end;
            if (tag.end == shown.size())
                return false;
            if (shown[tag.end] == '>') {
                tag.selfClosing = true;
                break;
            }
        }
        position_ = tag.end; // a longer name, or a "/" within the tag
    }
    position_ = tag.end;
    return true;
}

/// Walks the closing tags of an element.
class CloseTagScan {
public:
    CloseTagScan(std::string_view text, Patterns const& patterns, std::size_t from)
        : text_(text), pattern_(patterns.closing), position_(from) {}

    bool next(Tag& tag) {
        tag.start = pattern_.findIn(text_, position_);
        if (tag.start == npos)
            return false;
        position_ = tag.start + pattern_.size();
        tag.end = position_ - 1;
        tag.selfClosing = false;
        return true;
    }

    void moveTo(std::size_t position) { position_ = position; }

private:
    std::string_view text_;
    SearchPattern pattern_;
    std::size_t position_;
};

bool findMatchingCloseTag(std::string_view text, std::size_t from, Patterns const& patterns,
                          Tag& close) {
    OpenTagScan opens(text, patterns, from);
    CloseTagScan closes(text, patterns, from);
    std::size_t depth = 1; // the element opened before `from`
    while (closes.next(close)) {
        Tag open;
        while (opens.next(close.start, open))
            depth += open.selfClosing ? 0 : 1;
        if (--depth == 0)
            return true;
    }
    return false;
}

struct Element {
    std::size_t start = 0;
    std::size_t end = npos; // after the ">" of its last tag, once it is closed
};

/// All elements of the name, those inside others too, in the order of their opening tags. A stack
/// gives each closing tag its innermost open element, so that unclosed ones cost no more.
std::vector<Element> findElements(std::string_view text, std::string_view name) {
    Patterns const patterns(name);
    // Tags of such a name can overlap, and then it matters where a search starts.
    bool const canOverlap = name.find('<') != npos && name.find('>') != npos;
    std::vector<Element> elements;
    std::vector<std::size_t> open; // which of them are not closed yet, the innermost last
    OpenTagScan opens(text, patterns, 0);
    CloseTagScan closes(text, patterns, 0);
    auto const enter = [&](Tag const& tag) {
        if (!tag.selfClosing)
            open.push_back(elements.size());
        Element& element = elements.emplace_back();
        element.start = tag.start;
        if (tag.selfClosing)
            element.end = tag.end + 1;
    };
    auto const enterUntil = [&](std::size_t limit) {
        Tag tag;
        while (opens.next(limit, tag))
            enter(tag);
    };
    Tag first;
    while (opens.next(text.size(), first)) {
        std::size_t const outermost = elements.size();
        open.clear();
        enter(first);
        if (first.selfClosing)
            continue;
        closes.moveTo(first.end + 1);
        Tag close = first;
        while (!open.empty() && closes.next(close)) {
            enterUntil(close.start);
            elements[open.back()].end = close.end + 1;
            open.pop_back();
        }
        if (open.empty()) {
            opens.moveTo(close.end + 1);
        } else if (canOverlap) {
            elements.resize(outermost);
            opens.moveTo(first.end + 1);
        } else {
            enterUntil(text.size()); // no closing tag is left
        }
    }
    return elements;
}

} // namespace

std::string renderElement(char const* name, std::string_view content) {
    if (!name)
        return {};
    std::string_view const element = name;
    std::string xml(2 * element.size() + content.size() + std::strlen("<></>"), '\0');
    char* out = xml.data();
    *out++ = '<';
    out = std::copy(element.begin(), element.end(), out);
    *out++ = '>';
    out = std::copy(content.begin(), content.end(), out);
    *out++ = '<';
    *out++ = '/';
    out = std::copy(element.begin(), element.end(), out);
    *out = '>';
    return xml;
}

std::string renderElement(char const* name) {
    if (!name)
        return {};
    std::string xml = "<";
    xml += name;
    xml += "/>";
    return xml;
}

bool findOpenTag(String const& text, unsigned int from, String const& name, unsigned int& start,
                 unsigned int& end, bool& selfClosing) {
    Patterns const patterns(name);
    Tag tag;
    if (!OpenTagScan(text, patterns, from).next(text.size(), tag))
        return false;
    start = static_cast<unsigned int>(tag.start);
    end = static_cast<unsigned int>(tag.end);
    selfClosing = tag.selfClosing;
    return true;
}

bool findCloseTag(String const& text, unsigned int from, String const& name, unsigned int& start,
                  unsigned int& end) {
    Tag tag;
    if (!findMatchingCloseTag(text, from, Patterns(name), tag))
        return false;
    start = static_cast<unsigned int>(tag.start);
    end = static_cast<unsigned int>(tag.end);
    return true;
}

String String::replaceElement(String const& name, String const& replacement) const {
    String result;
    std::size_t copied = 0;
    for (Element const& element : findElements(*this, name)) {
        if (element.end == npos || element.start < copied)
            continue; // not closed, or inside the one before
        result.append(*this, copied, element.start - copied);
        result += replacement;
        copied = element.end;
    }
    result.append(*this, copied);
    return result;
}

} // namespace zntl
