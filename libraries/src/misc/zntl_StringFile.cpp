#include "misc/zntl_String.h"
#include "system/internal/zn_File.h"

#include <cstring>
#include <limits>
#include <memory>

namespace zntl {

namespace {

/// The size of the first read: the file's own size and one byte more, which shows its end; a page
/// where the size is not known, or given as 0 like that of files which the system makes up.
std::size_t firstReadSize(znst::File& file) {
    constexpr std::size_t page = 4096;
    std::uint64_t const size = file.size().value_or(0);
    if (size == 0)
        return page;
    if (size >= std::numeric_limits<std::size_t>::max())
        throw std::bad_alloc();
    return static_cast<std::size_t>(size) + 1;
}

/// Reads to the end of the file, whatever its size was said to be.
bool readAll(znst::File& file, std::string& text) {
    text.resize(firstReadSize(file));
    std::size_t used = 0;
    while (true) {
        std::ptrdiff_t const got = file.readSome(&text[used], text.size() - used);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        used += static_cast<std::size_t>(got);
        if (used == text.size())
            text.resize(2 * used);
    }
    text.resize(used);
    return true;
}

} // namespace

bool String::toFile(char const* path) const {
    znst::File file = znst::File::create(path);
    return file && file.write(data(), size());
}

bool String::fromFile(char const* path) {
    clear();
    znst::File file = znst::File::open(path);
    if (!file)
        return false;
    try {
        if (readAll(file, *this))
            return true;
    } catch (...) { // NOLINT(bugprone-empty-catch): no memory is a failure like any other
    }
    clear();
    return false;
}

String::operator SmartArray<char>() const {
    std::size_t const count = size() + 1;
    std::unique_ptr<char[]> buffer(new char[count]);
    std::memcpy(buffer.get(), c_str(), std::strlen(c_str()) + 1);
    return {buffer.release(), static_cast<unsigned int>(count)};
}

} // namespace zntl
