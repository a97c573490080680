// Files: saving and loading object streams, text and typed values. The files are in TMPDIR, which
// should be in memory, so that the disk's speed does not matter.

#include "support/data.h"
#include "support/row.h"
#include "support/temporary_directory.h"

#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "video/znvl_Resolution.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace bench {

namespace {

std::string file(std::string const& name) {
    static test::TemporaryDirectory const folder;
    return folder / name;
}

// These functions write bytes to a file and read them back, as users of each library do. Writing
// returns whether all bytes were written; reading reuses a string's buffer.

bool writeStream(std::string const& path, std::string const& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return out.good();
}

bool readStream(std::string const& path, std::string& bytes) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    bytes.resize(static_cast<std::size_t>(in.tellg()));
    in.seekg(0);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return in.good();
}

bool writeStdio(std::string const& path, std::string const& bytes) {
    std::FILE* const out = std::fopen(path.c_str(), "wb");
    bool const isWritten = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
    return std::fclose(out) == 0 && isWritten;
}

bool readStdio(std::string const& path, std::string& bytes) {
    std::FILE* const in = std::fopen(path.c_str(), "rb");
    std::fseek(in, 0, SEEK_END);
    bytes.resize(static_cast<std::size_t>(std::ftell(in)));
    std::rewind(in);
    bool const isRead = std::fread(bytes.data(), 1, bytes.size(), in) == bytes.size();
    std::fclose(in);
    return isRead;
}

/// Adds two rows: `write` and `read`, each compared with the peers, which write and read `bytes`.
template <class Write, class Read>
void addRows(std::string const& written, std::string const& readName, std::string const& name,
             std::shared_ptr<std::string const> bytes, Write write, Read read) {
    std::string const path = file(name);
    Row("file: " + written)
        .library([=] { return write(path.c_str()); })
        .peer("std::ofstream", [=] { return writeStream(path + ".stream", *bytes); })
        .peer("stdio", [=] { return writeStdio(path + ".stdio", *bytes); });
    auto const content = std::make_shared<std::string>();
    Row("file: " + readName)
        .library([=] { return read(path.c_str()); })
        .peer("std::ifstream", [=] { return readStream(path + ".stream", *content); })
        .peer("stdio", [=] { return readStdio(path + ".stdio", *content); });
}

void addTextRows(std::string const& name, std::size_t size) {
    generator().seed(4);
    auto const text = std::make_shared<zntl::String const>(randomText(size));
    addRows(
        "write a text of " + name, "read a text of " + name, name, text,
        [=](char const* path) { return text->toFile(path); },
        [=, content = std::make_shared<zntl::String>()](char const* path) {
            return content->fromFile(path) && content->size() == text->size();
        });
}

void addStreamRows() {
    auto const records = std::make_shared<znsl::MemIOStream>();
    zntl::String const text = randomText(64 * 1024 - 13);
    while (records->size() < 64U * 1024 * 1024)
        *records << text;
    unsigned char const* data;
    unsigned int length;
    records->getBuffer(data, length);
    addRows(
        "save an object stream of 64 MB", "load an object stream of 64 MB", "records",
        std::make_shared<std::string const>(reinterpret_cast<char const*>(data), length),
        [=](char const* path) { return records->save(path); },
        [=, loaded = std::make_shared<znsl::MemIOStream>()](char const* path) {
            return loaded->load(path) && loaded->size() == length;
        });
}

struct Record {
    std::uint16_t type;
    std::uint32_t length;
    int width, height;
};

template <class Write, class Read>
auto typed(Write write, Read read, std::string const& path) {
    return [=, bytes = std::string()]() mutable {
        Record record{815, 8, 640, 480};
        bytes.assign(reinterpret_cast<char const*>(&record), sizeof record);
        write(path, bytes);
        read(path, bytes);
        bytes.copy(reinterpret_cast<char*>(&record), sizeof record);
        return record.width;
    };
}

/// Writes a type, a length and two numbers, and reads them back.
void addTypedRow() {
    Row("file: write and read a resolution")
        .library([path = file("typed"), written = znvl::Resolution(640, 480),
                  read = znvl::Resolution()]() mutable {
            written.toFile(path.c_str());
            read.fromFile(path.c_str());
            return read.width.getValue();
        })
        .peer("std::fstream", typed(writeStream, readStream, file("typed.stream")))
        .peer("stdio", typed(writeStdio, readStdio, file("typed.stdio")));
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
