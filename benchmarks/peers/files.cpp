// Files: object streams saved and loaded, texts, typed values.

#include "support/data.h"
#include "support/row.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "video/znvl_Resolution.h"

#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

/// A folder of our own, in memory where the system has one there: the disk is not the question.
class Folder {
public:
    Folder() {
        std::string name = (std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
        name += "/zn-bench-XXXXXX";
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no folder for temporary files");
        path_ = name;
    }
    ~Folder() { std::filesystem::remove_all(path_); }

    std::string file(char const* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

Folder const folder;

// The same bytes to a file and back, as each library's users do it. Writing tells whether all was
// written; reading fills a string whose memory is kept.

bool writeStream(std::string const& path, std::string const& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return file.good();
}

bool readStream(std::string const& path, std::string& bytes) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    bytes.resize(static_cast<std::size_t>(file.tellg()));
    file.seekg(0);
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file.good();
}

bool writeStdio(std::string const& path, std::string const& bytes) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    bool const written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
}

bool readStdio(std::string const& path, std::string& bytes) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    std::fseek(file, 0, SEEK_END);
    bytes.resize(static_cast<std::size_t>(std::ftell(file)));
    std::rewind(file);
    bool const read = std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
    std::fclose(file);
    return read;
}

bool writeSystem(std::string const& path, std::string const& bytes) {
    int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    bool const written =
        write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    return close(file) == 0 && written;
}

/// Into memory that is there already: no allocation, nothing set to zero first.
bool readSystem(std::string const& path, std::string& bytes) {
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status;
    fstat(file, &status);
    auto const size = static_cast<std::size_t>(status.st_size);
    if (bytes.size() < size)
        bytes.resize(size);
    bool const isRead = read(file, bytes.data(), size) == static_cast<ssize_t>(size);
    close(file);
    return isRead;
}

void addStreamRows() {
    auto const records = std::make_shared<znsl::MemIOStream>();
    generator().seed(3);
    zntl::String const text = randomText(64 * 1024 - 13);
    while (records->size() < 64U * 1024 * 1024)
        *records << text;
    unsigned char const* data;
    unsigned int length;
    records->getBuffer(data, length);
    auto const bytes = std::make_shared<std::string>(reinterpret_cast<char const*>(data), length);

    Row("file: save an object stream of 64 MB")
        .library([=] { return records->save(folder.file("zn").c_str()); })
        .peer("std::ofstream", [=] { return writeStream(folder.file("stream"), *bytes); })
        .peer("stdio", [=] { return writeStdio(folder.file("stdio"), *bytes); })
        .limit("write(2)", [=] { return writeSystem(folder.file("system"), *bytes); });

    auto const content = std::make_shared<std::string>();
    Row("file: load an object stream of 64 MB")
        .library([=, loaded = std::make_shared<znsl::MemIOStream>()] {
            return loaded->load(folder.file("zn").c_str());
        })
        .peer("std::ifstream", [=] { return readStream(folder.file("stream"), *content); })
        .peer("stdio", [=] { return readStdio(folder.file("stdio"), *content); })
        .limit("read(2)", [=] { return readSystem(folder.file("system"), *content); });
}

void addTextRows(std::string const& name, std::size_t size) {
    generator().seed(4);
    auto const text = std::make_shared<zntl::String>(randomText(size));
    auto const path = [=](char const* contender) {
        return folder.file((std::to_string(size) + contender).c_str());
    };
    Row("file: write a text of " + name)
        .library([=] { return text->toFile(path("zn").c_str()); })
        .peer("std::ofstream", [=] { return writeStream(path("stream"), *text); })
        .peer("stdio", [=] { return writeStdio(path("stdio"), *text); })
        .limit("write(2)", [=] { return writeSystem(path("system"), *text); });

    auto const isRead = [=](std::string const& read) { return read == *text; };
    auto const content = std::make_shared<std::string>();
    auto const read = std::make_shared<zntl::String>();
    Row("file: read a text of " + name)
        .library([=] {
            read->fromFile(path("zn").c_str());
            return read->size();
        })
        .peer("std::ifstream",
              [=] {
                  readStream(path("stream"), *content);
                  return content->size();
              })
        .peer("stdio",
              [=] {
                  readStdio(path("stdio"), *content);
                  return content->size();
              })
        .limit("read(2)", [=] { return readSystem(path("system"), *content); });
    if (!isRead(*read) || !isRead(*content))
        throw std::runtime_error("the text read is not the text written");
}

/// Two numbers behind a type and a length, written and read back.
void addTypedRow() {
    Row("file: write and read a resolution")
        .library([written = znvl::Resolution(640, 480), read = znvl::Resolution()]() mutable {
            std::string const path = folder.file("typed-zn");
            written.toFile(path.c_str());
            read.fromFile(path.c_str());
            return read.width.getValue();
        })
        .peer("cereal",
              [] {
                  std::string const path = folder.file("typed-cereal");
                  {
                      std::ofstream file(path, std::ios::binary);
                      cereal::BinaryOutputArchive{file}(std::uint16_t{815}, std::uint32_t{8}, 640,
                                                        480);
                  }
                  std::ifstream file(path, std::ios::binary);
                  std::uint16_t type;
                  std::uint32_t length;
                  int width;
                  int height;
                  cereal::BinaryInputArchive{file}(type, length, width, height);
                  return width;
              })
        .peer("std::fstream",
              [] {
                  std::string const path = folder.file("typed-stream");
                  struct {
                      std::uint16_t type;
                      std::uint32_t length;
                      int width, height;
                  } record{815, 8, 640, 480};
                  {
                      std::ofstream file(path, std::ios::binary);
                      file.write(reinterpret_cast<char const*>(&record), sizeof record);
                  }
                  std::ifstream file(path, std::ios::binary);
                  file.read(reinterpret_cast<char*>(&record), sizeof record);
                  return record.width;
              })
        .peer("stdio",
              [] {
                  std::string const path = folder.file("typed-stdio");
                  struct {
                      std::uint16_t type;
                      std::uint32_t length;
                      int width, height;
                  } record{815, 8, 640, 480};
                  std::FILE* file = std::fopen(path.c_str(), "wb");
                  std::fwrite(&record, sizeof record, 1, file);
                  std::fclose(file);
                  file = std::fopen(path.c_str(), "rb");
                  std::size_t const read = std::fread(&record, sizeof record, 1, file);
                  std::fclose(file);
                  return record.width * static_cast<int>(read);
              })
        .limit("read(2), write(2)", [] {
            std::string const path = folder.file("typed-system");
            std::string bytes(14, '\0');
            writeSystem(path, bytes);
            return readSystem(path, bytes);
        });
}

[[maybe_unused]] bool const added = [] {
    addStreamRows();
    addTextRows("1 KB", 1024);
    addTextRows("16 MB", 16 * 1024 * 1024);
    addTypedRow();
    return true;
}();

} // namespace

} // namespace bench
