#pragma once

#include "misc/internal/zntl_binLength.h"
#include "misc/zntl_Exception.h"
#include "misc/zntl_Markup.h"
#include "misc/zntl_String.h"
#include "streams/internal/znsl_readWithin.h"
#include "streams/znsl_Serializable.h"
#include "xml/znxml_DomIterator.h"

#include <cstdint>
#include <string>

// The stored forms of an object that consists of members: any range of pointers to them, in the
// order in which they are written, and any range of pairs of a name and a pointer.

namespace znsl {

/// Throws std::length_error when the sum does not fit 32 bits.
template <class Members>
unsigned int lengthOfMembers(Members const& members) {
    std::uint64_t length = 0;
    for (Serializable const* const member : members)
        length += member->getBinLength();
    return zntl::binLength(length);
}

/// Returns the number of bytes written.
template <class Members>
unsigned int writeMembers(Members const& members, unsigned char* out) {
    unsigned int offset = 0;
    for (Serializable const* const member : members)
        offset += member->toBin(out + offset);
    return offset;
}

/// Returns the number of bytes consumed. Throws when a member would leave the bytes, or reports
/// that it did.
template <class Members>
unsigned int readMembers(Members const& members, unsigned char const* data, unsigned int length) {
    unsigned int offset = 0;
    for (Serializable* const member : members) {
        unsigned int const consumed = readWithin(*member, data + offset, length - offset);
        if (consumed > length - offset)
            throw zntl::Exception("znsl::Serializable::fromBin() - Failed!");
        offset += consumed;
    }
    return offset;
}

inline char const* charactersOf(char const* name) { return name; }
inline char const* charactersOf(std::string const& name) { return name.c_str(); }

/// One element with the members' XML in it; null pointers are left out. The empty string for a null
/// `element`.
template <class NamedMembers>
std::string renderMembers(NamedMembers const& members, char const* element) {
    if (!element)
        return {};
    std::string content;
    for (auto const& [name, member] : members) {
        if (member)
            content += member->toXML(charactersOf(name));
    }
    return zntl::renderElement(element, content);
}

/// Hands each child of the root element to the member that `find` returns for its name; skips those
/// for which that is null. False when there is no root element or it has no children.
template <class Find>
bool parseMembers(char const* xml, Find find) {
    auto const root = znxml::DomIterator::parse(xml);
    if (root.atEnd() || !root.hasChildren())
        return false;
    for (auto child = root.childrenBegin(); !child.atEnd(); child.nextSibling()) {
        if (Serializable* const member = find(child.getName()))
            member->fromXML(child.toXML().c_str());
    }
    return true;
}

} // namespace znsl
