#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace znst {

/// Owns an open file and closes it in its destructor. No operation throws. Retries system calls
/// that a signal interrupts. Does not buffer: written bytes go to the system at once.
class File {
public:
    /// Opens a file for reading. A null path fails like a missing file. A directory can be opened,
    /// but it has no size and reading it fails.
    static File open(char const* path) noexcept;
    /// Creates a file for writing, or truncates an existing one to zero length.
    static File create(char const* path) noexcept;

    File(File const&) = delete;
    File& operator=(File const&) = delete;
    ~File();

    /// Whether the file could be opened.
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    /// Returns the size in bytes; 0 for a character device such as /dev/null. Returns nothing on an
    /// error, and for a directory, a pipe, or a file as in /proc that has content but reports a
    /// size of 0.
    std::optional<std::uint64_t> size() noexcept;

    /// Reads up to `count` bytes. Returns their number, 0 at the end of the file, or a negative
    /// number on an error.
    std::ptrdiff_t readSome(void* bytes, std::size_t count) noexcept;
    /// Reads exactly `count` bytes. Returns false on an error or if the file has fewer.
    bool read(void* bytes, std::size_t count) noexcept;
    /// Writes `count` bytes. Returns false on an error; some bytes may be written by then.
    bool write(void const* bytes, std::size_t count) noexcept;

    /// Closes the file, which must be open. Returns false if the system reports an error of an
    /// earlier write.
    bool close() noexcept;

private:
    explicit File(int descriptor) noexcept : descriptor_(descriptor) {}

    int descriptor_;
};

} // namespace znst
