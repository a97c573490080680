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

// The stored forms of an object that consists of members. For the binary form, `members` is any
// range of pointers, in the order in which the members are written. For the XML form, it is any
// range of pairs of a name and a pointer.

// Hidden, because exports.map exports every visible name of this namespace from the shared library.
#pragma GCC visibility push(hidden)

namespace znsl {

/// Throws std::length_error if the sum does not fit in 32 bits.
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

/// Returns the number of bytes consumed. Throws if a String or MemIOStream would read past the
/// bytes, or if a member consumed more than there are.
template <class Members>
unsigned int readMembers(Members const& members, unsigned char const* data, unsigned int length) {
    unsigned int offset = 0;
    for (Serializable* const member : members) {
        unsigned int const consumed = readWithin(*member, data + offset, length - offset);
        if (consumed > length - offset)
            throw zntl::Exception(unreadable);
        offset += consumed;
    }
    return offset;
}

inline char const* charactersOf(char const* name) { return name; }
inline char const* charactersOf(std::string const& name) { return name.c_str(); }

/// Returns an element that contains the members' XML; null pointers are skipped. Returns the empty
/// string if `element` is null.
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

/// Calls `find` with the name of each child of the root element. The member that `find` returns
/// reads the child; if that is null, the child is skipped. Returns false if there is no root
/// element or it has no children.
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

#pragma GCC visibility pop
