#include "streams/znsl_Members.h"

#include "misc/zntl_Exception.h"
#include "streams/internal/znsl_members.h"
#include "streams/znsl_Struct.h"

#include <vector>

namespace znsl {

namespace {

/// The members of the table, without null pointers.
template <class Value>
std::vector<structs::NamedMember<Value>>
withoutNull(std::map<std::string, Serializable*> const& table) {
    std::vector<structs::NamedMember<Value>> members;
    members.reserve(table.size());
    for (auto const& [name, member] : table) {
        if (member)
            members.push_back({name.c_str(), member});
    }
    return members;
}

} // namespace

unsigned int Members::getBinLength() const { return lengthOfMembers(list_); }

unsigned int Members::toBin(unsigned char* out) const { return writeMembers(list_, out); }

unsigned int Members::fromBin(unsigned char const* data, unsigned int length) {
    return readMembers(list_, data, length);
}

void Members::requireNames(Place const& place, char const* fault) const {
    if (table_.size() != list_.size()) {
        throw zntl::Exception(
            zntl::locatedMessage(place.source, place.line, place.className, fault));
    }
}

std::string Members::toXML(char const* element, Place const& place) const {
    requireNames(place, "toXML() - Not implemented");
    auto const members = withoutNull<Serializable const>(table_);
    return structs::toXML(members.data(), members.size(), element);
}

bool Members::fromXML(char const* xml, Place const& place) {
    requireNames(place, "fromXML() - Not implemented");
    auto const members = withoutNull<Serializable>(table_);
    return structs::fromXML(members.data(), members.size(), xml);
}

} // namespace znsl
