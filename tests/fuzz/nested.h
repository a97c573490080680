#pragma once

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Set.h"
#include "streams/znsl_Struct.h"
#include "video/znvl_Resolution.h"

#include <list>
#include <map>
#include <memory>
#include <string>

// Storable classes of every kind: the library's own, nested in each other, and classes such as a
// user of the library would write.

namespace fuzz {

using znsl::MemIOStream;
using znsl::Serializable;

/// A class that lists members of several types.
class Entry : public Serializable {
public:
    static constexpr unsigned int typeId = 901;

    zntl::String text;
    zntl::Integer number{0};
    MemIOStream stream;
    znsl::Set<zntl::String> texts;

    bool operator<(Entry const& other) const { return text < other.text; }

    unsigned int getTypeId() const override { return typeId; }
    std::string getTypeName() const override { return "Entry"; }
    std::string toXML() const override { return toXML("Entry"); }
    std::string toXML(char const* name) const override { return name; }
    bool fromXML(char const* /*xml*/) override { return false; }
    unsigned int getBinLength() const override { return znsl::Members(*this).getBinLength(); }
    unsigned int toBin(unsigned char* out) const override {
        return znsl::Members(*this).toBin(out);
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        return znsl::Members(*this).fromBin(data, length);
    }
    void fillSerializable(std::list<Serializable*>& list,
                          std::map<std::string, Serializable*>& /*table*/) const {
        auto& self = const_cast<Entry&>(*this);
        list.assign({&self.text, &self.number, &self.stream, &self.texts});
    }
};

/// A class derived from Struct. Some of its members have members themselves.
class Folder : public znsl::Struct<Folder> {
public:
    static constexpr unsigned int typeId = 902;

    MemIOStream stream;
    Entry entry;
    znsl::Set<Entry> entries;
    zntl::String text;

    static constexpr auto schema =
        znsl::schema(typeId, "Folder", znsl::member(&Folder::stream), znsl::member(&Folder::entry),
                     znsl::member(&Folder::entries), znsl::member(&Folder::text));
};

// Subclasses, with other type ids, of the two classes whose `fromBin` trusts its bytes.
class Label : public zntl::String {
public:
    static constexpr unsigned int typeId = 903;
    using String::String;
    unsigned int getTypeId() const override { return typeId; }
};
class Package : public MemIOStream {
public:
    static constexpr unsigned int typeId = 904;
    using MemIOStream::MemIOStream;
    unsigned int getTypeId() const override { return typeId; }
};

/// A class whose `fromBin` calls that of a string without calling `canReadBin` first.
class Note : public Serializable {
public:
    static constexpr unsigned int typeId = 905;

    zntl::String text;

    unsigned int getTypeId() const override { return typeId; }
    std::string getTypeName() const override { return "Note"; }
    std::string toXML() const override { return toXML("Note"); }
    std::string toXML(char const* name) const override { return name; }
    bool fromXML(char const* /*xml*/) override { return false; }
    unsigned int getBinLength() const override { return text.getBinLength(); }
    unsigned int toBin(unsigned char* out) const override { return text.toBin(out); }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        return text.fromBin(data, length);
    }
};

/// Returns a new object of the class with this type id; null for an unknown type id.
inline std::unique_ptr<Serializable> makeReader(unsigned int type) {
    switch (type) {
    case 6:
        return std::make_unique<MemIOStream>();
    case 501:
        return std::make_unique<zntl::String>();
    case 504:
        return std::make_unique<zntl::Integer>(0);
    case 815:
        return std::make_unique<znvl::Resolution>();
    case Entry::typeId:
        return std::make_unique<Entry>();
    case Folder::typeId:
        return std::make_unique<Folder>();
    case Label::typeId:
        return std::make_unique<Label>();
    case Package::typeId:
        return std::make_unique<Package>();
    case Note::typeId:
        return std::make_unique<Note>();
    case 10000 + 501:
        return std::make_unique<znsl::Set<zntl::String>>();
    case 10000 + 815:
        return std::make_unique<znsl::Set<znvl::Resolution>>();
    case 10000 + Entry::typeId:
        return std::make_unique<znsl::Set<Entry>>();
    case 10000 + Label::typeId:
        return std::make_unique<znsl::Set<Label>>();
    case 20000 + 501:
        return std::make_unique<znsl::Set<znsl::Set<zntl::String>>>();
    case 20000 + 815:
        return std::make_unique<znsl::Set<znsl::Set<znvl::Resolution>>>();
    default:
        return nullptr;
    }
}

/// The type ids that `makeReader` knows.
constexpr unsigned int readableTypes[] = {6,
                                          501,
                                          504,
                                          815,
                                          Entry::typeId,
                                          Folder::typeId,
                                          Label::typeId,
                                          Package::typeId,
                                          10000 + 501,
                                          10000 + 815,
                                          10000 + Entry::typeId,
                                          10000 + Label::typeId,
                                          20000 + 501,
                                          20000 + 815,
                                          Note::typeId};

} // namespace fuzz
