#pragma once

#include <cstddef>
#include <memory>
#include <string>

// What the fuzz targets share. A target is one source that defines fuzz::run(); linked with
// libFuzzer it searches for inputs that break something, linked with replay.cpp it is fed files.

namespace fuzz {

/// An input in a heap block of exactly its size, so that a sanitizer sees the first byte read
/// after it. Bytes are taken from the front.
class Input {
public:
    Input(unsigned char const* data, std::size_t size);

    /// What has not been taken yet.
    unsigned char const* data() const { return block_.get() + taken_; }
    unsigned int size() const { return size_ - taken_; }
    bool isEmpty() const { return size() == 0; }

    /// The next byte; 0 when there is none left.
    unsigned char takeByte();
    /// The next `count` bytes, or as many as there are.
    std::string takeBytes(unsigned int count);
    /// The text up to the next unit separator (0x1F), which is taken too; all when there is none.
    std::string takeField();
    /// All that is left.
    std::string takeRest();

private:
    std::unique_ptr<unsigned char[]> block_;
    unsigned int size_;
    unsigned int taken_ = 0;
};

/// What a target does with one input. It ends the program when something is wrong.
void run(Input& input);

/// Throws std::logic_error when a promise is broken. Nobody catches it in a fuzz target, so that it
/// ends the program as a crash that the fuzzer keeps.
void require(bool promise, char const* what);

/// A file in memory, for operations that want a path.
class File {
public:
    File();
    File(File const&) = delete;
    File& operator=(File const&) = delete;
    ~File();

    char const* path() const { return path_.c_str(); }
    std::string content() const;
    void fill(void const* bytes, std::size_t count);

private:
    int descriptor_;
    std::string path_;
};

} // namespace fuzz
