#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace znst {

/// One open file, closed when it goes out of scope. Nothing here throws. Interrupted calls are
/// retried. There is no buffer: the system has whatever was written.
class File {
public:
    /// Opens a file for reading; a null path counts as a file that cannot be opened. A directory
    /// can be opened, but has no size and cannot be read.
    static File open(char const* path) noexcept;
    /// Creates a file for writing, or truncates an existing one to zero length.
    static File create(char const* path) noexcept;

    File(File const&) = delete;
    File& operator=(File const&) = delete;
    ~File();

    /// Whether the file could be opened.
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    /// The size in bytes; 0 for a device like /dev/null; nothing for a directory, a pipe, or a file
    /// like those in /proc, whose size is only known after reading it.
    std::optional<std::uint64_t> size() noexcept;

    /// Reads up to `count` bytes: their number, 0 at the end of the file, negative on an error.
    std::ptrdiff_t readSome(void* bytes, std::size_t count) noexcept;
    /// Reads exactly `count` bytes; false on an error or when the file ends before that.
    bool read(void* bytes, std::size_t count) noexcept;
    /// Writes all `count` bytes; false on an error, with some of them possibly written.
    bool write(void const* bytes, std::size_t count) noexcept;

    /// Closes the file now; false when the system reports an error of an earlier write.
    bool close() noexcept;

private:
    explicit File(int descriptor) noexcept : descriptor_(descriptor) {}

    int descriptor_;
};

} // namespace znst
