#include "video/znvl_Resolution.h"

#include "misc/internal/zntl_bytes.h"
#include "misc/internal/zntl_decimal.h"
#include "streams/znsl_Members.h"
#include "system/znml_constants.h" // Contract: included for its private constants, unused here

#include <algorithm>
#include <climits>
#include <cstddef>
#include <strings.h>
#include <typeinfo>

namespace znvl {

namespace {

constexpr unsigned int binLength = 8; // two integers

// Both XML operations report the same line; kept.
constexpr znsl::Members::Place withoutXML{"../../../../../libraries/src/video/znvl_Resolution", 26,
                                          "znvl::Resolution"};

/// The nearest integer, halves away from zero, saturated; 0 for what is not a number.
int roundToInt(float x) {
    // The sum with a half is rounded to float itself, and that is kept.
    // NOLINTBEGIN(bugprone-incorrect-roundings)
    constexpr float limit = 2147483648.0F;
    if (x >= 0)
        return x >= limit ? INT_MAX : static_cast<int>(x + 0.5F);
    if (x < 0)
        return x <= -limit ? INT_MIN : static_cast<int>(x - 0.5F);
    return 0;
    // NOLINTEND(bugprone-incorrect-roundings)
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

/// The entry of `values` at the place where `keys` holds the first text that `isWanted`; null when
/// there is none.
template <class IsWanted>
char const* lookUp(char const* const* keys, char const* const* values, IsWanted isWanted) {
    for (; *keys; ++keys, ++values) {
        if (isWanted(*keys))
            return *values;
    }
    return nullptr;
}

/// Whether a text is a size, in any letter case; of a size's characters only the "x" has two.
bool equalsSize(char const* text, char const* size) {
    for (; *text == *size || (*text == 'X' && *size == 'x'); ++text, ++size) {
        if (*size == '\0')
            return true;
    }
    return false;
}

// Only a subclass can list other members than the width and the height; for a plain resolution no
// list is made. What makes one stays out of line, so that the others need no room and no clean-up
// for it.

bool isPlain(Resolution const& resolution) { return typeid(resolution) == typeid(Resolution); }

[[gnu::noinline]] unsigned int getMembersLength(Resolution const& resolution) {
    return znsl::Members(resolution).getBinLength();
}

[[gnu::noinline]] unsigned int writeMembers(Resolution const& resolution, unsigned char* out) {
    return znsl::Members(resolution).toBin(out);
}

[[gnu::noinline]] unsigned int readMembers(Resolution const& resolution, unsigned char const* data,
                                           unsigned int length) {
    return znsl::Members(resolution).fromBin(data, length);
}

} // namespace

char const* Resolution::NameStrings[] = {"QCIF", "CIF", "4CIF", "720p", "1080p", nullptr};

char const* Resolution::ResolutionStrings[] = {"176x144",  "352x288",   "704x576",
                                               "1280x720", "1920x1080", nullptr};

// Not const, and a 0x0 on either side makes the result 0x0; both are kept.
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
    // An entry's text may be a name as well.
    while (size && !scanSize(size, *this))
        size = lookUp(NameStrings, ResolutionStrings,
                      [size](char const* named) { return strcasecmp(size, named) == 0; });
    return size != nullptr;
}

zntl::String Resolution::toNameString() const {
    char size[zntl::maxDecimalLength + sizeof "x" + zntl::maxDecimalLength];
    std::size_t length = zntl::writeDecimal(size, width.getValue());
    size[length++] = 'x';
    length += zntl::writeDecimal(size + length, height.getValue());
    size[length] = '\0';
    char const* const sizeName = lookUp(ResolutionStrings, NameStrings,
                                        [&](char const* named) { return equalsSize(named, size); });
    if (sizeName)
        return sizeName;
    return {size, length};
}

unsigned int Resolution::getTypeId() const { return 815; }

std::string Resolution::getTypeName() const { return "Resolution"; }

std::string Resolution::toXML() const { return toXML("Resolution"); }

std::string Resolution::toXML(char const* element) const {
    return znsl::Members(*this).toXML(element, withoutXML);
}

bool Resolution::fromXML(char const* xml) { return znsl::Members(*this).fromXML(xml, withoutXML); }

unsigned int Resolution::getBinLength() const {
    return isPlain(*this) ? binLength : getMembersLength(*this);
}

unsigned int Resolution::toBin(unsigned char* out) const {
    if (!isPlain(*this))
        return writeMembers(*this, out);
    zntl::storeNative(zntl::storeNative(out, width.getValue()), height.getValue());
    return binLength;
}

unsigned int Resolution::fromBin(unsigned char const* data, unsigned int length) {
    if (!isPlain(*this))
        return readMembers(*this, data, length);
    unsigned int const offset = width.fromBin(data, length);
    return offset + height.fromBin(data + offset, length - offset);
}

void Resolution::fillSerializable(std::list<znsl::Serializable*>& list,
                                  std::map<std::string, znsl::Serializable*>& /*table*/) const {
    // One listing serves reading and writing; what is handed out is the members' own business.
    list.push_back(const_cast<zntl::Integer*>(&width));
    list.push_back(const_cast<zntl::Integer*>(&height));
}

} // namespace znvl
