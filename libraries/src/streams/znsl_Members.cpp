#include "streams/znsl_Members.h"

#include "misc/zntl_Exception.h"
#include "streams/internal/znsl_members.h"

namespace znsl {

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
    return renderMembers(table_, element);
}

bool Members::fromXML(char const* xml, Place const& place) {
    requireNames(place, "fromXML() - Not implemented");
    return parseMembers(xml, [this](zntl::String const& name) -> Serializable* {
        auto const entry = table_.find(name);
        return entry != table_.end() ? entry->second : nullptr;
    });
}

} // namespace znsl
