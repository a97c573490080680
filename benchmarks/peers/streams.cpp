// Queues of objects: written, read, and kept in a steady state.

#include "objects.pb.h"
#include "support/data.h"
#include "support/memory_buffer.h"
#include "support/row.h"
#include "support/size.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "video/znvl_Resolution.h"

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/string.hpp>
#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>
#include <google/protobuf/util/delimited_message_util.h>
#include <msgpack.hpp>

#include <cstring>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

namespace {

enum class Kind : unsigned char { integer, text, size };

template <class Integer, class Text, class Size>
struct Values {
    std::vector<Integer> integers;
    std::vector<Text> shortTexts;
    std::vector<Text> longTexts;
    std::vector<Size> sizes;
};

std::size_t checksum(int value) { return static_cast<unsigned int>(value); }
std::size_t checksum(zntl::Integer const& value) { return checksum(value.getValue()); }
std::size_t checksum(std::string const& text) {
    return text.size() + static_cast<unsigned char>(text.back());
}
std::size_t checksum(Size const& size) { return checksum(size.width) * 3 + checksum(size.height); }
std::size_t checksum(znvl::Resolution const& size) {
    return checksum(size.width) * 3 + checksum(size.height);
}

// Each contender is a queue of objects of any kind: `put` appends one with its kind, `nextKind`
// tells what comes, `get` takes one and throws when it is of another kind. `bytes` is the whole
// content; a queue made from bytes reads them where they lie, if it can. Between two rounds of
// a steady queue, `turnAround` stands between writing and reading and `clear` behind.

struct Zn {
    using Integer = zntl::Integer;
    using Text = zntl::String;
    using Size = znvl::Resolution;

    Zn() = default;
    explicit Zn(std::string_view bytes)
        : stream(reinterpret_cast<unsigned char const*>(bytes.data()),
                 static_cast<unsigned int>(bytes.size())) {}

    void put(znsl::Serializable const& object) { stream << object; }
    void get(znsl::Serializable& object) { stream >> object; }
    Kind nextKind() {
        switch (stream.getNextType()) {
        case 504:
            return Kind::integer;
        case 501:
            return Kind::text;
        default:
            return Kind::size;
        }
    }
    std::string_view bytes() {
        unsigned char const* data;
        unsigned int length;
        stream.getBuffer(data, length);
        return {reinterpret_cast<char const*>(data), length};
    }
    void turnAround() {}
    void clear() {}

    znsl::MemIOStream stream;
};

struct PeerValues {
    using Integer = int;
    using Text = std::string;
    using Size = bench::Size;
};

Kind kindOf(int const&) { return Kind::integer; }
Kind kindOf(std::string const&) { return Kind::text; }
Kind kindOf(Size const&) { return Kind::size; }

template <class Value>
void requireKind(Kind found, Value const& value) {
    if (found != kindOf(value))
        throw std::runtime_error("type mismatch");
}

struct Cereal : PeerValues {
    Cereal() : buffer(), out(&buffer), in(&buffer), writer(out), reader(in) {}
    explicit Cereal(std::string_view bytes)
        : buffer(bytes), out(&buffer), in(&buffer), writer(out), reader(in) {}

    template <class Value>
    void put(Value const& value) {
        writer(kindOf(value), value);
    }
    template <class Value>
    void get(Value& value) {
        requireKind(nextKind(), value);
        reader(value);
        next.reset();
    }
    Kind nextKind() {
        if (!next)
            reader(next.emplace());
        return *next;
    }
    std::string_view bytes() { return buffer.written(); }
    void turnAround() { buffer.turnAround(); }
    void clear() { buffer.clear(); }

    MemoryBuffer buffer;
    std::ostream out;
    std::istream in;
    cereal::BinaryOutputArchive writer;
    cereal::BinaryInputArchive reader;
    std::optional<Kind> next;
};

struct Boost : PeerValues {
    static constexpr unsigned int flags = boost::archive::no_header | boost::archive::no_codecvt |
                                          boost::archive::no_xml_tag_checking;

    Boost() : writer(std::in_place, buffer, flags) {}
    explicit Boost(std::string_view bytes) : buffer(bytes), reader(std::in_place, buffer, flags) {}

    template <class Value>
    void put(Value const& value) {
        auto const kind = static_cast<unsigned char>(kindOf(value));
        *writer << kind << value;
    }
    template <class Value>
    void get(Value& value) {
        requireKind(nextKind(), value);
        *reader >> value;
        next.reset();
    }
    Kind nextKind() {
        if (!next) {
            unsigned char kind;
            *reader >> kind;
            next = static_cast<Kind>(kind);
        }
        return *next;
    }
    std::string_view bytes() { return buffer.written(); }
    void turnAround() {
        buffer.turnAround();
        if (!reader)
            reader.emplace(buffer, flags);
    }
    void clear() { buffer.clear(); }

