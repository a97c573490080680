#pragma once

#include "streams/znsl_Serializable.h"

#include <list>
#include <map>
#include <string>

namespace znsl {

/// The binary and XML forms of a class that consists of serializable members and lists them in one
/// operation, `fillSerializable`. A Struct needs less code and does not allocate.
///
///     void Point::fillSerializable(std::list<znsl::Serializable*>& list,
///                                  std::map<std::string, znsl::Serializable*>& table) const;
///
///     unsigned int Point::toBin(unsigned char* out) const
///     {
///         return znsl::Members(*this).toBin(out);
///     }
///
/// The list holds the members of the binary form in the order in which they are written; the table
/// holds those of the XML form under their element names. A class that names fewer or more members
/// for XML than for the binary form has no XML form. Construct one for each call; the members must
/// outlive it.
class Members {
public:
    /// The source location that a class without an XML form reports.
    struct Place {
        char const* source;    ///< the file's path as the build names it, without its extension
        int line;              ///< the line in it
        char const* className; ///< the class, with its namespace
    };

    /// Calls `object.fillSerializable(list, table)` to obtain the members.
    template <class Object>
    explicit Members(Object const& object) {
        object.fillSerializable(list_, table_);
    }

    /// The sum of the members' lengths. Throws std::length_error if it does not fit 32 bits.
    unsigned int getBinLength() const;

    /// Writes the members one after another; returns the number of bytes written.
    unsigned int toBin(unsigned char* out) const;

    /// Reads the members one after another and returns the number of bytes consumed. Safe on any
    /// bytes: throws zntl::Exception when a member would leave the `length` bytes at `data` or
    /// reports that it did, and passes on what a member throws. The members before it keep what
    /// they read.
    unsigned int fromBin(unsigned char const* data, unsigned int length);

    /// One element called `element` with the members' XML in it, in the order of their names; null
    /// pointers in the table are left out. The empty string for a null `element`. Throws
    /// zntl::Exception "toXML() - Not implemented", located at `place`, when the class has no XML
    /// form.
    std::string toXML(char const* element, Place const& place) const;

    /// Lets each member read the child of the root element that has its name, and skips other
    /// children. False when there is no root element or it has no children.
    /// Throws zntl::Exception "fromXML() - Not implemented", located at `place`, when the class has
    /// no XML form.
    bool fromXML(char const* xml, Place const& place);

private:
    void requireNames(Place const& place, char const* fault) const;

    std::list<Serializable*> list_;
    std::map<std::string, Serializable*> table_;
};

} // namespace znsl
