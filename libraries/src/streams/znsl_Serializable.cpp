#include "streams/znsl_Serializable.h"

#include "misc/internal/zntl_bytes.h"
#include "system/internal/zn_File.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace znsl {

namespace {

using TypeField = std::uint16_t;
using LengthField = std::uint32_t;
constexpr std::size_t headerSize = sizeof(TypeField) + sizeof(LengthField);

/// The payload's place in a buffer that the header fits in front of, and that leaves the payload as
/// aligned as an allocation of its own.
constexpr std::size_t payloadOffset = alignof(std::max_align_t);
static_assert(payloadOffset >= headerSize);

/// Whether the file is known to end before the payload does, so that a length field from a hostile
/// file cannot ask for memory that no payload stands for.
bool endsBefore(znst::File& file, LengthField length) {
    std::optional<std::uint64_t> const fileSize = file.size(headerSize);
    return fileSize && *fileSize < std::uint64_t{headerSize} + length;
}

} // namespace

bool Serializable::toFile(char const* path) const {
    try {
        unsigned int const length = getBinLength();
        std::uint64_t const bufferSize = std::uint64_t{payloadOffset} + length;
        if (bufferSize > PTRDIFF_MAX) // more than 32-bit machines have
            return false;
        std::unique_ptr<unsigned char[]> const buffer(
            new unsigned char[static_cast<std::size_t>(bufferSize)]);
        unsigned char* const payload = buffer.get() + payloadOffset;
        znst::File file = znst::File::create(path);
        if (!file || toBin(payload) != length)
            return false;

        unsigned char* const header = payload - headerSize;
        unsigned char* const behindType =
            zntl::storeNative(header, static_cast<TypeField>(getTypeId()));
        zntl::storeNative(behindType, LengthField{length});
        return file.write(header, headerSize + length);
    } catch (...) {
        return false;
    }
}

bool Serializable::fromFile(char const* path) {
    try {
        znst::File file = znst::File::open(path);
        if (!file)
            return false;
        unsigned char header[headerSize];
        if (!file.read(header, sizeof header))
            return false;
        // The whole id is compared, so a class whose id exceeds 16 bits never loads; kept.
        if (zntl::loadNative<TypeField>(header) != getTypeId())
            return false;
        auto const length = zntl::loadNative<LengthField>(header + sizeof(TypeField));
        if (endsBefore(file, length))
            return false;

        std::unique_ptr<unsigned char[]> const payload(new unsigned char[length]);
        return file.read(payload.get(), length) && fromBin(payload.get(), length) == length;
    } catch (...) {
        return false;
    }
}

} // namespace znsl