    MemoryBuffer buffer;
    std::optional<boost::archive::binary_oarchive> writer;
    std::optional<boost::archive::binary_iarchive> reader;
    std::optional<Kind> next;
};

struct Msgpack : PeerValues {
    Msgpack() = default;
    explicit Msgpack(std::string_view bytes) : input(bytes) {}

    template <class Value>
    void put(Value const& value) {
        msgpack::pack(buffer, value);
    }
    template <class Value>
    void get(Value& value) {
        unpacked().convert(value); // throws when it is of another kind
        next.reset();
    }
    Kind nextKind() {
        switch (unpacked().type) {
        case msgpack::type::STR:
            return Kind::text;
        case msgpack::type::ARRAY:
            return Kind::size;
        default:
            return Kind::integer;
        }
    }
    std::string_view bytes() { return {buffer.data(), buffer.size()}; }
    void turnAround() { input = bytes(); }
    void clear() {
        buffer.clear();
        offset = 0;
    }

    msgpack::object const& unpacked() {
        if (!next) {
            zone.clear();
            next = msgpack::unpack(zone, input.data(), input.size(), offset);
        }
        return *next;
    }

    msgpack::sbuffer buffer;
    std::string_view input;
    std::size_t offset = 0;
    msgpack::zone zone;
    std::optional<msgpack::object> next;
};

namespace io = google::protobuf::io;

struct Protobuf : PeerValues {
    Protobuf() { clear(); }
    explicit Protobuf(std::string_view bytes) { open(bytes); }

    void put(int value) {
        object.set_integer(value);
        write();
    }
    void put(std::string const& text) {
        object.set_text(text);
        write();
    }
    void put(Size const& size) {
        object.mutable_size()->set_width(size.width);
        object.mutable_size()->set_height(size.height);
        write();
    }
    void get(int& value) {
        requireKind(nextKind(), value);
        value = object.integer();
        isRead = false;
    }
    void get(std::string& text) {
        requireKind(nextKind(), text);
        text = object.text();
        isRead = false;
    }
    void get(Size& size) {
        requireKind(nextKind(), size);
        size.width = object.size().width();
        size.height = object.size().height();
        isRead = false;
    }
    Kind nextKind() {
        read();
        switch (object.kind_case()) {
        case proto::Object::kInteger:
            return Kind::integer;
        case proto::Object::kText:
            return Kind::text;
        default:
            return Kind::size;
        }
    }
    std::string_view bytes() {
        coder.reset();
        return buffer;
    }
    void turnAround() {
        coder.reset();
        open(buffer);
    }
    void clear() {
        buffer.clear();
        output.emplace(&buffer);
        coder.emplace(&*output);
    }

    void write() { google::protobuf::util::SerializeDelimitedToCodedStream(object, &*coder); }
    void read() {
        if (isRead)
            return;
        google::protobuf::util::ParseDelimitedFromCodedStream(&object, &*decoder, nullptr);
        isRead = true;
    }
    void open(std::string_view bytes) {
        decoder.emplace(reinterpret_cast<std::uint8_t const*>(bytes.data()),
                        static_cast<int>(bytes.size()));
    }

