// Object stream files: `load` returns the right result for any bytes, and every operation on the
// loaded content is safe and consistent.

#include "fuzz.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

using fuzz::require;
using znsl::MemIOStream;
using ResolutionSet = znsl::Set<znvl::Resolution>;

namespace {

std::string content(MemIOStream const& stream) {
    unsigned char const* data;
    unsigned int length;
    stream.getBuffer(data, length);
    return data ? std::string(reinterpret_cast<char const*>(data), length) : std::string();
}

std::uint32_t numberAt(std::string const& bytes, std::uint64_t position) {
    std::uint32_t number;
    std::memcpy(&number, &bytes[static_cast<std::size_t>(position)], sizeof number);
    return number;
}

struct Records {
    unsigned int count;
    bool whole;
};

/// Returns the expected results of `count` and `validate`.
Records recordsIn(std::string const& bytes) {
    std::uint64_t position = 0;
    unsigned int count = 0;
    for (; position < bytes.size(); ++count) {
        if (bytes.size() - position < 8)
            return {count == 0 ? 0 : count + 1, false};
        position += 8 + std::uint64_t{numberAt(bytes, position + 4)};
    }
    return {count, position == bytes.size()};
}

/// Returns the result of the operation; nullopt if it throws the library's exception.
template <class Operation>
std::optional<unsigned int> attempt(Operation operation) {
    try {
        return operation();
    } catch (zntl::Exception const&) {
        return std::nullopt;
    }
}

void readAll(MemIOStream stream);

/// Peeks at the next record and reads it, which must agree. Skips an unreadable one.
void readInto(znsl::Serializable&& object, MemIOStream& stream) {
    std::string const before = content(stream);
    auto const peeked = attempt([&] { return stream.peek(object); });
    require(content(stream) == before, "peeking consumes nothing");
    auto const consumed = attempt([&] { return stream.read(object); });
    require(consumed == peeked, "reading agrees with peeking");
    if (!consumed)
        stream.skip();
    std::uint64_t const end = 8 + std::uint64_t{numberAt(before, 4)};
    require(content(stream) == before.substr(static_cast<std::size_t>(
                                   std::min<std::uint64_t>(end, before.size()))),
            "one record is consumed");
}

void readNested(MemIOStream& stream) {
    MemIOStream nested;
    auto const peeked = attempt([&] { return stream.peek(nested); });
    if (peeked) {
        require(nested.validate(), "a nested stream is whole records");
        readAll(nested);
    }
    readInto(MemIOStream(), stream);
}

void readNext(MemIOStream& stream) {
    switch (stream.getNextType()) {
    case 6:
        return readNested(stream);
    case 501:
        return readInto(zntl::String(), stream);
    case 504:
        return readInto(zntl::Integer(), stream);
    case 815:
        return readInto(znvl::Resolution(), stream);
    case 10815:
        return readInto(ResolutionSet(), stream);
    default:
        stream.skip();
    }
}

/// Reads all records of a copy, so the caller's stream does not change.
void readAll(MemIOStream stream) {
    while (stream.size() >= 8)
        readNext(stream);
}

void skipAll(MemIOStream stream) {
    std::uint64_t announced = 0;
    std::uint64_t const size = stream.size();
    bool const whole = stream.validate();
    while (stream.size() >= 8) {
        std::uint64_t const length = numberAt(content(stream), 4);
        require(stream.skip() == static_cast<std::uint32_t>(8 + length), "skip returns the size");
        announced += 8 + length;
    }
    require(!attempt([&] { return stream.skip(); }), "nothing is left to skip");
    require(whole == (announced == size), "skipping walks as validating does");
}

/// Operations that are safe for any content, even if it is not whole records.
void lookAt(MemIOStream const& stream, std::string const& bytes) {
    Records const records = recordsIn(bytes);
    require(stream.size() == bytes.size(), "size");
    require(stream.isEmpty() == bytes.empty(), "isEmpty");
    require(stream.count() == records.count, "count");
    require(stream.validate() == records.whole, "validate");
    auto const type = attempt([&] { return stream.getNextType(); });
    require(type.has_value() == (bytes.empty() || bytes.size() >= 8), "getNextType");
    if (type)
        require(stream.isEOF() == (!bytes.empty() && *type == 1), "isEOF");

    znsl::Serializable* const any = nullptr;
    zntl::Integer integer;
    znsl::Serializable* const number = &integer;
    for (unsigned int n = 0; n < 4; ++n) {
        auto const matches = attempt([&] { return stream.checkTypes(n, any, any, any); });
        auto const peeked = attempt([&] { return stream.peek(n, any, any, any); });
        require(matches.has_value() == (bytes.size() >= 8), "checkTypes");
        require(peeked && *peeked <= bytes.size(), "peek at any records");
        if (n > 0 && matches)
            require((*matches != 0) == (*peeked != 0), "checkTypes agrees with peek");
    }
    attempt([&] { return stream.checkTypes(2, number, number); });
    attempt([&] { return stream.peek(2, number, number); });
}

void carryOver(MemIOStream const& stream, std::string const& bytes) {
    bool const whole = recordsIn(bytes).whole;
    MemIOStream copy(stream);
    require(content(copy) == bytes, "a copy has the content");

    std::vector<unsigned char> form(stream.getBinLength());
    require(stream.toBin(form.data()) == form.size(), "toBin");
    auto const taken =
        attempt([&] { return copy.fromBin(form.data(), static_cast<unsigned int>(form.size())); });
    require(taken.has_value() == whole, "fromBin takes whole records");
    require(content(copy) == bytes, "fromBin keeps the bytes");

    MemIOStream outer;
    outer.write(stream);
    require(content(outer).substr(12) == bytes, "a stream in a stream");
    require(outer.validate(), "a stream in a stream is one whole record");

    static fuzz::File saved;
    require(stream.save(saved.path()), "save");
    require(saved.content() == bytes, "the file holds the unread bytes");
}

void append(MemIOStream stream, std::string const& bytes) {
    stream << zntl::Integer(7) << znvl::Resolution(640, 480);
    stream.close();
    stream.defrag();
    stream.reserve(2 * stream.capacity());
    require(content(stream).substr(0, bytes.size()) == bytes, "appending keeps what was there");
    require(content(stream).size() == bytes.size() + 12 + 16 + 8, "three records more");
}

} // namespace

void fuzz::run(Input& input) {
    static File file;
    file.fill(input.data(), input.size());
    std::string const bytes = input.takeRest();

    MemIOStream stream;
    bool const loaded = stream.load(file.path());
    require(loaded == recordsIn(bytes).whole, "load reports whole records");
    require(content(stream) == bytes, "load keeps the bytes");
    lookAt(stream, bytes);
    carryOver(stream, bytes);
    append(stream, bytes);
    skipAll(stream);
    readAll(stream);

    // Loads again, into a stream that has content.
    if (!bytes.empty() && stream.size() >= 8) {
        stream.skip();
        require(stream.load(file.path()) == loaded, "load does not depend on the old content");
        require(content(stream) == bytes, "load replaces the old content");
    }
    stream.purge();
    require(stream.capacity() == 0 && stream.isEmpty(), "purge");
}
