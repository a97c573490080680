#include "streams/znsl_Members.h"

#include "misc/internal/zntl_binLength.h"
#include "misc/zntl_Exception.h"
#include "streams/internal/znsl_readWithin.h"
#include "xml/znxml_DomIterator.h"

#include <cstdint>

namespace znsl {

unsigned int Members::getBinLength() const {
    std::uint64_t length = 0;
    for (Serializable const* const member : list_)
        length += member->getBinLength();
    return zntl::binLength(length);
}

unsigned int Members::toBin(unsigned char* out) const {
    unsigned int offset = 0;
    for (Serializable const* const member : list_)
        offset += member->toBin(out + offset);
    return offset;
}

unsigned int Members::fromBin(unsigned char const* data, unsigned int length) {
    unsigned int offset = 0;
    for (Serializable* const member : list_) {
        unsigned int const consumed = readWithin(*member, data + offset, length - offset);
        if (consumed > length - offset)
            throw zntl::Exception("znsl::Serializable::fromBin() - Failed!");
        offset += consumed;
    }
    return offset;
}

void Members::requireNames(Place const& place, char const* fault) const {
    if (table_.size() != list_.size()) {
        throw zntl::Exception(
            zntl::locatedMessage(place.source, place.line, place.className, fault));
    }
}

std::string Members::toXML(char const* element, Place const& place) const {
    requireNames(place, "toXML() - Not implemented");
    if (!element)
        return {};
    std::string xml = "<";
    xml += element;
    xml += '>';
    for (auto const& [name, member] : table_) {
        if (member)
            xml += member->toXML(name.c_str());
    }
    xml += "</";
    xml += element;
    xml += '>';
    return xml;
}

bool Members::fromXML(char const* xml, Place const& place) {
    requireNames(place, "fromXML() - Not implemented");
    auto const root = znxml::DomIterator::parse(xml);
    if (root.atEnd() || !root.hasChildren())
        return false;
    for (auto child = root.childrenBegin(); !child.atEnd(); child.nextSibling()) {
        auto const entry = table_.find(child.getName());
        if (entry != table_.end() && entry->second)
            entry->second->fromXML(child.toXML().c_str());
    }
    return true;
}

} // namespace znsl