    proto::Object object;
    bool isRead = false;
    std::string buffer;
    std::optional<io::StringOutputStream> output;
    std::optional<io::CodedOutputStream> coder;
    std::optional<io::CodedInputStream> decoder;
};

constexpr int count = 1000;

template <class Queue>
using ValuesOf = Values<typename Queue::Integer, typename Queue::Text, typename Queue::Size>;

template <class Queue>
std::shared_ptr<ValuesOf<Queue>> makeValues() {
    generator().seed(1);
    auto values = std::make_shared<ValuesOf<Queue>>();
    for (int i = 0; i < count; ++i) {
        values->integers.emplace_back(randomInt(-1'000'000, 1'000'000));
        values->shortTexts.emplace_back(randomWord(static_cast<std::size_t>(randomInt(4, 15))));
        values->longTexts.emplace_back(randomText(static_cast<std::size_t>(randomInt(100, 500))));
        values->sizes.emplace_back(randomInt(1, 4096), randomInt(1, 2160));
    }
    return values;
}

// What a queue is filled with: one kind of object, or all in turn.

template <class Select>
struct OneKind {
    template <class Queue>
    static void put(Queue& queue, ValuesOf<Queue> const& values) {
        for (auto const& value : Select::from(values))
            queue.put(value);
    }
    template <class Queue>
    static std::size_t get(Queue& queue) {
        std::size_t sum = 0;
        std::decay_t<decltype(Select::from(std::declval<ValuesOf<Queue>&>())[0])> value{};
        for (int i = 0; i < count; ++i) {
            queue.get(value);
            sum += checksum(value);
        }
        return sum;
    }
};

struct Integers {
    template <class Values>
    static auto& from(Values& values) {
        return values.integers;
    }
};
struct ShortTexts {
    template <class Values>
    static auto& from(Values& values) {
        return values.shortTexts;
    }
};
struct LongTexts {
    template <class Values>
    static auto& from(Values& values) {
        return values.longTexts;
    }
};
struct Sizes {
    template <class Values>
    static auto& from(Values& values) {
        return values.sizes;
    }
};

struct Mixture {
    template <class Queue>
    static void put(Queue& queue, ValuesOf<Queue> const& values) {
        for (std::size_t i = 0; i < count; i += 4) {
            queue.put(values.integers[i]);
            queue.put(values.shortTexts[i]);
            queue.put(values.sizes[i]);
            queue.put(values.longTexts[i]);
        }
    }
    template <class Queue>
    static std::size_t get(Queue& queue) {
        std::size_t sum = 0;
        typename Queue::Integer integer{};
        typename Queue::Text text{};
        typename Queue::Size size{};
        for (int i = 0; i < count; ++i) {
            switch (queue.nextKind()) {
            case Kind::integer:
                queue.get(integer);
                sum += checksum(integer);
                break;
            case Kind::text:
                queue.get(text);
                sum += checksum(text);
                break;
            case Kind::size:
                queue.get(size);
                sum += checksum(size);
                break;
            }
        }
        return sum;
    }
};

template <class Queue, class Content>
auto writing() {
    return [values = makeValues<Queue>()] {
        Queue queue;
        Content::put(queue, *values);
        return queue.bytes().empty();
    };
}

template <class Queue, class Content>
auto reading() {
    Queue written;
    Content::put(written, *makeValues<Queue>());
    return [bytes = std::string(written.bytes())] {
        Queue queue(bytes);
        return Content::get(queue);
    };
}

template <class Queue, class Content>
auto passing() {
    return [values = makeValues<Queue>(), queue = std::make_shared<Queue>()] {
        Content::put(*queue, *values);
        queue->turnAround();
        std::size_t const sum = Content::get(*queue);
        queue->clear();
        return sum;
    };
}

/// The bytes that the library moves, moved by themselves.
template <class Content>
auto copying() {
    Zn written;
    Content::put(written, *makeValues<Zn>());
    std::string const bytes(written.bytes());
    return [bytes, copy = std::make_shared<std::string>(bytes)] {
        std::memcpy(copy->data(), bytes.data(), bytes.size());
        return copy->data();
    };
}

template <class Content>
void addRows(std::string const& content) {
    Row("stream: write " + content)
        .library(writing<Zn, Content>())
        .peer("cereal", writing<Cereal, Content>())
        .peer("boost", writing<Boost, Content>())
        .peer("msgpack", writing<Msgpack, Content>())
        .peer("protobuf", writing<Protobuf, Content>())
        .limit("memcpy", copying<Content>());
    Row("stream: read " + content)
        .library(reading<Zn, Content>())
        .peer("cereal", reading<Cereal, Content>())
        .peer("boost", reading<Boost, Content>())
        .peer("msgpack", reading<Msgpack, Content>())
        .peer("protobuf", reading<Protobuf, Content>())
        .limit("memcpy", copying<Content>());
    Row("stream: steady queue of " + content)
        .library(passing<Zn, Content>())
        .peer("cereal", passing<Cereal, Content>())
        .peer("boost", passing<Boost, Content>())
        .peer("msgpack", passing<Msgpack, Content>())
        .peer("protobuf", passing<Protobuf, Content>())
        .limit("memcpy", copying<Content>());
}

[[maybe_unused]] bool const added = [] {
    addRows<OneKind<Integers>>("integers");
    addRows<OneKind<ShortTexts>>("short strings");
    addRows<OneKind<LongTexts>>("long strings");
    addRows<OneKind<Sizes>>("resolutions");
    addRows<Mixture>("a mixture");
    return true;
}();

} // namespace

} // namespace bench
