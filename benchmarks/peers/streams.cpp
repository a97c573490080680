// Queues of objects: writing, reading, and a steady state of both.

#include "support/objects.h"
#include "support/row.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "video/znvl_Resolution.h"

#include <boost/serialization/string.hpp>
#include <cereal/types/string.hpp>
#include <msgpack.hpp>

#include <memory>
#include <optional>
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

/// A queue in two archives, which share a buffer.
template <class Archives>
struct Archive : PeerValues, Archives {
    template <class Value>
    void put(Value const& value) {
        Archives::writer << static_cast<unsigned char>(kindOf(value)) << value;
    }
    template <class Value>
    void get(Value& value) {
        if (nextKind() != kindOf(value))
            throw std::runtime_error("type mismatch");
        Archives::reader >> value;
        next.reset();
    }
    Kind nextKind() {
        if (!next) {
            unsigned char kind;
            Archives::reader >> kind;
            next = static_cast<Kind>(kind);
        }
        return *next;
    }

    std::optional<Kind> next;
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

struct Rows {
    Row<> write;
    Row<> read;
    Row<> steady;
};

template <Content content, class Queue>
void addContender(Rows& rows, std::string const& contender) {
    auto const values = makeValues<Queue>();
    rows.write.peer(contender, [=] {
        Queue queue;
        auto* const reachable = &queue; // prevents the compiler from removing the writes
        benchmark::DoNotOptimize(reachable);
        putAll<content>(queue, *values);
        return 0;
    });

    auto const written = std::make_shared<Queue>();
    putAll<content>(*written, *values);
    rows.read.peer(contender, [=] {
        // The library copies and checks untrusted bytes. The peers read them in place.
        if constexpr (std::is_same_v<Queue, Zn>) {
            unsigned char const* bytes;
            unsigned int length;
            written->stream.getBuffer(bytes, length);
            Zn copy{znsl::MemIOStream(bytes, length)};
            return getAll<content>(copy);
        } else {
            written->turnAround();
            return getAll<content>(*written);
        }
    });

    rows.steady.peer(contender, [=, queue = std::make_shared<Queue>()] {
        putAll<content>(*queue, *values);
        queue->turnAround();
        std::size_t const sum = getAll<content>(*queue);
        queue->clear();
        return sum;
    });
}

template <Content content>
void addContentRows(std::string const& name) {
    Rows rows{Row("stream: write " + name), Row("stream: read " + name),
              Row("stream: steady queue of " + name)};
    addContender<content, Zn>(rows, "zn");
    addContender<content, Archive<CerealArchives>>(rows, "cereal");
    addContender<content, Archive<BoostArchives>>(rows, "boost");
    addContender<content, Msgpack>(rows, "msgpack");
}

} // namespace

void addRows() {
    addContentRows<integers>("integers");
    addContentRows<longTexts>("long strings");
    addContentRows<sizes>("resolutions");
    addContentRows<mixture>("a mixture");
}

} // namespace bench
