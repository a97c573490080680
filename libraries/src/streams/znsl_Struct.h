#pragma once

#include "streams/znsl_Serializable.h"

#include <array>
#include <cstddef>
#include <string>
#include <tuple>
#include <type_traits>

namespace znsl {

/// Describes one member of a Struct. Create it with `member` or `xmlMember`.
template <class Class, class Value>
struct StructMember {
    static_assert(std::is_base_of_v<Serializable, Value> && !std::is_const_v<Value>,
                  "a member of a znsl::Struct is a znsl::Serializable that is not const");
    Value Class::*pointer; ///< the member
    char const* xmlName;   ///< its name in the XML form; null if it is not in that form
    bool isBinary;         ///< whether it is in the binary form
};

/// Describes a member of the binary form. If it has a name, it is in the XML form too.
template <class Class, class Value>
constexpr StructMember<Class, Value> member(Value Class::*pointer, char const* xmlName = nullptr) {
    return {pointer, xmlName, true};
}

/// Describes a member that is in the XML form only.
template <class Class, class Value>
constexpr StructMember<Class, Value> xmlMember(Value Class::*pointer, char const* xmlName) {
    return {pointer, xmlName, false};
}

/// The description of a Struct. Create it with `schema`.
template <class... StructMembers>
struct Schema {
    unsigned int typeId;                  ///< the value of getTypeId
    char const* typeName;                 ///< the value of getTypeName
    std::tuple<StructMembers...> members; ///< in the order of the binary form
};

/// Describes a Struct: its type id, its type name, and its members in the order of the binary form.
template <class... StructMembers>
constexpr Schema<StructMembers...> schema(unsigned int typeId, char const* typeName,
                                          StructMembers... members) {
    return {typeId, typeName, {members...}};
}

/// Implementation details of Struct.
namespace structs {

/// A member and its name in the XML form.
template <class Value>
struct NamedMember {
    char const* name; ///< not null
    Value* value;     ///< not null
};

/// See Struct::toXML.
std::string toXML(NamedMember<Serializable const> const* members, std::size_t count,
                  char const* element);
/// See Struct::fromXML.
bool fromXML(NamedMember<Serializable> const* members, std::size_t count, char const* xml);
/// Throws the exception "TYPE::OPERATION - Not implemented" of a class without an XML form.
[[noreturn]] void refuseXML(char const* typeName, char const* operation);
/// See Struct::getBinLength.
unsigned int getBinLength(Serializable const* const* members, std::size_t count);
/// See Struct::toBin.
unsigned int toBin(Serializable const* const* members, std::size_t count, unsigned char* out);
/// See Struct::fromBin.
unsigned int fromBin(Serializable* const* members, std::size_t count, unsigned char const* data,
                     unsigned int length);

/// Whether the first name comes before the second.
constexpr bool isLess(char const* one, char const* other) {
    while (*one != '\0' && *one == *other) {
        ++one;
        ++other;
    }
    return static_cast<unsigned char>(*one) < static_cast<unsigned char>(*other);
}

/// Whether both pointers point to the same member.
template <class Class, class Value>
constexpr bool isSame(Value Class::*one, Value Class::*other) {
    return one == other;
}
/// For members of different types, which are never the same: false.
template <class One, class Other>
constexpr bool isSame(One /*one*/, Other /*other*/) {
    return false;
}

/// Whether an XML element can have this name: letters, digits, "_", "-" and ".", starting with
/// a letter or "_". Bytes beyond ASCII count as letters.
constexpr bool isXmlName(char const* name) {
    for (std::size_t i = 0; name[i] != '\0'; ++i) {
        auto const c = static_cast<unsigned char>(name[i]);
        bool const canStart =
            (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c >= 0x80;
        bool const canFollow = (c >= '0' && c <= '9') || c == '-' || c == '.';
        if (!canStart && (i == 0 || !canFollow))
            return false;
    }
    return name[0] != '\0';
}

/// Whether a class of the library, or a set of such a class, has this type id.
constexpr bool isTaken(unsigned int typeId) {
    // NOLINTNEXTLINE(readability-use-anyofallof): not constexpr before C++20
    for (unsigned int const taken : {1U, 6U, 501U, 504U, 815U}) {
        if (typeId == taken || typeId == 10000 + taken)
            return true;
    }
    return false;
}

/// Without members, returns false, which ends the recursion.
constexpr bool repeatsMember() { return false; }
/// Whether a member is listed twice.
template <class First, class... Others>
constexpr bool repeatsMember([[maybe_unused]] First first, Others... others) {
    return (isSame(first.pointer, others.pointer) || ...) || repeatsMember(others...);
}

/// The number of members with a name.
template <class Names>
constexpr std::size_t countNames(Names const& names) {
    std::size_t count = 0;
    for (char const* const name : names)
        count += name ? 1 : 0;
    return count;
}

/// The number of names that sort before this one.
template <class Names>
constexpr std::size_t rankOf(char const* name, Names const& names) {
    std::size_t rank = 0;
    for (char const* const other : names)
        // NOLINTNEXTLINE(readability-suspicious-call-argument): either order is right
        rank += other && isLess(other, name) ? 1 : 0;
    return rank;
}

/// Whether a name is used twice.
template <class Names>
constexpr bool repeatsName(Names const& names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (names[i] && names[j] && !isLess(names[i], names[j]) && !isLess(names[j], names[i]))
                return true;
        }
    }
    return false;
}

/// Whether XML elements can have all these names. Null pointers are skipped.
template <class Names>
constexpr bool areXmlNames(Names const& names) {
    bool are = true;
    for (char const* const name : names)
        are = are && (!name || isXmlName(name));
    return are;
}

} // namespace structs

