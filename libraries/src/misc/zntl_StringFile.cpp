#include "misc/zntl_String.h"

#include "system/internal/zn_File.h"

#include <cstddef>
#include <cstdint>

namespace zntl {

namespace {

/// Reads the file to its end, even if that is not where its reported size ends.
bool readAll(znst::File& file, std::string& text) {
    // One byte more than the size, so the read that finds the end needs no larger string.
    std::uint64_t const room = file.size().value_or(4095) + 1;
    // Equivalent: on a 64-bit machine, resizing fails instead
    if (room > text.max_size())
        return false;
    text.resize(static_cast<std::size_t>(room));
    std::size_t used = 0;
    std::ptrdiff_t got;
    while ((got = file.readSome(&text[used], text.size() - used)) > 0) {
        used += static_cast<std::size_t>(got);
        // Equivalent: another size is only slower
        if (used == text.size())
            text.resize(2 * used);
    }
    text.resize(used);
    return got == 0;
}

} // namespace

bool String::toFile(char const* path) const {
    znst::File file = znst::File::create(path);
    // Contract: ignores an error that the system reports only when the file is closed.
    return file && file.write(data(), size());
}

bool String::fromFile(char const* path) {
    clear(); // Contract: before the file is opened, so a path in this string fails
    znst::File file = znst::File::open(path);
    if (!file)
        return false;
    try {
        if (readAll(file, *this))
            return true;
    } catch (...) { // NOLINT(bugprone-empty-catch): allocation failure is a failed read
    }
    clear();
    return false;
}

} // namespace zntl
