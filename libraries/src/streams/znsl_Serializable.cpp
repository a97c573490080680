#include "streams/znsl_Serializable.h"

#include "misc/internal/zntl_bytes.h"
#include "system/internal/zn_File.h"

#include <cstdint>
#include <memory>

namespace znsl {

namespace {

using TypeField = std::uint16_t;
using LengthField = std::uint32_t;
constexpr std::size_t headerSize = sizeof(TypeField) + sizeof(LengthField);

/// Whether the file is known to end before `length` more bytes behind its header, so that
/// a length field from a hostile file cannot ask for memory that no payload stands for.
bool endsBefore(std::optional<std::uint64_t> fileSize, LengthField length) {
    return fileSize && *fileSize < std::uint64_t{headerSize} + length;
}

} // namespace

bool Serializable::toFile(char const* path) const {
    try {
        unsigned int const length = getBinLength();
        std::unique_ptr<unsigned char[]> const payload(new unsigned char[length]);
        znst::File file = znst::File::create(path);
        if (!file || toBin(payload.get()) != length)
            return false;

        unsigned char header[headerSize];
        unsigned char* const behindType =
            zntl::storeNative(header, static_cast<TypeField>(getTypeId()));
        zntl::storeNative(behindType, LengthField{length});
        return file.write(header, sizeof header) && file.write(payload.get(), length);
    } catch (...) {
        return false;
    }
}

bool Serializable::fromFile(char const* path) {
    try {
        znst::File file = znst::File::open(path);
        if (!file)
            return false;
        std::optional<std::uint64_t> const fileSize = file.size();

        unsigned char header[headerSize];
        if (!file.read(header, sizeof header))
            return false;
        // The whole id is compared, so a class whose id exceeds 16 bits never loads; kept.
        if (zntl::loadNative<TypeField>(header) != getTypeId())
            return false;
        auto const length = zntl::loadNative<LengthField>(header + sizeof(TypeField));
        if (endsBefore(fileSize, length))
            return false;

        std::unique_ptr<unsigned char[]> const payload(new unsigned char[length]);
        return file.read(payload.get(), length) && fromBin(payload.get(), length) == length;
    } catch (...) {
        return false;
    }
}

} // namespace znsl
