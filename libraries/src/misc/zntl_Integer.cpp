#include "misc/zntl_Integer.h"

#include "misc/internal/zntl_bytes.h"
#include "misc/internal/zntl_decimal.h"
#include "misc/zntl_Exception.h"
#include "system/znml_constants.h" // Contract: included for its private constants, unused here
#include "xml/znxml_DomIterator.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace zntl {

unsigned int Integer::getTypeId() const { return typeId; }

std::string Integer::getTypeName() const { return "Integer"; }

std::string Integer::toXML() const { return toXML("Integer"); }

std::string Integer::toXML(char const* name) const {
    std::string_view const element = name ? name : "";
    // Room for the longest number; what is left over is cut off.
    std::string xml(2 * element.size() + std::strlen("<></>") + maxDecimalLength, '\0');
    char* out = xml.data();
    *out++ = '<';
    out = std::copy(element.begin(), element.end(), out);
    *out++ = '>';
    out += writeDecimal(out, value_);
    *out++ = '<';
    *out++ = '/';
    out = std::copy(element.begin(), element.end(), out);
    *out++ = '>';
    xml.resize(static_cast<std::size_t>(out - xml.data()));
    return xml;
}

bool Integer::fromXML(char const* xml) {
    auto const root = znxml::DomIterator::parse(xml);
    if (root.atEnd())
        return false;
    value_ = parseDecimal(root.getValue().c_str()).value;
    return true;
}

unsigned int Integer::getBinLength() const { return sizeof value_; }

unsigned int Integer::toBin(unsigned char* out) const {
    storeNative(out, value_);
    return sizeof value_;
}

unsigned int Integer::fromBin(unsigned char const* data, unsigned int length) {
    if (length < sizeof value_)
        throw Exception("znsl::Serializable::fromBin() - Failed!");
    value_ = loadNative<int>(data);
    return sizeof value_;
}

} // namespace zntl
