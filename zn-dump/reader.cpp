#include "reader.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "video/znvl_Resolution.h"

#include <initializer_list>
#include <string>

namespace dump {

namespace {

constexpr std::size_t recordHeaderSize = 8;
constexpr std::size_t typedHeaderSize = 6;
constexpr std::size_t lengthPrefixSize = 4;
constexpr unsigned int setOffset = 10000; // added to the type id of the elements

bool isWholeRecords(Bytes const& content) {
    std::size_t position = 0;
    while (content.size() - position >= recordHeaderSize) {
        auto const length = content.numberAt<std::uint32_t>(position + 4);
        position += recordHeaderSize;
        if (length > content.size() - position)
            return false;
        position += length;
    }
    return position == content.size();
}

bool isWholeTyped(Bytes const& file) {
    return file.size() >= typedHeaderSize &&
           file.numberAt<std::uint32_t>(2) == file.size() - typedHeaderSize;
}

/// The type name of a class of the library, or of a set of such a class; otherwise empty.
std::string nameOf(unsigned int typeId) {
    znsl::EndOfFile const marker;
    znsl::MemIOStream const stream;
    zntl::String const string;
    zntl::Integer const integer(0);
    znvl::Resolution const resolution;
    for (znsl::Serializable const* const value : std::initializer_list<znsl::Serializable const*>{
             &marker, &stream, &string, &integer, &resolution}) {
        if (typeId == value->getTypeId())
            return value->getTypeName();
        if (typeId == setOffset + value->getTypeId())
            return value->getTypeName() + "Set";
    }
    return {};
}

int readInteger(Bytes const& payload) {
    zntl::Integer integer = 0;
    integer.fromBin(payload.data(), static_cast<unsigned int>(payload.size()));
    return integer.getValue();
}

/// Returns the records in the binary form of a stream; nothing if they are truncated.
std::optional<Bytes> contentOf(Bytes const& payload) {
    if (payload.size() < lengthPrefixSize)
        return std::nullopt;
    auto const size = payload.numberAt<std::uint32_t>(0);
    if (size > payload.size() - lengthPrefixSize)
        return std::nullopt;
    return payload.part(lengthPrefixSize, size);
}

/// If the first record is an Integer, removes it and returns its value. Otherwise returns nothing.
std::optional<int> takeInteger(Bytes& records) {
    if (records.size() < recordHeaderSize || records.numberAt<std::uint16_t>(0) != 504)
        return std::nullopt;
    auto const length = records.numberAt<std::uint32_t>(4);
    Bytes const rest = records.part(recordHeaderSize);
    if (length < 4 || length > rest.size())
        return std::nullopt;
    records = rest.part(length);
    return readInteger(rest);
}

struct SetForm {
    unsigned int elementType;
    int count;
    Bytes elements;
};

/// Recognises a set by its content, because its elements may be of any class: two Integers, the
/// type id of the elements (10000 less than that of the set) and their number.
std::optional<SetForm> setFormOf(unsigned int typeId, Bytes const& payload) {
    std::optional<Bytes> records = contentOf(payload);
    if (!records)
        return std::nullopt;
    std::optional<int> const elementType = takeInteger(*records);
    if (!elementType || std::int64_t{*elementType} + setOffset != typeId)
        return std::nullopt;
    std::optional<int> const count = takeInteger(*records);
    if (!count)
        return std::nullopt;
    return SetForm{typeId - setOffset, *count, *records};
}

// The recursion through streams and sets is limited by maxDepth.
// NOLINTBEGIN(misc-no-recursion)
class Reader {
public:
    explicit Reader(Listing& listing) : listing_(listing) {}

    /// Lists the records before the first truncated one.
    void records(Bytes content) {
        while (content.size() > 0 && record(content)) {
        }
    }

    /// Lists the value of a typed file.
    void typedFile(Bytes const& file) {
        if (file.size() < typedHeaderSize)
            return damage(file, "the header of a typed file is cut short");
        auto const typeId = file.numberAt<std::uint16_t>(0);
        auto const length = file.numberAt<std::uint32_t>(2);
        Bytes const rest = file.part(typedHeaderSize);
        if (length > rest.size())
            return damage(file, cutShort(typeId, length, rest.size()));
        value(file.offset(), typeId, rest.part(0, length));
        if (length < rest.size())
            damage(rest.part(length), "a typed file goes on after its payload");
    }

