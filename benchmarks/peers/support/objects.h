#pragma once

#include "misc/zntl_Integer.h"
#include "video/znvl_Resolution.h"

#include <boost/serialization/level.hpp>
#include <boost/serialization/tracking.hpp>
#include <msgpack.hpp>

#include <cstddef>
#include <streambuf>
#include <string>
#include <vector>

namespace bench {

/// A resolution as a user of another library would write it. Like the library's class, it has a
/// size and a name, is ordered by its size and stores only its size.
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

// These return a number that depends on the value.

inline std::size_t checksum(int value) { return static_cast<unsigned int>(value); }
inline std::size_t checksum(zntl::Integer const& value) { return checksum(value.getValue()); }
inline std::size_t checksum(std::string const& text) {
    return text.size() + static_cast<unsigned char>(text.back());
}
inline std::size_t checksum(Size const& size) {
    return checksum(size.width) * 3 + checksum(size.height);
}
inline std::size_t checksum(znvl::Resolution const& size) {
    return checksum(size.width) * 3 + checksum(size.height);
}

/// A stream buffer in memory that can be cleared and refilled without an allocation, unlike
/// std::stringbuf. An expert user of a stream-based archive would write it.
class MemoryBuffer : public std::streambuf {
public:
    /// Makes the written bytes available for reading.
    void turnAround() { setg(pbase(), pbase(), pptr()); }
    void clear() { setp(storage_.data(), storage_.data() + storage_.size()); }

protected:
    int_type overflow(int_type c) override {
        grow(1);
        return sputc(traits_type::to_char_type(c));
    }

    std::streamsize xsputn(char const* text, std::streamsize count) override {
        if (epptr() - pptr() < count)
            grow(static_cast<std::size_t>(count));
        traits_type::copy(pptr(), text, static_cast<std::size_t>(count));
        pbump(static_cast<int>(count));
        return count;
    }

private:
    void grow(std::size_t needed) {
        auto const used = pptr() - pbase();
        storage_.resize(2 * storage_.size() + needed);
        clear();
        pbump(static_cast<int>(used));
    }

    std::vector<char> storage_;
};

} // namespace bench

namespace boost::serialization {

template <class Archive>
void serialize(Archive& archive, bench::Size& size, unsigned int /*version*/) {
    archive& size.width& size.height;
}

} // namespace boost::serialization

BOOST_CLASS_IMPLEMENTATION(bench::Size, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(bench::Size, boost::serialization::track_never)
