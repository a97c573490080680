#pragma once

#include <string>

namespace znsl {

/// The contract of every storable value: a type id, a type name, an XML form, an exact binary form
/// and a file form. A class that implements it can travel through object streams and sets.
///
/// The order of the virtual operations is part of the binary interface: subclasses append theirs.
/// No object locks: only one thread at a time may use it.
class Serializable {
public:
    Serializable() = default;
    Serializable(Serializable const&) = default;
    Serializable& operator=(Serializable const&) = default;
    virtual ~Serializable() = default;

    /// A small number unique to the class; typed containers and streams compare it. In use:
    /// 1 EndOfFile, 6 MemIOStream, 501 String, 504 Integer, 815 Resolution, 10000 plus the
    /// element's id for a Set. Ids above 65535 can be written but never read back, because records
    /// and files keep 16 bits.
    virtual unsigned int getTypeId() const = 0;

    /// The serialized type name, which is also the default XML element name.
    virtual std::string getTypeName() const = 0;

    /// The XML form under the default element name: `toXML(` type name `)`, by the virtual call.
    virtual std::string toXML() const = 0;

    /// The XML form as one element called `name`.
    virtual std::string toXML(char const* name) const = 0;

    /// Reads the value from XML text. Returns false, with the object unchanged, if the text holds
    /// no value.
    virtual bool fromXML(char const* xml) = 0;

    /// The exact number of bytes that `toBin` will write.
    virtual unsigned int getBinLength() const = 0;

    /// Writes the binary form to `out`, which has room for `getBinLength()` bytes, and returns the
    /// number of bytes written. Multi-byte fields are in the machine's byte order, unaligned.
    virtual unsigned int toBin(unsigned char* out) const = 0;

    /// Reads the value from the `length` bytes at `data` and returns the number of bytes consumed.
    virtual unsigned int fromBin(unsigned char const* data, unsigned int length) = 0;

    /// Writes the typed binary file: the type id's low 16 bits, the payload length N (32 bits), and
    /// the N bytes of `toBin`. The file is created, or truncated to zero length first.
    ///
    /// True when the system has accepted every byte, so a full disk returns false. False, too, when
    /// an allocation fails, the file cannot be opened, `toBin` throws or returns another number of
    /// bytes than `getBinLength()` (the file is then left empty), or a write fails (the file may be
    /// partly written). Never throws.
    virtual bool toFile(char const* path) const;

    /// Reads the typed binary file that `toFile` wrote.
    ///
    /// False when the file cannot be read, is a directory, belongs to another type, is shorter than
    /// its length field says, or when `fromBin` throws or consumes another number of bytes. The
    /// object may then already be changed by `fromBin`; nothing is restored. Bytes after the
    /// payload are ignored. Never throws. Safe on any file if the class's `fromBin` stays within
    /// its length, as that of every class of the library does here.
    virtual bool fromFile(char const* path);
};

} // namespace znsl
