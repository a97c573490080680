#include "streams/znsl_Serializable.h"

#include "misc/internal/zntl_bytes.h"
#include "streams/internal/znsl_readWithin.h"
#include "system/internal/zn_File.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace znsl {

namespace {

using TypeField = std::uint16_t;
using LengthField = std::uint32_t;
constexpr std::size_t headerSize = sizeof(TypeField) + sizeof(LengthField);

/// The payload's offset in the buffer: the header fits before it, and the payload is as aligned as
/// an allocation of its own.
constexpr std::size_t payloadOffset = alignof(std::max_align_t);
static_assert(payloadOffset >= headerSize);

/// Follows the payload, so that a String that a class reads by hand finds a NUL, even after an
/// empty payload.
constexpr std::size_t zeros = sizeof(LengthField) + 1;

/// Reads a payload of `length` bytes; null when the file ends before that. The size of a regular
/// file is checked first. From a pipe or a device the memory grows with the bytes that arrive, so
/// that a length field alone cannot claim memory.
std::unique_ptr<unsigned char[]> readPayload(znst::File& file, LengthField length) {
    constexpr std::uint64_t firstBlock = 65536;
    std::optional<std::uint64_t> const fileSize = file.size();
    if (fileSize && *fileSize < std::uint64_t{headerSize} + length)
        return nullptr;
    std::unique_ptr<unsigned char[]> payload;
    std::uint64_t size = 0;
    do {
        std::uint64_t const next =
            fileSize ? length : std::min<std::uint64_t>(length, std::max(firstBlock, 2 * size));
        if (next > PTRDIFF_MAX - zeros)
            throw std::bad_alloc();
        auto const count = static_cast<std::size_t>(next);
        std::unique_ptr<unsigned char[]> larger(new unsigned char[count + zeros]);
        std::copy_n(payload.get(), size, larger.get());
        std::fill_n(larger.get() + count, zeros, static_cast<unsigned char>(0));
        if (!file.read(larger.get() + size, count - static_cast<std::size_t>(size)))
            return nullptr;
        payload = std::move(larger);
        size = next;
    } while (size < length);
    return payload;
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
        // Contract: the whole id is compared, so a class whose id exceeds 16 bits never loads.
        if (zntl::loadNative<TypeField>(header) != getTypeId())
            return false;
        auto const length = zntl::loadNative<LengthField>(header + sizeof(TypeField));
        std::unique_ptr<unsigned char[]> const payload = readPayload(file, length);
        return payload && readWithin(*this, payload.get(), length) == length;
    } catch (...) {
        return false;
    }
}

} // namespace znsl
