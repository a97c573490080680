#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace znst {

/// One open file. Closed when it goes out of scope. Nothing here throws; interrupted calls are
/// taken up again, and there is no buffer: what was written is with the system.
class File {
public:
    /// Opens a file for reading; a null path counts as a file that cannot be opened. A directory
    /// can be opened, but neither be read nor measured.
    static File open(char const* path) noexcept;
    /// Creates a file for writing, or cuts an existing one to zero length.
    static File create(char const* path) noexcept;

    File(File const&) = delete;
    File& operator=(File const&) = delete;
    ~File();

    /// Whether the file could be opened.
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    /// Whether the file can be read at all, which a directory cannot.
    bool isReadable() noexcept;

    /// The size in bytes, measured by seeking to the end and then to `position`, where reading goes
    /// on; nothing for what cannot be sought in, such as a pipe. Where the way back fails the file
    /// is closed, and everything that follows fails. Directories pretend to have a size.
    std::optional<std::uint64_t> size(std::uint64_t position = 0) noexcept;

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
