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

using Numbers = std::vector<std::pair<int, int>>;
using ZnSet = znsl::Set<znvl::Resolution>;
using PeerSet = std::set<Size>;

template <class Set>
Set makeSet(Numbers const& sizes) {
    Set set;
    for (auto const& [width, height] : sizes)
        set.emplace(width, height);
    return set;
}

template <class Set>
std::size_t inserting(Numbers const& sizes) {
    return makeSet<Set>(sizes).size();
}

template <class Set>
std::size_t sumOf(Set const& set) {
    std::size_t sum = 0;
    for (auto const& size : set)
        sum = sum * 3 + checksum(size);
    return sum;
}

// These functions write a set to a reused buffer and read it into a reused set.

void zn(ZnSet const& set, std::vector<unsigned char>& buffer, ZnSet& read) {
    buffer.resize(set.getBinLength());
    set.toBin(buffer.data());
    read.fromBin(buffer.data(), static_cast<unsigned int>(buffer.size()));
}

void cereal(PeerSet const& set, MemoryBuffer& buffer, PeerSet& read) {
    buffer.clear();
    std::ostream out(&buffer);
    ::cereal::BinaryOutputArchive{out}(set);
    buffer.turnAround();
    std::istream in(&buffer);
    ::cereal::BinaryInputArchive{in}(read);
}

void boost(PeerSet const& set, MemoryBuffer& buffer, PeerSet& read) {
    buffer.clear();
    constexpr unsigned int flags = ::boost::archive::no_header | ::boost::archive::no_codecvt;
    ::boost::archive::binary_oarchive(buffer, flags) << set;
    buffer.turnAround();
    ::boost::archive::binary_iarchive(buffer, flags) >> read;
}

void msgpack(PeerSet const& set, ::msgpack::sbuffer& buffer, PeerSet& read) {
    buffer.clear();
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

template <class Set, class Buffer>
auto passing(Numbers const& sizes, void (*pass)(Set const&, Buffer&, Set&)) {
    return [=, set = makeSet<Set>(sizes), read = Set(),
            buffer = std::make_shared<Buffer>()]() mutable {
        pass(set, *buffer, read);
        return sumOf(read);
    };
}

void addSetRows(int count) {
    Numbers sizes;
    for (int i = 0; i < count; ++i)
        sizes.emplace_back(randomInt(1, 1'000'000), randomInt(1, 2160));
    std::string const elements = std::to_string(count) + " resolutions";
    Row("set: insert " + elements, sizes)
        .library(inserting<ZnSet>)
        .peer("std::set", inserting<PeerSet>)
        .peer("boost::set", inserting<::boost::container::set<Size>>)
        .peer("absl::btree_set", inserting<absl::btree_set<Size>>);
    Row("set: to bytes and back, " + elements)
        .library(passing(sizes, zn))
        .peer("cereal", passing(sizes, cereal))
        .peer("boost", passing(sizes, boost))
        .peer("msgpack", passing(sizes, msgpack))
        .peer("protobuf", passing(sizes, protobuf));
}

} // namespace

void addRows() {
    addSetRows(100);
    addSetRows(100'000);
}

} // namespace bench
