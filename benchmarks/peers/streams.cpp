// Queues of objects: writing, reading, and a steady state of both.

#include "objects.pb.h"
#include "support/objects.h"
#include "support/row.h"

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

#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace bench {

namespace {

enum class Kind : unsigned char { integer, text, size };

Kind kindOf(int const&) { return Kind::integer; }
Kind kindOf(std::string const&) { return Kind::text; }
Kind kindOf(Size const&) { return Kind::size; }

template <class Value>
void requireKind(Kind found, Value const& value) {
    if (found != kindOf(value))
        throw std::runtime_error("type mismatch");
}

// Each contender is a queue of objects of different kinds. `put` appends an object with its kind,
// `nextKind` returns the kind of the next object, and `get` removes it; `get` throws for an object
// of another kind. `turnAround` is called between writing and reading, `clear` after reading.

struct Zn {
    using Integer = zntl::Integer;
    using Text = zntl::String;
    using Size = znvl::Resolution;

    void put(znsl::Serializable const& object) { stream << object; }
    void get(znsl::Serializable& object) { stream >> object; }
    Kind nextKind() const {
        auto const type = stream.getNextType();
        return type == 504 ? Kind::integer : type == 501 ? Kind::text : Kind::size;
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

/// A queue in two archives, which write to and read from a stream buffer.
template <class Archives>
struct Archive : PeerValues {
    template <class Value>
    void put(Value const& value) {
        archives.writer << static_cast<unsigned char>(kindOf(value)) << value;
    }
    template <class Value>
    void get(Value& value) {
        requireKind(nextKind(), value);
        archives.reader >> value;
        next.reset();
    }
    Kind nextKind() {
        if (!next) {
            unsigned char kind;
            archives.reader >> kind;
            next = static_cast<Kind>(kind);
        }
        return *next;
    }
    void turnAround() { buffer.turnAround(); }
    void clear() { buffer.clear(); }

    MemoryBuffer buffer;
    Archives archives{&buffer};
    std::optional<Kind> next;
};

struct CerealArchives {
    explicit CerealArchives(MemoryBuffer* buffer) : out(buffer), in(buffer) {}

    std::ostream out;
    std::istream in;
    cereal::BinaryOutputArchive writer{out};
    cereal::BinaryInputArchive reader{in};
};

struct BoostArchives {
    static constexpr unsigned int flags = boost::archive::no_header | boost::archive::no_codecvt |
                                          boost::archive::no_xml_tag_checking;

    explicit BoostArchives(MemoryBuffer* buffer) : writer(*buffer, flags), reader(*buffer, flags) {}

    boost::archive::binary_oarchive writer;
    boost::archive::binary_iarchive reader;
};

struct Msgpack : PeerValues {
    template <class Value>
    void put(Value const& value) {
        msgpack::pack(buffer, value);
    }
    template <class Value>
    void get(Value& value) {
        unpacked().convert(value); // throws for an object of another kind
        next.reset();
    }
    Kind nextKind() {
        auto const type = unpacked().type;
        return type == msgpack::type::STR     ? Kind::text
               : type == msgpack::type::ARRAY ? Kind::size
                                              : Kind::integer;
    }
    void turnAround() { offset = 0; }
    void clear() { buffer.clear(); }

    msgpack::object const& unpacked() {
        if (!next) {
            zone.clear();
            next = msgpack::unpack(zone, buffer.data(), buffer.size(), offset);
        }
        return *next;
    }

    msgpack::sbuffer buffer;
    std::size_t offset = 0;
    msgpack::zone zone;
    std::optional<msgpack::object> next;
};

namespace io = google::protobuf::io;

struct Protobuf : PeerValues {
    Protobuf() { clear(); }

    void assign(int value) { object.set_integer(value); }
    void assign(std::string const& text) { object.set_text(text); }
    void assign(Size const& size) {
        object.mutable_size()->set_width(size.width);
        object.mutable_size()->set_height(size.height);
    }
    template <class Value>
    void put(Value const& value) {
        assign(value);
        google::protobuf::util::SerializeDelimitedToCodedStream(object, &*coder);
    }

    void extract(int& value) const { value = object.integer(); }
    void extract(std::string& text) const { text = object.text(); }
    void extract(Size& size) const {
        size.width = object.size().width();
        size.height = object.size().height();
    }
    template <class Value>
    void get(Value& value) {
        requireKind(nextKind(), value);
        extract(value);
        isRead = false;
    }

    Kind nextKind() {
        if (!isRead)
            google::protobuf::util::ParseDelimitedFromCodedStream(&object, &*decoder, nullptr);
        isRead = true;
        return object.has_integer() ? Kind::integer : object.has_text() ? Kind::text : Kind::size;
    }
    void turnAround() {
        coder.reset();
        decoder.emplace(reinterpret_cast<std::uint8_t const*>(buffer.data()),
                        static_cast<int>(buffer.size()));
    }
    void clear() {
        buffer.clear();
        output.emplace(&buffer);
        coder.emplace(&*output);
    }

    proto::Object object;
    bool isRead = false;
    std::string buffer;
    std::optional<io::StringOutputStream> output;
    std::optional<io::CodedOutputStream> coder;
    std::optional<io::CodedInputStream> decoder;
};

// A queue contains objects of one kind, or a mixture of all kinds.

constexpr int count = 1000;
enum Content { integers, shortTexts, longTexts, sizes, mixture };

template <class Queue>
using Values = std::tuple<std::vector<typename Queue::Integer>, std::vector<typename Queue::Text>,
                          std::vector<typename Queue::Text>, std::vector<typename Queue::Size>>;

template <class Queue>
std::shared_ptr<Values<Queue>> makeValues() {
    std::mt19937 random(1); // the same values for each queue
    auto const randomUpTo = [&](unsigned int most) {
        return static_cast<int>(1 + random() % most);
    };
    auto values = std::make_shared<Values<Queue>>();
    for (int i = 0; i < count; ++i) {
        std::get<integers>(*values).emplace_back(randomUpTo(2'000'000) - 1'000'000);
        std::get<shortTexts>(*values).emplace_back(
            std::string(std::size_t(3 + randomUpTo(12)), 's'));
        std::get<longTexts>(*values).emplace_back(
            std::string(std::size_t(99 + randomUpTo(401)), 'l'));
        std::get<sizes>(*values).emplace_back(randomUpTo(4096), randomUpTo(2160));
    }
    return values;
}

template <Content content, class Queue>
void putAll(Queue& queue, Values<Queue> const& values) {
    if constexpr (content == mixture) {
        for (std::size_t i = 0; i < count; i += 4) {
            queue.put(std::get<integers>(values)[i]);
            queue.put(std::get<shortTexts>(values)[i]);
            queue.put(std::get<sizes>(values)[i]);
            queue.put(std::get<longTexts>(values)[i]);
        }
    } else {
        for (auto const& value : std::get<content>(values))
            queue.put(value);
    }
}

template <class Queue, class Value>
std::size_t getOne(Queue& queue, Value& value) {
    queue.get(value);
    return checksum(value);
}

template <Content content, class Queue>
std::size_t getAll(Queue& queue) {
    std::size_t sum = 0;
    if constexpr (content == mixture) {
        typename Queue::Integer integer{};
        typename Queue::Text text{};
        typename Queue::Size size{};
        for (int i = 0; i < count; ++i) {
            Kind const kind = queue.nextKind();
            sum += kind == Kind::integer ? getOne(queue, integer)
                   : kind == Kind::text  ? getOne(queue, text)
                                         : getOne(queue, size);
        }
    } else {
        typename std::tuple_element_t<content, Values<Queue>>::value_type value{};
        for (int i = 0; i < count; ++i)
            sum += getOne(queue, value);
    }
    return sum;
}

/// Selects a function by the type of its queue.
template <class Queue>
struct Type {};

template <Content content, class Queue>
auto writing(Type<Queue> /*type*/) {
    return [values = makeValues<Queue>()] {
        Queue queue;
        auto* const reachable = &queue; // prevents the compiler from removing the writes
        benchmark::DoNotOptimize(reachable);
        putAll<content>(queue, *values);
        queue.turnAround();
        return 0;
    };
}

/// The library copies and checks untrusted bytes. The peers read them in place.
template <Content content, class Queue>
auto reading(Type<Queue> /*type*/) {
    auto const queue = std::make_shared<Queue>();
    putAll<content>(*queue, *makeValues<Queue>());
    return [queue] {
        if constexpr (std::is_same_v<Queue, Zn>) {
            unsigned char const* bytes;
            unsigned int length;
            queue->stream.getBuffer(bytes, length);
            Zn copy{znsl::MemIOStream(bytes, length)};
            return getAll<content>(copy);
        } else {
            queue->turnAround();
            return getAll<content>(*queue);
        }
    };
}

template <Content content, class Queue>
auto passing(Type<Queue> /*type*/) {
    return [values = makeValues<Queue>(), queue = std::make_shared<Queue>()] {
        putAll<content>(*queue, *values);
        queue->turnAround();
        std::size_t const sum = getAll<content>(*queue);
        queue->clear();
        return sum;
    };
}

/// `make` receives the type of a queue and returns its work.
template <class Make>
void addRow(std::string const& name, Make make) {
    Row("stream: " + name)
        .library(make(Type<Zn>()))
        .peer("cereal", make(Type<Archive<CerealArchives>>()))
        .peer("boost", make(Type<Archive<BoostArchives>>()))
        .peer("msgpack", make(Type<Msgpack>()))
        .peer("protobuf", make(Type<Protobuf>()));
}

template <Content content>
void addContentRows(std::string const& name) {
    addRow("write " + name, [](auto queue) { return writing<content>(queue); });
    addRow("read " + name, [](auto queue) { return reading<content>(queue); });
    addRow("steady queue of " + name, [](auto queue) { return passing<content>(queue); });
}

} // namespace

void addRows() {
    addContentRows<integers>("integers");
    addContentRows<longTexts>("long strings");
    addContentRows<sizes>("resolutions");
    addContentRows<mixture>("a mixture");
}

} // namespace bench
