#include "misc/zntl_String.h"

#include "misc/internal/zntl_binLength.h"
#include "misc/internal/zntl_bytes.h"
#include "misc/internal/zntl_decimal.h"
#include "misc/zntl_Markup.h"
#include "system/zn_portability.h"
#include "xml/znxml_DomIterator.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <strings.h>

namespace zntl {

String& String::operator=(std::string const& text) {
    assign(text);
    return *this;
}

String& String::operator=(std::string&& text) noexcept {
    assign(std::move(text));
    return *this;
}

String& String::operator=(char const* text) {
    assign(text ? text : "");
    return *this;
}

String String::fromEnvVarible(char const* name) { return {name ? std::getenv(name) : nullptr}; }

int String::iCompare(String const& other) const { return strcasecmp(c_str(), other.c_str()); }

bool String::toBool() const {
    for (char const* const word : {"true", "t", "yes", "y", "on"}) {
        if (zn_stricmp(c_str(), word) == 0)
            return true;
    }
    return parseDecimal(c_str()).value != 0;
}

unsigned int String::toUnsignedInt() const {
    return static_cast<unsigned int>(std::max(parseDecimal(c_str()).value, 0));
}

String::operator SmartArray<char>() const {
    std::size_t const count = size() + 1;
    std::unique_ptr<char[]> buffer(new char[count]);
    std::memcpy(buffer.get(), c_str(), std::strlen(c_str()) + 1);
    return {buffer.release(), static_cast<unsigned int>(count)};
}

unsigned int String::copyString(char* out, unsigned int max) const {
    std::size_t const copied = copy(out, max);
    out[copied] = '\0';
    return static_cast<unsigned int>(copied);
}

String String::toLower() const {
    String text(c_str());
    zn_strlwr(text.data());
    return text;
}

// Unreached: the process faults before it can save the counts.
String String::toUpper() const {
    String text(c_str());
    zn_strupr(text.data());
    return text;
}

bool String::isNumeric(bool& isInteger) const {
    isInteger = true;
    bool content = false;
    bool blank = false; // a blank after content: the number has ended
    for (char const c : *this) {
        if (c == '\t' || c == ' ') {
            blank = content;
        } else if (c >= '0' && c <= '9') {
            if (blank)
                return false;
            content = true;
        } else if ((c == '+' || c == '-') && !content) {
            content = true;
        } else if (c == '.' && isInteger && !blank) {
            isInteger = false;
            content = true;
        } else {
            return false;
        }
    }
    return content;
}

String String::padEnd(unsigned int width, char fill) const {
    String text(*this);
    text.resize(std::max<std::size_t>(text.size(), width), fill);
    return text;
}

unsigned int String::getTypeId() const { return typeId; }

std::string String::getTypeName() const { return "zntl_String"; }

std::string String::toXML() const { return toXML("zntl_String"); }

std::string String::toXML(char const* name) const {
    return empty() ? renderElement(name) : renderElement(name, encodeHtml(*this));
}

bool String::fromXML(char const* xml) {
    auto const root = znxml::DomIterator::parse(xml);
    if (root.atEnd())
        return false;
    *this = root.getValue();
    return true;
}

unsigned int String::getBinLength() const {
    // The length field, the characters and a NUL.
    return binLength(sizeof(std::uint32_t) + std::uint64_t{size()} + 1);
}

unsigned int String::toBin(unsigned char* out) const {
    unsigned int const length = String::getBinLength();
    unsigned char* const text = storeNative(out, static_cast<std::uint32_t>(size()));
    std::memcpy(text, c_str(), size() + 1);
    return length;
}

bool String::canReadBin(unsigned char const* data, unsigned int length) {
    constexpr unsigned int start = sizeof(std::uint32_t);
    // The text is usually the whole form, so its NUL is the last byte.
    return length > start &&
           (data[length - 1] == 0 || std::memchr(data + start, 0, length - start) != nullptr);
}

// Contract: reads up to the first NUL and ignores both lengths, the stored one and `length`.
unsigned int String::fromBin(unsigned char const* data, unsigned int /*length*/) {
    assign(reinterpret_cast<char const*>(data + sizeof(std::uint32_t)));
    return getBinLength();
}

} // namespace zntl
