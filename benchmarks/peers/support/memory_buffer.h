#pragma once

#include <cstddef>
#include <streambuf>
#include <string_view>
#include <vector>

namespace bench {

/// A stream buffer over memory that can be emptied and filled again, which std::stringbuf cannot
/// without a new allocation: what a user of a stream-based archive who cares writes.
class MemoryBuffer : public std::streambuf {
public:
    MemoryBuffer() = default;
    /// Reads the bytes in place.
    explicit MemoryBuffer(std::string_view bytes) {
        char* const begin = const_cast<char*>(bytes.data());
        setg(begin, begin, begin + bytes.size());
    }

    std::string_view written() const {
        return {pbase(), static_cast<std::size_t>(pptr() - pbase())};
    }

    /// What was written becomes what is read.
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
        std::size_t const used = written().size();
        storage_.resize(2 * storage_.size() + needed);
        clear();
        pbump(static_cast<int>(used));
    }

    std::vector<char> storage_;
};

} // namespace bench
