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
    bool selfClosing;  // only of an opening tag
};

/// The start of every opening tag of an element, and its whole closing tag.
struct Patterns {
    explicit Patterns(std::string_view name) {
        opening += name;
        closing += name;
        closing += '>';
    }

    std::string opening = "<";
    std::string closing = "</";
};

/// Finds the opening tags of an element, one after another.
class OpenTagScan {
public:
    OpenTagScan(std::string_view text, Patterns const& patterns, std::size_t from)
        : text_(text), pattern_(patterns.opening), position_(from) {}

    /// The next tag that ends before `limit`. A tag that ends later is found by a later call, with
    /// a larger limit. Nothing is scanned twice, so a whole walk is linear.
    bool next(std::size_t limit, Tag& tag);

    void moveTo(std::size_t position) { position_ = position; }

private:
    std::string_view text_;
    SearchPattern pattern_;
    std::size_t position_; // the next tag does not start before it
};

bool OpenTagScan::next(std::size_t limit, Tag& tag) {
    // Equivalent: no tag starts one character before or after the limit, where the text ends or a
    // closing tag starts
    std::string_view const shown = text_.substr(0, limit + pattern_.size() - 1);
    std::size_t start;
    while ((start = pattern_.findIn(shown, position_)) != npos) {
        std::size_t end = start + pattern_.size();
        char const next = end < text_.size() ? text_[end] : '\0';
        bool selfClosing = false;
        if (isBlank(next) || (next == '/' && text_.substr(end + 1, 1) == ">")) {
            end = text_.find('>', end);
            selfClosing = end != npos && text_[end - 1] == '/';
        } else if (next != '>') {
            position_ = end;
            continue;
        }
        // Equivalent: the text ends or a "<" follows at the limit, so no tag ends there
        bool const isShown = end < limit;
        position_ = isShown ? end : start;
        tag = {start, end, selfClosing};
        return isShown;
    }
    position_ = std::max(position_, limit);
    return false;
}

/// Finds the closing tags of an element, one after another.
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
    std::size_t start;
    std::size_t end;       // the position after its last tag; npos until it is closed
    std::size_t enclosing; // the index of the innermost element that is open around it, or npos
};

/// Finds all elements of the name, nested ones too, in the order of their opening tags. The open
/// elements form a stack, from which each closing tag takes the innermost. So unclosed elements
/// cost no more than others.
std::vector<Element> findElements(std::string_view text, std::string_view name) {
    Patterns const patterns(name);
    // Closing tags of such a name can overlap, so it matters where their search starts.
    bool const canOverlap = name.find('<') != npos && name.find('>') != npos;
    std::vector<Element> elements;
    std::size_t innermost = npos; // the top of the stack
    OpenTagScan opens(text, patterns, 0);
    CloseTagScan closes(text, patterns, npos); // moved before each search
    auto const enter = [&](Tag const& tag) {
        elements.push_back({tag.start, tag.selfClosing ? tag.end + 1 : npos, innermost});
        if (!tag.selfClosing)
            innermost = elements.size() - 1;
    };
    auto const enterUntil = [&](std::size_t limit) {
        Tag tag;
        while (opens.next(limit, tag))
            enter(tag);
    };
    Tag first;
    while (opens.next(text.size(), first)) {
        std::size_t const outermost = elements.size();
        enter(first);
        closes.moveTo(first.end);
        Tag close = first;
        while (innermost != npos && closes.next(close)) {
            enterUntil(close.start);
            elements[innermost].end = close.end + 1;
            innermost = elements[innermost].enclosing;
        }
        if (innermost == npos) {
            opens.moveTo(close.end);
        } else if (canOverlap) {
            elements.resize(outermost);
            innermost = npos;
            opens.moveTo(first.end);
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
