// Any sequence of operations on a memory stream, compared with a simple model of its buffer.

#include "fuzz.h"

#include "misc/zntl_Exception.h"
#include "streams/blob.h"
#include "streams/znsl_MemIOStream.h"
#include "support/buffer_model.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

using fuzz::require;
using znsl::MemIOStream;

namespace {

/// A model of a memory stream: its unread bytes and the positions in its buffer.
struct Model {
    std::string unread;
    test::BufferModel buffer;

    void append(std::string const& bytes, std::size_t room) {
        buffer.append(room, bytes.size());
        unread += bytes;
    }
    void append(std::string const& bytes) { append(bytes, bytes.size()); }
    void take(std::size_t n) {
        buffer.take(n);
        unread.erase(0, n);
    }
    void clear() {
        buffer.clear();
        unread.clear();
    }
    void set(std::string const& bytes) {
        buffer.set(bytes.size());
        unread = bytes;
    }
    bool isWhole() const {
        std::uint64_t position = 0;
        while (position < unread.size()) {
            if (unread.size() - position < 8)
                return false;
            position += 8 + std::uint64_t{lengthAt(position)};
        }
        return position == unread.size();
    }
    std::uint32_t lengthAt(std::uint64_t position) const {
        std::uint32_t length;
        std::memcpy(&length, &unread[static_cast<std::size_t>(position) + 4], sizeof length);
        return length;
    }
};

std::string record(std::uint16_t type, std::string const& payload) {
    std::uint16_t const reserved = 0;
    auto const length = static_cast<std::uint32_t>(payload.size());
    std::string bytes;
    bytes.append(reinterpret_cast<char const*>(&type), sizeof type);
    bytes.append(reinterpret_cast<char const*>(&reserved), sizeof reserved);
    bytes.append(reinterpret_cast<char const*>(&length), sizeof length);
    return bytes + payload;
}

void requireSame(MemIOStream const& stream, Model const& model) {
    unsigned char const* data;
    unsigned int length;
    stream.getBuffer(data, length);
    require(stream.capacity() == model.buffer.capacity, "the capacity follows the growth rule");
    require(length == model.unread.size() && stream.size() == length, "the size");
    require(length == 0 || std::memcmp(data, model.unread.data(), length) == 0, "the content");
    require((data == nullptr) == (length == 0), "no data, no pointer");
    require(stream.validate() == model.isWhole(), "validate");
}

template <class Operation>
bool throws(Operation operation) {
    try {
        operation();
        return false;
    } catch (zntl::Exception const&) {
        return true;
    }
}

void readBlob(MemIOStream& stream, Model& model, unsigned int type) {
    test::Blob blob(type);
    std::uint16_t next = 1;
    if (!model.unread.empty())
        std::memcpy(&next, model.unread.data(), sizeof next);
    bool const readable = type != 1 && next == type;
    require(throws([&] { stream.read(blob); }) != readable, "read asks for the type");
    if (!readable)
        return;
    std::string const payload(blob.payload.begin(), blob.payload.end());
    require(payload == model.unread.substr(8, model.lengthAt(0)), "read hands on the payload");
    model.take(8 + payload.size());
}

void step(unsigned char operation, fuzz::Input& input, MemIOStream& stream, Model& model) {
    unsigned int const n = input.takeByte();
    switch (operation % 16) {
    case 0: {
        test::Bytes const payload(n % 32, operation);
        stream.write(test::Blob(n, payload));
        model.append(record(static_cast<std::uint16_t>(n), {payload.begin(), payload.end()}));
        break;
    }
    case 1:
        stream.close();
        model.append(record(1, ""));
        break;
    case 2:
        require(throws([&] { stream.skip(); }) == (model.unread.size() < 8), "skip wants a header");
        if (model.unread.size() >= 8)
            model.take(std::size_t{8} + model.lengthAt(0));
        break;
    case 3: // reading; this model covers whole records only
        if (model.isWhole())
            readBlob(stream, model, n);
        break;
    case 4:
        stream.clear();
        model.clear();
        break;
    case 5:
        stream.purge();
        model = Model();
        break;
    case 6:
        stream.reserve(4 * n);
        model.buffer.reserve(std::size_t{4} * n);
        break;
    case 7:
        stream.checkBuff(n);
        model.buffer.makeRoom(n);
        break;
    case 8:
    case 9: { // appends any bytes, and in case 9 releases half of the room
        std::string const bytes = input.takeBytes(n % 64);
        auto const kept = static_cast<unsigned int>(bytes.size() / (1 + operation % 2));
        unsigned char* out = nullptr;
        stream.getWriteBuffer(out, static_cast<unsigned int>(bytes.size()));
        std::copy(bytes.begin(), bytes.end(), out);
        stream.finalizeBuffer(out, kept);
        model.append(bytes.substr(0, kept), bytes.size());
        break;
    }
    case 10:
        stream.defrag();
        model.buffer.defrag();
        break;
    case 11: {
        std::string const bytes = input.takeBytes(n % 64);
        Model expected = model;
        expected.set(bytes);
        auto const* const data = reinterpret_cast<unsigned char const*>(bytes.data());
        bool const refused =
            throws([&] { stream.setBuffer(data, static_cast<unsigned int>(bytes.size())); });
        require(refused != expected.isWhole(), "setBuffer reports whole records");
        model = expected;
        break;
    }
    case 12: { // setBuffer with some of the stream's own bytes
        unsigned char const* data;
        unsigned int length;
        stream.getBuffer(data, length);
        unsigned int const from = length == 0 ? 0 : n % length;
        std::string const bytes = model.unread.substr(from);
        throws([&] { stream.setBuffer(data ? data + from : nullptr, length - from); });
        model.set(bytes);
        break;
    }
    case 13: { // assigns to another stream and back
        MemIOStream other(n);
        other = stream;
        requireSame(other, model);
        stream = other;
        model.buffer.defrag();
        break;
    }
    case 14: {
        MemIOStream& same = stream;
        stream = same;
        model.clear();
        break;
    }
    default: {
        std::string const before = model.unread;
        auto const size = static_cast<std::uint32_t>(before.size());
        stream.write(stream);
        model.append(record(6, std::string(reinterpret_cast<char const*>(&size), 4) + before));
        break;
    }
    }
}

} // namespace

void fuzz::run(Input& input) {
    MemIOStream stream(input.takeByte());
    Model model;
    model.buffer.capacity = stream.capacity();
    // The size is limited, because writing a stream into itself doubles it.
    while (!input.isEmpty() && model.unread.size() < 4096) {
        step(input.takeByte(), input, stream, model);
        requireSame(stream, model);
    }
}
