// Ordered sets of resolutions: filled, and carried through their binary form.

#include "objects.pb.h"
#include "support/data.h"
#include "support/memory_buffer.h"
#include "support/row.h"
#include "support/size.h"

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

#include <algorithm>
#include <istream>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace bench {

namespace {

std::vector<std::pair<int, int>> randomSizes(int count) {
    generator().seed(2);
    std::vector<std::pair<int, int>> sizes;
    for (int i = 0; i < count; ++i)
        sizes.emplace_back(randomInt(1, 1'000'000), randomInt(1, 2160));
    return sizes;
}

template <class Set>
Set makeSet(int count) {
    Set set;
    for (auto const& [width, height] : randomSizes(count))
        set.emplace(width, height);
    return set;
}

template <class Set>
auto inserting(int count) {
    return [sizes = randomSizes(count)] {
        Set set;
        for (auto const& [width, height] : sizes)
            set.emplace(width, height);
        return set.size();
    };
}

/// What any ordering costs at least: the same values sorted in an array.
auto sorting(int count) {
    return [sizes = randomSizes(count)] {
        auto sorted = sizes;
        std::sort(sorted.begin(), sorted.end());
        sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
        return sorted.size();
    };
}

std::size_t sumOf(znsl::Set<znvl::Resolution> const& set) {
    std::size_t sum = 0;
    for (znvl::Resolution const& size : set)
        sum = sum * 3 + static_cast<unsigned int>(size.width.getValue());
    return sum;
}

std::size_t sumOf(std::set<Size> const& set) {
    std::size_t sum = 0;
    for (Size const& size : set)
        sum = sum * 3 + static_cast<unsigned int>(size.width);
    return sum;
}

// To bytes in a buffer that is kept, and back into a set that is kept.

auto zn(int count) {
    using Set = znsl::Set<znvl::Resolution>;
    return
        [set = makeSet<Set>(count), read = Set(), bytes = std::vector<unsigned char>()]() mutable {
            bytes.resize(set.getBinLength());
            set.toBin(bytes.data());
            read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()));
            return sumOf(read);
        };
}

auto cereal(int count) {
    using Set = std::set<Size>;
    return [set = makeSet<Set>(count), read = Set(),
            buffer = std::make_shared<MemoryBuffer>()]() mutable {
        buffer->clear();
        std::ostream out(buffer.get());
        ::cereal::BinaryOutputArchive{out}(set);
        buffer->turnAround();
        std::istream in(buffer.get());
        ::cereal::BinaryInputArchive{in}(read);
        return sumOf(read);
    };
}

auto boost(int count) {
    using Set = std::set<Size>;
    return [set = makeSet<Set>(count), read = Set(),
            buffer = std::make_shared<MemoryBuffer>()]() mutable {
        constexpr unsigned int flags = ::boost::archive::no_header | ::boost::archive::no_codecvt;
        buffer->clear();
        ::boost::archive::binary_oarchive(*buffer, flags) << set;
        buffer->turnAround();
        ::boost::archive::binary_iarchive(*buffer, flags) >> read;
        return sumOf(read);
    };
}

auto msgpack(int count) {
    using Set = std::set<Size>;
    return [set = makeSet<Set>(count), read = Set(),
            buffer = std::make_shared<::msgpack::sbuffer>()]() mutable {
        buffer->clear();
        ::msgpack::pack(*buffer, set);
        ::msgpack::unpack(buffer->data(), buffer->size()).get().convert(read);
        return sumOf(read);
    };
}

auto protobuf(int count) {
    using Set = std::set<Size>;
    return [set = makeSet<Set>(count), read = Set(), bytes = std::string(),
            message = std::make_shared<proto::Sizes>()]() mutable {
        message->Clear();
        for (Size const& size : set) {
            proto::Size* const added = message->add_sizes();
            added->set_width(size.width);
            added->set_height(size.height);
        }
        message->SerializeToString(&bytes);
        message->ParseFromString(bytes);
        read.clear();
        for (proto::Size const& size : message->sizes())
            read.emplace_hint(read.end(), size.width(), size.height());
        return sumOf(read);
    };
}

void addRows(int count) {
    std::string const elements = std::to_string(count) + " resolutions";
    Row("set: insert " + elements)
        .library(inserting<znsl::Set<znvl::Resolution>>(count))
        .peer("std::set", inserting<std::set<Size>>(count))
        .peer("boost::set", inserting<::boost::container::set<Size>>(count))
        .peer("absl::btree_set", inserting<absl::btree_set<Size>>(count))
        .limit("std::sort", sorting(count));
    Row("set: to bytes and back, " + elements)
        .library(zn(count))
        .peer("cereal", cereal(count))
        .peer("boost", boost(count))
        .peer("msgpack", msgpack(count))
        .peer("protobuf", protobuf(count));
}

[[maybe_unused]] bool const added = [] {
    addRows(100);
    addRows(100'000);
    return true;
}();

} // namespace

} // namespace bench
