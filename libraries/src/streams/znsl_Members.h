#pragma once

#include "streams/znsl_Serializable.h"

#include <list>
#include <map>
#include <string>

namespace znsl {

/// The binary and XML forms of a class that lists its members at run time, in an operation
/// `fillSerializable`. If the members are always the same, a Struct needs less code and does not
/// allocate.
///
///     void Point::fillSerializable(std::list<znsl::Serializable*>& list,
///                                  std::map<std::string, znsl::Serializable*>& table) const;
///
///     unsigned int Point::toBin(unsigned char* out) const
///     {
///         return znsl::Members(*this).toBin(out);
///     }
///
/// `fillSerializable` appends pointers to the members of the binary form to the list, in the order
/// in which they are written, and adds those of the XML form to the table, by element name. If the
/// table does not have as many entries as the list, the class has no XML form. The list must not
/// contain null pointers. Construct a Members for each call; the members must outlive it.
class Members {
public:
    /// The source location in the exception of a class without an XML form.
    struct Place {
        char const* source;    ///< the path of the source file, without its extension
        int line;              ///< the line in it
        char const* className; ///< the class, with its namespace
    };

    /// Calls `object.fillSerializable(list, table)` to obtain the members.
    template <class Object>
    explicit Members(Object const& object) {
        object.fillSerializable(list_, table_);
    }

    /// The sum of the members' lengths. Throws std::length_error if it does not fit in 32 bits.
    unsigned int getBinLength() const;

    /// Writes the members one after another; returns the number of bytes written.
    unsigned int toBin(unsigned char* out) const;

    /// Reads the members one after another and returns the number of bytes consumed.
    ///
    /// Throws zntl::Exception if a String or MemIOStream would read past the `length` bytes at
    /// `data`, or if a member consumed more. Rethrows what a member throws. The members before the
    /// failed one keep their new values. Safe on any bytes if members of other classes stay within
    /// the length that they are given.
    unsigned int fromBin(unsigned char const* data, unsigned int length);

    /// Returns an element called `element` that contains the XML of the members in the table,
    /// sorted by name; null pointers are skipped. Returns the empty string if `element` is null.
    /// Throws zntl::Exception "toXML() - Not implemented", located at `place`, if the class has no
    /// XML form.
    std::string toXML(char const* element, Place const& place) const;

    /// Lets each member read the children of the root element that have its name, in document
    /// order, and ignores what the member's `fromXML` returns. Skips other children. Returns false
    /// if there is no root element or it has no children. Throws zntl::Exception
    /// "fromXML() - Not implemented", located at `place`, if the class has no XML form.
    bool fromXML(char const* xml, Place const& place);

private:
    void requireNames(Place const& place, char const* fault) const;

    std::list<Serializable*> list_;
    std::map<std::string, Serializable*> table_;
};

} // namespace znsl
