#include "streams/znsl_Struct.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_Markup.h"
#include "streams/internal/znsl_members.h"
#include "xml/znxml_DomIterator.h"

namespace znsl::structs {

namespace {

/// An array that does not own its elements.
template <class Element>
struct Span {
    Element const* first;
    std::size_t count;

    Element const* begin() const { return first; }
    Element const* end() const { return first + count; }
};

template <class Element>
Span(Element const*, std::size_t) -> Span<Element>;

} // namespace

unsigned int getBinLength(Serializable const* const* members, std::size_t count) {
    return lengthOfMembers(Span{members, count});
}

unsigned int toBin(Serializable const* const* members, std::size_t count, unsigned char* out) {
    return writeMembers(Span{members, count}, out);
}

unsigned int fromBin(Serializable* const* members, std::size_t count, unsigned char const* data,
                     unsigned int length) {
    return readMembers(Span{members, count}, data, length);
}

std::string toXML(NamedMember<Serializable const> const* members, std::size_t count,
                  char const* element) {
    if (!element)
        return {};
    std::string content;
    for (auto const& member : Span{members, count})
        content += member.value->toXML(member.name);
    return zntl::renderElement(element, content);
}

bool fromXML(NamedMember<Serializable> const* members, std::size_t count, char const* xml) {
    auto const root = znxml::DomIterator::parse(xml);
    if (root.atEnd() || !root.hasChildren())
        return false;
    for (auto child = root.childrenBegin(); !child.atEnd(); child.nextSibling()) {
        zntl::String const name = child.getName();
        for (auto const& member : Span{members, count}) {
            if (name == member.name)
                member.value->fromXML(child.toXML().c_str());
        }
    }
    return true;
}

void refuseXML(char const* typeName, char const* operation) {
    std::string fault = typeName;
    fault += "::";
    fault += operation;
    fault += " - Not implemented";
    throw zntl::Exception(fault);
}

} // namespace znsl::structs
