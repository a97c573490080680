#pragma once

#include "support/bytes.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <system_error>

namespace test {

/// A new directory for one test. The destructor removes it with its content.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string path = (std::filesystem::temp_directory_path() / "zn-test-XXXXXX").string();
        if (!mkdtemp(path.data()))
            throw std::runtime_error("cannot make a temporary directory");
        path_ = path;
    }
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    /// The path of the directory itself.
    std::string path() const { return path_.string(); }
    /// The path of a file in the directory, which need not exist.
    std::string operator/(std::string const& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// A symbolic link to a device of this machine. Tests may run as root: faulty code that removes or
/// replaces its file must affect the link, not the device.
class Device {
public:
    explicit Device(std::string const& target) : path_(directory_ / "device") {
        std::filesystem::create_symlink(target, path_);
    }

    char const* path() const { return path_.c_str(); }
    /// Whether the link is still there.
    bool isUntouched() const { return std::filesystem::is_symlink(path_); }

private:
    TemporaryDirectory directory_;
    std::string path_;
};

/// Returns the content of a file. Throws std::runtime_error if it cannot be read.
inline Bytes readFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    Bytes bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad())
        throw std::runtime_error("cannot read " + path);
    return bytes;
}

/// Creates or replaces a file with these bytes. Throws std::runtime_error if it cannot be written.
inline void writeFile(std::string const& path, Bytes const& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<char const*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

} // namespace test
