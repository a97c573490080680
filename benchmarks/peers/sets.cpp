// Ordered sets of resolutions: inserting, and converting to bytes and back.

#include "objects.pb.h"
#include "support/data.h"
#include "support/objects.h"
#include "support/row.h"

#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <absl/container/btree_set.h>
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/container/set.hpp>
#include <boost/serialization/set.hpp>
#include <cereal/archives/binary.hpp>
#include <cereal/types/set.hpp>
#include <msgpack.hpp>

#include <istream>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace bench {

namespace {

template <class Set>
auto inserting(int count) {
    generator().seed(2);
    std::vector<std::pair<int, int>> sizes;
    for (int i = 0; i < count; ++i)
        sizes.emplace_back(randomInt(1, 1'000'000), randomInt(1, 2160));
    return [sizes] {
        Set set;
        for (auto const& [width, height] : sizes)
            set.emplace(width, height);
        return set.size();
    };
}

template <class Set>
Set makeSet(int count) {
    generator().seed(2);
    Set set;
    for (int i = 0; i < count; ++i)
        set.emplace(randomInt(1, 1'000'000), randomInt(1, 2160));
    return set;
}

template <class Set>
std::size_t sumOf(Set const& set) {
    std::size_t sum = 0;
    for (auto const& size : set)
        sum = sum * 3 + static_cast<unsigned int>(int{size.width});
    return sum;
}

// These functions write a set to a reused buffer and read it into a reused set.

using ZnSet = znsl::Set<znvl::Resolution>;
using PeerSet = std::set<Size>;

auto zn(int count) {
    return [set = makeSet<ZnSet>(count), read = ZnSet(),
            bytes = std::vector<unsigned char>()]() mutable {
        bytes.resize(set.getBinLength());
        set.toBin(bytes.data());
        read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()));
        std::size_t sum = 0;
        for (auto const& size : read)
            sum = sum * 3 + static_cast<unsigned int>(size.width.getValue());
        return sum;
    };
}

/// `pass` writes a set to the buffer and reads another set from it.
template <class Buffer, class Pass>
auto passing(int count, Pass pass) {
    return [=, set = makeSet<PeerSet>(count), read = PeerSet(),
            buffer = std::make_shared<Buffer>()]() mutable {
        buffer->clear();
        pass(set, *buffer, read);
        return sumOf(read);
    };
}

void cereal(PeerSet const& set, MemoryBuffer& buffer, PeerSet& read) {
    std::ostream out(&buffer);
    ::cereal::BinaryOutputArchive{out}(set);
    buffer.turnAround();
    std::istream in(&buffer);
    ::cereal::BinaryInputArchive{in}(read);
}

void boost(PeerSet const& set, MemoryBuffer& buffer, PeerSet& read) {
    constexpr unsigned int flags = ::boost::archive::no_header | ::boost::archive::no_codecvt;
    ::boost::archive::binary_oarchive(buffer, flags) << set;
    buffer.turnAround();
    ::boost::archive::binary_iarchive(buffer, flags) >> read;
}

void msgpack(PeerSet const& set, ::msgpack::sbuffer& buffer, PeerSet& read) {
    ::msgpack::pack(buffer, set);
    ::msgpack::unpack(buffer.data(), buffer.size()).get().convert(read);
}

void protobuf(PeerSet const& set, std::string& buffer, PeerSet& read) {
    static proto::Sizes message;
    message.Clear();
    for (Size const& size : set) {
        proto::Size* const added = message.add_sizes();
        added->set_width(size.width);
        added->set_height(size.height);
    }
    message.SerializeToString(&buffer);
    message.ParseFromString(buffer);
    read.clear();
    for (proto::Size const& size : message.sizes())
        read.emplace_hint(read.end(), size.width(), size.height());
}

void addRows(int count) {
    std::string const elements = std::to_string(count) + " resolutions";
    Row("set: insert " + elements)
        .library(inserting<ZnSet>(count))
        .peer("std::set", inserting<PeerSet>(count))
        .peer("boost::set", inserting<::boost::container::set<Size>>(count))
        .peer("absl::btree_set", inserting<absl::btree_set<Size>>(count));
    Row("set: to bytes and back, " + elements)
        .library(zn(count))
        .peer("cereal", passing<MemoryBuffer>(count, cereal))
        .peer("boost", passing<MemoryBuffer>(count, boost))
        .peer("msgpack", passing<::msgpack::sbuffer>(count, msgpack))
        .peer("protobuf", passing<std::string>(count, protobuf));
}

[[maybe_unused]] bool const added = [] {
    addRows(100);
    addRows(100'000);
    return true;
}();

} // namespace

} // namespace bench
