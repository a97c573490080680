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

/// A directory for one test. The destructor removes it and its content.
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
    /// The path of a file in the directory, whether it exists or not.
    std::string operator/(std::string const& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// A device of this machine through a symbolic link. Tests run as root, so faulty code that removes
/// or replaces its file must hit the link and not the device.
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

/// The whole content of a file. Throws when it cannot be read.
inline Bytes readFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    Bytes bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad())
        throw std::runtime_error("cannot read " + path);
    return bytes;
}

/// Makes a file of these bytes and nothing else. Throws when it cannot be written.
inline void writeFile(std::string const& path, Bytes const& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<char const*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

} // namespace test
