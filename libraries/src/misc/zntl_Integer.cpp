#include "misc/zntl_Integer.h"

#include "misc/internal/zntl_bytes.h"
#include "misc/internal/zntl_decimal.h"
#include "misc/zntl_Exception.h"
#include "misc/zntl_Markup.h"
#include "streams/internal/znsl_readWithin.h"
#include "system/znml_constants.h" // Contract: this file has its own copy, though nothing reads it
#include "xml/znxml_DomIterator.h"

namespace zntl {

unsigned int Integer::getTypeId() const { return typeId; }

std::string Integer::getTypeName() const { return "Integer"; }

std::string Integer::toXML() const { return toXML("Integer"); }

std::string Integer::toXML(char const* name) const {
    return renderElement(name ? name : "", std::to_string(value_));
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
        throw Exception(znsl::unreadable);
    value_ = loadNative<int>(data);
    return sizeof value_;
}

} // namespace zntl
