#include "fuzz.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fuzz {

Input::Input(unsigned char const* data, std::size_t size)
    : block_(new unsigned char[size]), size_(static_cast<unsigned int>(size)) {
    std::copy(data, data + size, block_.get());
}

unsigned char Input::takeByte() { return isEmpty() ? 0 : block_[taken_++]; }

std::string Input::takeBytes(unsigned int count) {
    count = std::min(count, size());
    std::string bytes(reinterpret_cast<char const*>(data()), count);
    taken_ += count;
    return bytes;
}

std::string Input::takeField() {
    void const* const separator = std::memchr(data(), 0x1F, size());
    if (!separator)
        return takeRest();
    std::string field =
        takeBytes(static_cast<unsigned int>(static_cast<unsigned char const*>(separator) - data()));
    takeByte();
    return field;
}

std::string Input::takeRest() { return takeBytes(size()); }

void require(bool promise, char const* what) {
    if (!promise)
        throw std::logic_error(std::string("broken promise: ") + what);
}

File::File() : descriptor_(memfd_create("fuzz", 0)) {
    if (descriptor_ < 0)
        throw std::runtime_error("cannot make a file in memory");
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

File::~File() { close(descriptor_); }

std::string File::content() const {
    struct stat status;
    if (fstat(descriptor_, &status) != 0)
        throw std::runtime_error("cannot map a file in memory");
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    if (pread(descriptor_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("cannot read a file in memory");
    return bytes;
}

void File::fill(void const* bytes, std::size_t count) {
    if (ftruncate(descriptor_, 0) != 0 ||
        pwrite(descriptor_, bytes, count, 0) != static_cast<ssize_t>(count))
        throw std::runtime_error("cannot write a file in memory");
}

} // namespace fuzz
