#pragma once

#include <cstddef>
#include <memory>
#include <string>

// Shared by all fuzz targets. A target is a source that defines fuzz::run(). Linked with libFuzzer,
// it searches for inputs that break something; linked with replay.cpp, it runs with the inputs in
// files.

namespace fuzz {

/// An input in a heap block of exactly its size, so sanitizers detect reads past its end. Bytes are
/// taken from the front.
class Input {
public:
    Input(unsigned char const* data, std::size_t size);

    /// The remaining bytes.
    unsigned char const* data() const { return block_.get() + taken_; }
    unsigned int size() const { return size_ - taken_; }
    bool isEmpty() const { return size() == 0; }

    /// Takes the next byte; returns 0 if none is left.
    unsigned char takeByte();
    /// Takes the next `count` bytes, or all if fewer are left.
    std::string takeBytes(unsigned int count);
    /// Takes the bytes up to the next unit separator (0x1F), and the separator; all bytes if there
    /// is none.
    std::string takeField();
    /// Takes all remaining bytes.
    std::string takeRest();

private:
    std::unique_ptr<unsigned char[]> block_;
    unsigned int size_;
    unsigned int taken_ = 0;
};

/// Each target defines this: it tests one input, and ends the program if a promise is broken.
void run(Input& input);

/// Throws std::logic_error if `promise` is false. In a fuzz target nothing catches it, so the
/// program crashes, and the fuzzer saves the input.
void require(bool promise, char const* what);

/// A file in memory, for operations that need a path.
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
