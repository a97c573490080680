#include "misc/zntl_String.h"

#include "system/internal/zn_File.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace zntl {

namespace {

/// Reads on behind `text` to the end of the file, whatever its size was said to be.
bool readRest(znst::File& file, std::string& text) {
    std::size_t used = text.size();
    // A byte more than the file has shows its end. Where the size is not known, or is 0 like that
    // of files which the system makes up, the text doubles.
    std::uint64_t const expected = file.size().value_or(0) + 1;
    if (expected > text.max_size())
        return false;
    text.resize(std::max(static_cast<std::size_t>(expected), 2 * used));
    std::ptrdiff_t got;
    while ((got = file.readSome(&text[used], text.size() - used)) > 0) {
        used += static_cast<std::size_t>(got);
        if (used == text.size())
            text.resize(2 * used);
    }
    text.resize(used);
    return got == 0;
}

/// Reads the file to its end: a small one is in memory after one read, and no more is asked.
bool readAll(znst::File& file, std::string& text) {
    char page[4096];
    std::ptrdiff_t got;
    while ((got = file.readSome(page, sizeof page)) > 0) {
        text.append(page, static_cast<std::size_t>(got));
        if (text.size() >= sizeof page)
            return readRest(file, text);
    }
    return got == 0;
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
