// Without this, fstat() and open() fail on 32-bit machines for files with a large inode number or
// size.
#define _FILE_OFFSET_BITS 64 // NOLINT(bugprone-reserved-identifier): the C library's own switch

#include "system/internal/zn_File.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace znst {

namespace {

/// Repeats a system call while a signal interrupts it.
template <class Call>
auto uninterrupted(Call call) noexcept {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

// Equivalent: any negative number would do
constexpr int noDescriptor = -1;

int openDescriptor(char const* path, int flags) noexcept {
    if (!path)
        return noDescriptor;
    return uninterrupted([&] { return ::open(path, flags | O_CLOEXEC, 0666); });
}

} // namespace

File File::open(char const* path) noexcept { return File(openDescriptor(path, O_RDONLY)); }

File File::create(char const* path) noexcept {
    return File(openDescriptor(path, O_WRONLY | O_CREAT | O_TRUNC));
}

File::~File() {
    if (descriptor_ >= 0)
        close();
}

std::optional<std::uint64_t> File::size() noexcept {
    struct stat status;
    if (::fstat(descriptor_, &status) != 0)
        return std::nullopt;
    if (S_ISCHR(status.st_mode))
        return 0;
    if (!S_ISREG(status.st_mode))
        return std::nullopt;
    char byte;
    if (status.st_size == 0 && ::pread(descriptor_, &byte, 1, 0) > 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

std::ptrdiff_t File::readSome(void* bytes, std::size_t count) noexcept {
    return uninterrupted([&] { return ::read(descriptor_, bytes, count); });
}

bool File::read(void* bytes, std::size_t count) noexcept {
    auto* next = static_cast<unsigned char*>(bytes);
    while (count > 0) {
        std::ptrdiff_t const got = readSome(next, count);
        if (got <= 0)
            return false;
        next += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

bool File::write(void const* bytes, std::size_t count) noexcept {
    auto const* next = static_cast<unsigned char const*>(bytes);
    while (count > 0) {
        std::ptrdiff_t const put = uninterrupted([&] { return ::write(descriptor_, next, count); });
        if (put <= 0)
            return false;
        next += put;
        count -= static_cast<std::size_t>(put);
    }
    return true;
}

bool File::close() noexcept {
    // Not retried: Linux closes the descriptor even if a signal interrupts the call.
    bool const closed = ::close(descriptor_) == 0 || errno == EINTR;
    descriptor_ = noDescriptor;
    return closed;
}

} // namespace znst