/// A base for your own storable classes. A class derived from `Struct<itself>` describes its
/// members in a `schema`, and inherits all operations of Serializable.
///
///     class Place : public znsl::Struct<Place> {
///     public:
///         zntl::Integer floor = 0;
///         zntl::String name;
///
///         static constexpr auto schema = znsl::schema(2001, "Place",
///                                                     znsl::member(&Place::floor, "floor"),
///                                                     znsl::member(&Place::name, "name"));
///     };
///
/// The stored forms are the same, byte by byte, as those of Members for the same members; only
/// a Struct has an XML form if some of its members have no name. The
/// operations of the binary form do not allocate. A Struct has no data of its own, so copying and
/// moving an object copies and moves its members. Elements of a Set also need an `operator<`.
///
/// To extend such a class, derive from `Struct<itself, that class>`, and list the inherited members
/// in the new schema too.
///
/// The compiler rejects these mistakes where the class is used:
/// - a member that is not a Serializable, or is listed twice;
/// - a name that is used twice, or that no XML element can have;
/// - a type id above 65535, or one that the library uses;
/// - a Set of a class whose type id is above 55535: the id of the set would exceed 16 bits.
template <class Class, class Base = Serializable>
class Struct : public Base {
public:
    using Base::Base;

    /// The schema's type id.
    unsigned int getTypeId() const override { return checkedSchema().typeId; }

    /// The schema's type name.
    std::string getTypeName() const override { return checkedSchema().typeName; }

    /// Returns the result of the virtual `toXML(getTypeName())`.
    std::string toXML() const override { return this->toXML(checkedSchema().typeName); }

    /// Returns an element called `element` that contains the XML of the named members, sorted by
    /// name; the empty string if `element` is null. A class with members, none of which has a name,
    /// has no XML form: throws zntl::Exception "Place::toXML() - Not implemented", with its type
    /// name.
    std::string toXML(char const* element) const override {
        if constexpr (!hasXML())
            structs::refuseXML(checkedSchema().typeName, "toXML()");
        auto const listed = namedMembers<Serializable const>(static_cast<Class const&>(*this));
        return structs::toXML(listed.data(), listed.size(), element);
    }

