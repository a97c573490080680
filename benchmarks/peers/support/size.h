#pragma once

#include <boost/serialization/level.hpp>
#include <boost/serialization/tracking.hpp>
#include <msgpack.hpp>

#include <string>
#include <utility>

namespace bench {

/// What a user of another library would write for a resolution: it holds what a resolution holds,
/// and like one it is ordered by its size and stores its size only.
struct Size {
    int width = 0;
    int height = 0;
    std::string name;

    Size() = default;
    Size(int w, int h) : width(w), height(h) {}

    bool operator<(Size const& other) const {
        return width != other.width ? width < other.width : height < other.height;
    }

    MSGPACK_DEFINE(width, height)
};

template <class Archive>
void serialize(Archive& archive, Size& size) {
    archive(size.width, size.height);
}

} // namespace bench

namespace boost::serialization {

template <class Archive>
void serialize(Archive& archive, bench::Size& size, unsigned int /*version*/) {
    archive& size.width& size.height;
}

} // namespace boost::serialization

BOOST_CLASS_IMPLEMENTATION(bench::Size, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(bench::Size, boost::serialization::track_never)
