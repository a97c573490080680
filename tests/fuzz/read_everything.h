#pragma once

#include "fuzz.h"
#include "nested.h"

#include "misc/zntl_Exception.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Reads values from untrusted bytes in every possible way, and checks the promises: each operation
// returns a result or throws the library's exception, `peek` agrees with `read`, and a value that
// was read can be written again.

namespace fuzz {

/// Returns the result of the operation; nullopt if it throws the library's exception.
template <class Operation>
std::optional<unsigned int> attempt(Operation operation) {
    try {
        return operation();
    } catch (zntl::Exception const&) {
        return std::nullopt;
    }
}

inline std::string contentOf(MemIOStream const& stream) {
    unsigned char const* data;
    unsigned int length;
    stream.getBuffer(data, length);
    return data ? std::string(reinterpret_cast<char const*>(data), length) : std::string();
}

/// Returns a stream with these bytes, whole records or not, and without room after them.
inline MemIOStream streamOf(std::string const& bytes) {
    auto const size = static_cast<unsigned int>(bytes.size());
    MemIOStream stream(size);
    unsigned char* out;
    stream.getWriteBuffer(out, size);
    std::copy(bytes.begin(), bytes.end(), out);
    return stream;
}

/// Requires that a copy of the value, made through its binary form, has the same binary form.
inline void requireWritable(Serializable const& value) {
    std::unique_ptr<Serializable> const again = makeReader(value.getTypeId());
    std::vector<unsigned char> form(value.getBinLength());
    require(value.toBin(form.data()) == form.size(), "getBinLength is exact");
    auto const length = static_cast<unsigned int>(form.size());
    require(attempt([&] { return again->fromBin(form.data(), length); }) == length,
            "a value reads the form that it wrote");
    std::vector<unsigned char> formAgain(again->getBinLength());
    again->toBin(formAgain.data());
    require(formAgain == form, "the value that was read is the same");
}

void readRecords(MemIOStream stream);

/// Reads the records of the streams that the value contains.
inline void readWithin(Serializable const& value) {
    if (auto const* const stream = dynamic_cast<MemIOStream const*>(&value))
        readRecords(*stream);
    if (auto const* const entry = dynamic_cast<Entry const*>(&value))
        readRecords(entry->stream);
    if (auto const* const folder = dynamic_cast<Folder const*>(&value)) {
        readRecords(folder->stream);
        readRecords(folder->entry.stream);
    }
}

/// Reads every record of a stream with untrusted bytes, and skips those that cannot be read.
inline void readRecords(MemIOStream stream) {
    while (stream.size() >= 8) {
        std::string const before = contentOf(stream);
        std::unique_ptr<Serializable> const object = makeReader(stream.getNextType());
        if (!object) {
            stream.skip();
            continue;
        }
        auto const peeked = attempt([&] { return stream.peek(*object); });
        attempt([&] { return stream.peek(1, object.get()); });
        require(contentOf(stream) == before, "peeking consumes nothing");
        auto const consumed = attempt([&] { return stream.read(*object); });
        require(consumed == peeked, "reading agrees with peeking");
        require(consumed || contentOf(stream) == before, "an unreadable record stays");
        require(!consumed || stream.size() < before.size(), "a record that was read is removed");
        if (!consumed) {
            stream.skip();
            continue;
        }
        requireWritable(*object);
        readWithin(*object);
    }
}

/// Reads a value of this type from a typed file with this payload.
inline void readTypedFile(unsigned int type, std::string const& payload) {
    static File file;
    auto const type16 = static_cast<std::uint16_t>(type);
    auto const length = static_cast<std::uint32_t>(payload.size());
    std::string bytes(reinterpret_cast<char const*>(&type16), sizeof type16);
    bytes.append(reinterpret_cast<char const*>(&length), sizeof length);
    bytes += payload;
    file.fill(bytes.data(), bytes.size());

    // A string has no typed file: it reads the whole file as text.
    std::unique_ptr<Serializable> const value = makeReader(type);
    if (!value->fromFile(file.path()) || dynamic_cast<zntl::String const*>(value.get()))
        return;
    requireWritable(*value);
    readWithin(*value);
}

/// Calls `fromBin` of a value of this type. For types whose `fromBin` trusts its bytes, calls
/// `canReadBin` first.
inline void readDirectly(unsigned int type, std::string const& payload) {
    std::vector<unsigned char> const exact(payload.begin(), payload.end());
    auto const length = static_cast<unsigned int>(exact.size());
    std::unique_ptr<Serializable> const value = makeReader(type);
    bool const isString = type == Note::typeId || dynamic_cast<zntl::String const*>(value.get());
    if (isString && !zntl::String::canReadBin(exact.data(), length))
        return;
    if (dynamic_cast<MemIOStream const*>(value.get()) &&
        !MemIOStream::canReadBin(exact.data(), length))
        return;
    auto const consumed = attempt([&] { return value->fromBin(exact.data(), length); });
    require(!consumed || *consumed <= length, "no more is consumed than there is");
}

/// Loads an object stream file with these records, and reads them.
inline void readStreamFile(std::string const& records) {
    static File file;
    file.fill(records.data(), records.size());
    MemIOStream stream;
    bool const loaded = stream.load(file.path());
    require(loaded == stream.validate(), "load reports whole records");
    readRecords(stream);
}

} // namespace fuzz
