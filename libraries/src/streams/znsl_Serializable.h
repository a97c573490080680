#pragma once

#include <string>

namespace znsl {

/// The interface of every storable value: a type id, a type name, an XML form, a binary form and
/// a file form. Object streams can store objects of every class that implements it.
///
/// The order of the virtual operations is part of the binary interface, so do not reorder them.
/// Objects do not lock: only one thread at a time may use an object.
class Serializable {
public:
    Serializable() = default;
    Serializable(Serializable const&) = default;
    Serializable& operator=(Serializable const&) = default;
    virtual ~Serializable() = default;

    /// A number that identifies the class in streams, sets and files. At most 65535: records and
    /// files store 16 bits, so an object with a larger id can be written but never read back.
    ///
    /// The library uses 1 (EndOfFile), 6 (MemIOStream), 501 (String), 504 (Integer),
    /// 815 (Resolution), and 10000 plus the id of its elements for a Set.
    virtual unsigned int getTypeId() const = 0;

    /// The type name, which is also the default name of the XML element.
    virtual std::string getTypeName() const = 0;

    /// The XML form as an element with the type name. Implementations call the virtual
    /// `toXML(name)`.
    virtual std::string toXML() const = 0;

    /// The XML form as one element called `name`.
    virtual std::string toXML(char const* name) const = 0;

    /// Reads the value from an XML document. Returns false, with the object unchanged, if the
    /// document contains no value.
    virtual bool fromXML(char const* xml) = 0;

    /// The exact number of bytes that `toBin` writes.
    virtual unsigned int getBinLength() const = 0;

    /// Writes the binary form to `out`, which must have room for `getBinLength()` bytes. Returns
    /// the number of bytes written. Numbers are in the machine's byte order, at any alignment.
    virtual unsigned int toBin(unsigned char* out) const = 0;

    /// Reads the value from the `length` bytes at `data` and returns the number of bytes consumed.
    virtual unsigned int fromBin(unsigned char const* data, unsigned int length) = 0;

    /// Writes a typed file: the low 16 bits of the type id, the payload length N (32 bits), and the
    /// N bytes of `toBin`. Creates or truncates the file.
    ///
    /// Returns true if the system accepted every byte. Returns false if:
    /// - `getBinLength()` throws, the buffer cannot be allocated, or the file cannot be opened (an
    ///   existing file is then unchanged);
    /// - `toBin` or `getTypeId()` throws, or `toBin` returns a number other than `getBinLength()`
    ///   (the file is then empty);
    /// - a write fails, for example on a full disk (the file may then be partly written).
    ///
    /// Never throws.
    virtual bool toFile(char const* path) const;

    /// Reads a typed file that `toFile` wrote. Ignores bytes after the payload.
    ///
    /// Returns false if the file cannot be read, is a directory or a character device, has another
    /// type id or is shorter than its length field requires, or if an allocation fails; the object
    /// is then unchanged. Also returns false if `fromBin` throws or does not consume the whole
    /// payload; the object may then have changed.
    ///
    /// Never throws. Safe on any file if the class's `fromBin` stays within its length. For String
    /// and MemIOStream, which trust their bytes, this function checks the bytes first.
    virtual bool fromFile(char const* path);
};

} // namespace znsl
