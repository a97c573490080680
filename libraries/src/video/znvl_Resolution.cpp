#include "video/znvl_Resolution.h"

#include "misc/internal/zntl_bytes.h"
#include "misc/internal/zntl_decimal.h"
#include "streams/znsl_Members.h"
#include "system/znml_constants.h" // Contract: this file has its own copy, though nothing reads it

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <strings.h>
#include <typeinfo>

namespace znvl {

namespace {

constexpr unsigned int binLength = 8; // two integers

// Contract: both XML operations report line 26, because programs and logs may compare the message.
constexpr znsl::Members::Place withoutXML{"../../../../../libraries/src/video/znvl_Resolution", 26,
                                          "znvl::Resolution"};

/// Rounds to the nearest integer, halves away from zero. Saturates at 32 bits; returns 0 for NaN.
int roundToInt(float x) {
    // Contract: x + 0.5F is rounded to float before it is truncated, so 0.49999997F becomes 1.
    // Every target must return the same sizes.
    constexpr float limit = 2147483648.0F;
    if (std::isnan(x))
        return 0;
    if (x >= limit)
        return INT_MAX;
    return static_cast<int>(std::max(x, -limit) + std::copysign(0.5F, x));
}

char const* skipSpace(char const* text) {
    while (zntl::isSpace(*text))
        ++text;
    return text;
}

/// Scans two numbers as the C library does for "%d x %d", except that numbers beyond 32 bits
/// saturate on every machine.
bool scanSize(char const* text, Resolution& size) {
    zntl::Decimal const first = zntl::parseDecimal(text);
    char const* const separator = skipSpace(first.end);
    if (first.end == text || *separator != 'x')
        return false;
    zntl::Decimal const second = zntl::parseDecimal(separator + 1);
    if (second.end == separator + 1)
        return false;
    size.width = first.value;
    size.height = second.value;
    return true;
}

/// The entry of ResolutionStrings for a name in any letter case; null if there is no such name.
char const* findSize(char const* name) {
    for (std::size_t i = 0; Resolution::NameStrings[i]; ++i) {
        if (strcasecmp(name, Resolution::NameStrings[i]) == 0)
            return Resolution::ResolutionStrings[i];
    }
    return nullptr;
}

/// Whether the object is exactly a Resolution. Its eight bytes are then read and written directly,
/// because building the list of members takes much longer. A subclass may list other members.
bool isPlain(Resolution const& resolution) { return typeid(resolution) == typeid(Resolution); }

} // namespace

char const* Resolution::NameStrings[] = {"QCIF", "CIF", "4CIF", "720p", "1080p", nullptr};

char const* Resolution::ResolutionStrings[] = {"176x144",  "352x288",   "704x576",
                                               "1280x720", "1920x1080", nullptr};

// Contract: not const, because programs compiled earlier link with that symbol. A 0x0 operand makes
// the result 0x0, although the other operand is larger.
Resolution Resolution::getMax(Resolution const& other) {
    Resolution const none;
    if (*this == none || other == none)
        return {};
    return {std::max(width.getValue(), other.width.getValue()),
            std::max(height.getValue(), other.height.getValue())};
}

Resolution Resolution::scale(Resolution const& bounds) const {
    int const boundsWidth = bounds.width.getValue();
    int const boundsHeight = bounds.height.getValue();
    if (boundsWidth <= 0 || boundsHeight <= 0 || *this == bounds)
        return *this;
    float const aspect =
        static_cast<float>(width.getValue()) / static_cast<float>(height.getValue());
    float const fitHeight = static_cast<float>(boundsWidth) / aspect;
    if (fitHeight > static_cast<float>(boundsHeight))
        return {roundToInt(aspect * static_cast<float>(boundsHeight)), boundsHeight};
    return {boundsWidth, roundToInt(fitHeight)};
}

bool Resolution::fromString(zntl::String const& text) {
    char const* size = text.c_str();
    // The entry found may itself be a name. The limit ends the search if names refer to each other.
    for (std::size_t i = 0; size && i < std::size(NameStrings); ++i) {
        if (scanSize(size, *this))
            return true;
        size = findSize(size);
    }
    return false;
}

zntl::String Resolution::toNameString() const {
    constexpr std::size_t number = zntl::maxDecimalLength;
    // Equivalent: a larger array only takes memory
    char size[number + sizeof "x" + number];
    char* end = std::to_chars(size, size + number, width.getValue()).ptr;
    *end++ = 'x';
    end = std::to_chars(end, end + number, height.getValue()).ptr;
    *end = '\0';
    for (std::size_t i = 0; ResolutionStrings[i]; ++i) {
        // Most sizes already differ in the first character, which is cheaper than a call.
        if (*ResolutionStrings[i] == *size && strcasecmp(ResolutionStrings[i], size) == 0)
            return NameStrings[i];
    }
    return size;
}

unsigned int Resolution::getTypeId() const { return 815; }

std::string Resolution::getTypeName() const { return "Resolution"; }

std::string Resolution::toXML() const { return toXML("Resolution"); }

std::string Resolution::toXML(char const* element) const {
    return znsl::Members(*this).toXML(element, withoutXML);
}

bool Resolution::fromXML(char const* xml) { return znsl::Members(*this).fromXML(xml, withoutXML); }

unsigned int Resolution::getBinLength() const {
    return isPlain(*this) ? binLength : znsl::Members(*this).getBinLength();
}

unsigned int Resolution::toBin(unsigned char* out) const {
    if (!isPlain(*this))
        return znsl::Members(*this).toBin(out);
    zntl::storeNative(zntl::storeNative(out, width.getValue()), height.getValue());
    return binLength;
}

unsigned int Resolution::fromBin(unsigned char const* data, unsigned int length) {
    if (!isPlain(*this))
        return znsl::Members(*this).fromBin(data, length);
    unsigned int const offset = width.fromBin(data, length);
    return offset + height.fromBin(data + offset, length - offset);
}

void Resolution::fillSerializable(std::list<znsl::Serializable*>& list,
                                  std::map<std::string, znsl::Serializable*>& /*table*/) const {
    // The same list serves reading and writing, so its pointers are not const.
    list.push_back(const_cast<zntl::Integer*>(&width));
    list.push_back(const_cast<zntl::Integer*>(&height));
}

} // namespace znvl