    std::optional<std::size_t> firstDamage() const { return firstDamage_; }

private:
    static std::string cutShort(unsigned int typeId, std::uint32_t length, std::size_t available) {
        return "a payload of type " + std::to_string(typeId) +
               " is cut short: " + std::to_string(length) + " bytes announced, " +
               std::to_string(available) + " there";
    }

    void damage(Bytes const& where, std::string const& what) {
        listing_.damage(where.offset(), what);
        if (!firstDamage_)
            firstDamage_ = where.offset();
    }

    /// Lists the first record and removes it. Returns false if it is truncated.
    bool record(Bytes& content) {
        if (content.size() < recordHeaderSize) {
            damage(content, "the header of a record is cut short");
            return false;
        }
        auto const typeId = content.numberAt<std::uint16_t>(0);
        auto const length = content.numberAt<std::uint32_t>(4);
        Bytes const rest = content.part(recordHeaderSize);
        if (length > rest.size()) {
            damage(content, cutShort(typeId, length, rest.size()));
            return false;
        }
        value(content.offset(), typeId, rest.part(0, length));
        content = rest.part(length);
        return true;
    }

    void value(std::size_t offset, unsigned int typeId, Bytes const& payload) {
        Entry const entry{offset, typeId, nameOf(typeId), payload.size()};
        switch (typeId) {
        case 1:
            return listing_.marker(entry);
        case 6:
            return stream(entry, payload);
        case 501:
            return string(entry, payload);
        case 504:
            if (payload.size() < 4)
                return refuse(entry, payload, "an integer is cut short");
            return listing_.integer(entry, readInteger(payload));
        case 815:
            if (payload.size() < 8)
                return refuse(entry, payload, "a resolution is cut short");
            return listing_.resolution(entry, readInteger(payload), readInteger(payload.part(4)));
        default:
            break;
        }
        if (auto const form = setFormOf(typeId, payload))
            return set(entry, *form);
        if (!entry.typeName.empty())
            return refuse(entry, payload, "a set does not begin with its element type and count");
        listing_.bytes(entry, payload);
    }

    void refuse(Entry const& entry, Bytes const& payload, char const* why) {
        listing_.bytes(entry, payload);
        damage(payload, why);
    }

    void string(Entry const& entry, Bytes const& payload) {
        auto const size = static_cast<unsigned int>(payload.size());
        if (!zntl::String::canReadBin(payload.data(), size))
            return refuse(entry, payload, "a string has no end");
        zntl::String text;
        text.fromBin(payload.data(), size);
        listing_.string(entry, text, payload.numberAt<std::uint32_t>(0));
    }

    void stream(Entry const& entry, Bytes const& payload) {
        std::optional<Bytes> const content = contentOf(payload);
        if (!content)
            return refuse(entry, payload, "a stream is cut short");
        if (depth_ == maxDepth)
            return listing_.tooDeep(entry);
        listing_.beginStream(entry);
        ++depth_;
        records(*content);
        --depth_;
        listing_.end();
    }

    void set(Entry const& entry, SetForm const& form) {
        if (depth_ == maxDepth)
            return listing_.tooDeep(entry);
        listing_.beginSet(entry, form.elementType, form.count);
        ++depth_;
        elements(form);
        --depth_;
        listing_.end();
    }

    /// Lists the elements, and any records after them, which the library ignores.
    void elements(SetForm const& form) {
        Bytes rest = form.elements;
        for (std::int64_t found = 0; found < form.count; ++found) {
            if (rest.size() == 0)
                return damage(rest, "a set has " + std::to_string(found) + " elements instead of " +
                                        std::to_string(form.count));
            Bytes const element = rest;
            if (!record(rest))
                return;
            if (element.numberAt<std::uint16_t>(0) != form.elementType)
                damage(element, "an element of a set is of another type");
        }
        records(rest);
    }

    Listing& listing_;
    unsigned int depth_ = 0;
    std::optional<std::size_t> firstDamage_;
};
// NOLINTEND(misc-no-recursion)

} // namespace

Form formOf(Bytes const& file) {
    bool const looksTyped = file.size() >= 4 && file.numberAt<std::uint16_t>(2) != 0;
    bool const isTyped = isWholeTyped(file);
    bool const isStream = isWholeRecords(file);
    if (isTyped != isStream)
        return isTyped ? Form::typed : Form::stream;
    return looksTyped ? Form::typed : Form::stream;
}

std::optional<std::size_t> list(Bytes const& file, Form form, Listing& listing) {
    Reader reader(listing);
    if (form == Form::typed)
        reader.typedFile(file);
    else
        reader.records(file);
    return reader.firstDamage();
}

} // namespace dump
