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

    /// Finds the next tag that ends before `limit`; returns false if there is none. A later call
    /// with a larger limit finds the tags that end later. All calls together take linear time.
    bool next(std::size_t limit, Tag& tag);

    void moveTo(std::size_t position) { position_ = position; }

private:
    std::string_view text_;
    SearchPattern pattern_;
    std::size_t position_; // the next tag does not start before it
};

bool OpenTagScan::next(std::size_t limit, Tag& tag) {
    // Equivalent: at the limit the text ends or a closing tag starts, so no opening tag starts next
    // to it
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

/// Finds the elements of a name, one after another, without those inside closed elements.
class ElementScan {
public:
    ElementScan(std::string_view text, Patterns const& patterns)
        : text_(text), opens_(text, patterns, 0), closes_(text, patterns, npos) {}

    bool next(Tag& open) { return opens_.next(text_.size(), open); }

    /// Returns the position after the element that `open` opens, and continues there; npos if it is
    /// not closed. The open elements inside it form a stack, from which each closing tag takes the
    /// innermost.
    std::size_t skipElement(Tag const& open) {
        inner_.clear();
        innermost_ = npos;
        closes_.moveTo(open.end);
        Tag close;
        while (closes_.next(close)) {
            enterUntil(close.start);
            if (innermost_ == npos) {
                opens_.moveTo(close.end);
                return close.end + 1;
            }
            inner_[innermost_].end = close.end + 1;
            innermost_ = inner_[innermost_].enclosing;
        }
        return npos;
    }

    /// Continues after the opening tag of an element that is not closed.
    void skipTag(Tag const& open) { opens_.moveTo(open.end); }

    /// Returns all elements inside an element that is not closed, in the order of their opening
    /// tags. No closing tag is left after them.
    std::vector<Element> const& skipRest() {
        enterUntil(text_.size());
        return inner_;
    }

private:
    void enterUntil(std::size_t limit) {
        Tag tag;
        while (opens_.next(limit, tag)) {
            inner_.push_back({tag.start, tag.selfClosing ? tag.end + 1 : npos, innermost_});
            if (!tag.selfClosing)
                innermost_ = inner_.size() - 1;
        }
    }

    std::string_view text_;
    OpenTagScan opens_;
    CloseTagScan closes_;
    std::vector<Element> inner_;
    std::size_t innermost_ = npos; // the top of the stack
};

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
    Patterns const patterns(name);
    // Closing tags of such a name can overlap, so each element needs its own search for them.
    bool const canOverlap = name.find('<') != npos && name.find('>') != npos;
    String result;
    std::size_t copied = 0;
    auto const replace = [&](std::size_t start, std::size_t end) {
        result.append(*this, copied, start - copied);
        result += replacement;
        copied = end;
    };
    ElementScan scan(*this, patterns);
    Tag open;
    while (scan.next(open)) {
        std::size_t const end = open.selfClosing ? open.end + 1 : scan.skipElement(open);
        if (end != npos) {
            replace(open.start, end);
        } else if (canOverlap) {
            scan.skipTag(open);
        } else {
            for (Element const& element : scan.skipRest()) {
                // Skips elements inside a replaced one.
                if (element.end != npos && element.start >= copied)
                    replace(element.start, element.end);
            }
        }
    }
    result.append(*this, copied);
    return result;
}

} // namespace zntl