    /// Lets each member read the children of the root element that have its name, in document
    /// order, and ignores what the member's `fromXML` returns. Skips other children. Members
    /// without a child keep their values. Returns false if there is no root element or it has no
    /// children. Throws zntl::Exception "Place::fromXML() - Not implemented" if the class has no
    /// XML form.
    bool fromXML(char const* xml) override {
        if constexpr (!hasXML())
            structs::refuseXML(checkedSchema().typeName, "fromXML()");
        auto const listed = namedMembers<Serializable>(static_cast<Class&>(*this));
        return structs::fromXML(listed.data(), listed.size(), xml);
    }

    /// The sum of the members' lengths. Throws std::length_error if it does not fit in 32 bits.
    unsigned int getBinLength() const override {
        auto const listed = binaryMembers<Serializable const>(static_cast<Class const&>(*this));
        return structs::getBinLength(listed.data(), listed.size());
    }

    /// Writes the members one after another; returns the number of bytes written.
    unsigned int toBin(unsigned char* out) const override {
        auto const listed = binaryMembers<Serializable const>(static_cast<Class const&>(*this));
        return structs::toBin(listed.data(), listed.size(), out);
    }

    /// Reads the members one after another and returns the number of bytes consumed. Ignores the
    /// bytes after them.
    ///
    /// Throws zntl::Exception if a String or MemIOStream would read past the `length` bytes at
    /// `data`, or if a member consumed more. Rethrows what a member throws. The members before the
    /// failed one keep their new values. Safe on any bytes if members of other classes stay within
    /// the length that they are given.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        auto const listed = binaryMembers<Serializable>(static_cast<Class&>(*this));
        return structs::fromBin(listed.data(), listed.size(), data, length);
    }

private:
    // The constructor is private, so only `Class` can derive from Struct<Class>.
    friend Class;
    Struct() = default;

    /// Calls a function with all members of the schema as arguments.
    template <class Function>
    static constexpr auto withMembers(Function function) {
        return std::apply(function, Class::schema.members);
    }

    /// The members' names in the XML form, in the order of the schema; null for members without.
    static constexpr auto xmlNames() {
        return withMembers(
            [](auto... all) { return std::array<char const*, sizeof...(all)>{all.xmlName...}; });
    }

    static constexpr bool hasXML() {
        return xmlNames().empty() || structs::countNames(xmlNames()) > 0;
    }

    static constexpr auto const& checkedSchema() {
        static_assert(Class::schema.typeId <= 65535, "a type id is at most 65535");
        static_assert(!structs::isTaken(Class::schema.typeId),
                      "this type id belongs to a class of the library");
        static_assert(structs::isXmlName(Class::schema.typeName),
                      "the type name cannot be the name of an XML element");
        static_assert(structs::areXmlNames(xmlNames()),
                      "a member's name cannot be the name of an XML element");
        static_assert(!structs::repeatsName(xmlNames()), "two members have the same name");
        static_assert(!withMembers([](auto... all) { return structs::repeatsMember(all...); }),
                      "a member is listed twice");
        return Class::schema;
    }

    /// Pointers to the object's members of the binary form.
    template <class Value, class Object>
    static auto binaryMembers(Object& object) {
        constexpr std::size_t size = withMembers(
            [](auto... all) { return (std::size_t{0} + ... + (all.isBinary ? 1U : 0U)); });
        std::array<Value*, size> binary{};
        auto next = binary.begin();
        withMembers([&](auto... all) {
            ((all.isBinary ? void(*next++ = &(object.*all.pointer)) : void()), ...);
        });
        return binary;
    }

    /// The object's members of the XML form, sorted by name.
    template <class Value, class Object>
    static auto namedMembers(Object& object) {
        std::array<structs::NamedMember<Value>, structs::countNames(xmlNames())> named{};
        auto const add = [&](auto member) {
            if (member.xmlName)
                named[structs::rankOf(member.xmlName, xmlNames())] = {member.xmlName,
                                                                      &(object.*member.pointer)};
        };
        withMembers([&](auto... all) { (add(all), ...); });
        return named;
    }
};

} // namespace znsl
