#include "misc/zntl_Markup.h"

#include "misc/internal/zntl_blank.h"
#include "misc/internal/zntl_findPattern.h"

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

/// Finds the tags of an element `name`, the opening and the closing ones each from left to right.
class TagScan {
public:
    TagScan(std::string_view text, std::string_view name, std::size_t from)
        : text_(text), opensFrom_(from), closesFrom_(from) {
        opening_ += name;
        closing_ += name;
        closing_ += '>';
    }

    /// Finds the next opening tag that ends before `limit`; returns false if there is none. A later
    /// call with a larger limit finds the tags that end later. All calls together take linear time.
    bool nextOpening(std::size_t limit, Tag& tag);

    bool nextClosing(Tag& tag);

    /// Finds the closing tag of the element whose content starts at `from`.
    bool nextMatching(Tag& tag);

    void moveTo(std::size_t position) { opensFrom_ = closesFrom_ = position; }

private:
    std::string_view text_;
    std::string opening_ = "<"; // the start of every opening tag
    std::string closing_ = "</";
    std::size_t opensFrom_;
    std::size_t closesFrom_;
};

bool TagScan::nextOpening(std::size_t limit, Tag& tag) {
    // Shows all matches that start before the limit, because the end of this function skips the
    // text up to there. If the name contains "<", a match can end after the limit. Equivalent: the
    // text ends or a closing tag starts at the limit, so no opening tag starts there
    std::string_view const shown = text_.substr(0, limit + opening_.size() - 1);
    while ((tag.start = findPattern(shown, opening_, opensFrom_)) != npos) {
        tag.end = tag.start + opening_.size();
        tag.selfClosing = false;
        char const next = tag.end < text_.size() ? text_[tag.end] : '\0';
        if (isBlank(next) || (next == '/' && text_.substr(tag.end + 1, 1) == ">")) {
            tag.end = text_.find('>', tag.end);
            tag.selfClosing = tag.end != npos && text_[tag.end - 1] == '/';
        } else if (next != '>') {
            // Contract: misses a tag that overlaps this match: "<a<a>" in "<a<a<a>".
            opensFrom_ = tag.end;
            continue;
        }
        // Equivalent: the text ends or a "<" follows at the limit, so no tag ends there
        bool const isShown = tag.end < limit;
        opensFrom_ = isShown ? tag.end : tag.start;
        return isShown;
    }
    opensFrom_ = std::max(opensFrom_, limit);
    return false;
}

bool TagScan::nextClosing(Tag& tag) {
    tag.start = findPattern(text_, closing_, closesFrom_);
    if (tag.start == npos)
        return false;
    closesFrom_ = tag.start + closing_.size();
    tag.end = closesFrom_ - 1;
    return true;
}

bool TagScan::nextMatching(Tag& tag) {
    std::size_t depth = 1;
    while (nextClosing(tag)) {
        Tag nested;
        while (nextOpening(tag.start, nested))
            depth += nested.selfClosing ? 0 : 1;
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

} // namespace

std::string renderElement(char const* name, std::string_view content) {
    if (!name)
        return {};
    std::string_view const element = name;
    // Filled in place, because appending the parts is slower.
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
    Tag tag;
    if (!TagScan(text, name, from).nextOpening(text.size(), tag))
        return false;
    start = static_cast<unsigned int>(tag.start);
    end = static_cast<unsigned int>(tag.end);
    selfClosing = tag.selfClosing;
    return true;
}

bool findCloseTag(String const& text, unsigned int from, String const& name, unsigned int& start,
                  unsigned int& end) {
    Tag tag;
    if (!TagScan(text, name, from).nextMatching(tag))
        return false;
    start = static_cast<unsigned int>(tag.start);
    end = static_cast<unsigned int>(tag.end);
    return true;
}

// Each closing tag closes the innermost open element, so the open elements form a stack.
String String::replaceElement(String const& name, String const& replacement) const {
    std::vector<Element> elements; // an outermost element and those inside it
    std::size_t innermost;         // the index of the innermost open element, or npos
    auto const enter = [&](Tag const& tag) {
        // Filled in place, because copying a new element is slower.
        Element& element = elements.emplace_back();
        element.start = tag.start;
        element.end = tag.selfClosing ? tag.end + 1 : npos;
        element.enclosing = innermost;
        if (!tag.selfClosing)
            innermost = elements.size() - 1;
    };
    // Closing tags of such a name can overlap, so each element needs its own search for them.
    bool const canOverlap = name.find('<') != npos && name.find('>') != npos;
    String result;
    std::size_t copied = 0;
    TagScan tags(*this, name, 0);
    Tag outermost;
    while (tags.nextOpening(size(), outermost)) {
        tags.moveTo(outermost.end);
        elements.clear();
        innermost = npos;
        enter(outermost);
        Tag tag;
        Tag closing;
        while (innermost != npos && tags.nextClosing(closing)) {
            while (tags.nextOpening(closing.start, tag))
                enter(tag);
            elements[innermost].end = closing.end + 1;
            innermost = elements[innermost].enclosing;
        }
        if (innermost == npos) {
            tags.moveTo(elements.front().end);
        } else if (canOverlap) {
            tags.moveTo(outermost.end);
            continue;
        } else {
            // No closing tag is left, but self-closing tags may follow.
            while (tags.nextOpening(size(), tag))
                enter(tag);
        }
        for (Element const& element : elements) {
            // Skips elements that are not closed, and those inside a replaced one.
            if (element.end == npos || element.start < copied)
                continue;
            result.append(*this, copied, element.start - copied);
            result += replacement;
            copied = element.end;
        }
    }
    result.append(*this, copied);
    return result;
}

} // namespace zntl
