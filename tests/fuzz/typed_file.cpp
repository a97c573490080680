// Files of single values: `fromFile` accepts exactly the files with a value of its class, and the
// value can be written again. The first byte of the input chooses the class. (nested_records.cpp
// reads typed files of streams.)

#include "fuzz.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using fuzz::require;

namespace {

std::string binaryForm(znsl::Serializable const& value) {
    std::string form(value.getBinLength(), '\0');
    auto* const out = reinterpret_cast<unsigned char*>(form.data());
    require(value.toBin(out) == form.size(), "getBinLength is exact");
    return form;
}

/// Reads the value from the file's bytes, literally as the typed file is defined.
bool take(std::string const& file, znsl::Serializable& value) {
    std::uint16_t type;
    std::uint32_t length;
    if (file.size() < sizeof type + sizeof length)
        return false;
    std::memcpy(&type, file.data(), sizeof type);
    std::memcpy(&length, file.data() + sizeof type, sizeof length);
    std::size_t const headerSize = sizeof type + sizeof length;
    if (type != value.getTypeId() || file.size() - headerSize < length)
        return false;
    std::unique_ptr<unsigned char[]> const payload(new unsigned char[length]);
    std::memcpy(payload.get(), file.data() + headerSize, length);
    try {
        return value.fromBin(payload.get(), length) == length;
    } catch (std::exception const&) {
        return false;
    }
}

template <class Value>
void runValue(fuzz::File const& file) {
    Value fromFile;
    Value fromBytes;
    bool const loaded = fromFile.fromFile(file.path());
    require(loaded == take(file.content(), fromBytes), "fromFile returns the right result");
    if (!loaded)
        return;
    require(binaryForm(fromFile) == binaryForm(fromBytes), "fromFile takes the value");

    static fuzz::File written;
    Value again;
    require(fromFile.toFile(written.path()), "toFile");
    require(again.fromFile(written.path()), "fromFile accepts the file that toFile wrote");
    require(binaryForm(again) == binaryForm(fromFile), "the value is the same after toFile");
}

void runString(fuzz::File const& file) {
    static fuzz::File written;
    zntl::String text("before");
    require(text.fromFile(file.path()), "every file is a text");
    require(text == file.content(), "the whole file becomes the text");
    require(text.toFile(written.path()), "toFile");
    require(written.content() == file.content(), "the text becomes the file");
}

} // namespace

void fuzz::run(Input& input) {
    static File file;
    unsigned char const choice = input.takeByte();
    file.fill(input.data(), input.size());
    switch (choice) {
    case 'i':
        return runValue<zntl::Integer>(file);
    case 'r':
        return runValue<znvl::Resolution>(file);
    case 's':
        return runValue<znsl::Set<znvl::Resolution>>(file);
    case 'e':
        return runValue<znsl::EndOfFile>(file);
    default:
        return runString(file);
    }
}
