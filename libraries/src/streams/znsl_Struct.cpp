#include "streams/znsl_Struct.h"

#include "misc/zntl_Exception.h"
#include "streams/internal/znsl_members.h"

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
    return renderMembers(Span{members, count}, element);
}

bool fromXML(NamedMember<Serializable> const* members, std::size_t count, char const* xml) {
    return parseMembers(xml, [=](zntl::String const& name) -> Serializable* {
        for (auto const& member : Span{members, count}) {
            if (name == member.name)
                return member.value;
        }
        return nullptr;
    });
}

void refuseXML(char const* typeName, char const* operation) {
    std::string fault = typeName;
    fault += "::";
    fault += operation;
    fault += " - Not implemented";
    throw zntl::Exception(fault);
}

} // namespace znsl::structs
