#include "misc/zntl_Integer.h"

#include "misc/internal/zntl_bytes.h"
#include "misc/internal/zntl_decimal.h"
#include "misc/zntl_Exception.h"
#include "system/znml_constants.h"
#include "xml/znxml_DomIterator.h"

#include <cstring>
#include <string_view>

namespace zntl {

unsigned int Integer::getTypeId() const { return 504; }

std::string Integer::getTypeName() const { return "Integer"; }

std::string Integer::toXML() const { return toXML("Integer"); }

std::string Integer::toXML(char const* name) const {
    std::string_view const element = name ? name : "";
    std::string xml;
    xml.reserve(2 * element.size() + std::strlen("<></>") + maxDecimalLength);
    xml += '<';
    xml += element;
    xml += '>';
    appendDecimal(xml, value_);
    xml += "</";
    xml += element;
    xml += '>';
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
