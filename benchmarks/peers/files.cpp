// Files: saving and loading object streams, text and typed values. The files are in TMPDIR, which
// should be in memory, so that the disk's speed does not matter.

#include "support/data.h"
#include "support/row.h"
#include "support/temporary_directory.h"

#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "video/znvl_Resolution.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

namespace bench {

namespace {

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

/// Adds two rows: `write` and `read`, which receive a path, each compared with the peers, which
/// write and read the same bytes. All return whether they succeeded.
template <class Write, class Read>
void addFileRows(std::string const& writing, std::string const& reading, Write write, Read read) {
    static test::TemporaryDirectory const folder;
    std::string const path = folder / writing;
    auto const bytes = std::make_shared<std::string>();
    write(path);
    readStdio(path, *bytes);
    Row("file: " + writing, path)
        .library(write)
        .peer("std::ofstream", [=](auto& own) { return writeStream(own + ".stream", *bytes); })
        .peer("stdio", [=](auto& own) { return writeStdio(own + ".stdio", *bytes); });
    auto const content = std::make_shared<std::string>();
    Row("file: " + reading, path)
        .library(read)
        .peer("std::ifstream", [=](auto& own) { return readStream(own + ".stream", *content); })
        .peer("stdio", [=](auto& own) { return readStdio(own + ".stdio", *content); });
}

void addStreamRows() {
    auto const records = std::make_shared<znsl::MemIOStream>();
    zntl::String const text = randomText(64 * 1024 - 13);
    while (records->size() < 64U * 1024 * 1024)
        *records << text;
    addFileRows(
        "save an object stream of 64 MB", "load an object stream of 64 MB",
        [=](std::string const& path) { return records->save(path.c_str()); },
        [loaded = std::make_shared<znsl::MemIOStream>()](std::string const& path) {
            return loaded->load(path.c_str());
        });
}

template <class Value>
void addValueRows(std::string const& name, Value const& value) {
    auto const written = std::make_shared<Value const>(value);
    addFileRows(
        "write " + name, "read " + name,
        [=](std::string const& path) { return written->toFile(path.c_str()); },
        [read = std::make_shared<Value>()](std::string const& path) {
            return read->fromFile(path.c_str());
        });
}

} // namespace

void addRows() {
    addStreamRows();
    addValueRows("a text of 1 KB", zntl::String(randomText(1024)));
    addValueRows("a text of 16 MB", zntl::String(randomText(16 * 1024 * 1024)));
    addValueRows("a resolution", znvl::Resolution(640, 480));
}

} // namespace bench
