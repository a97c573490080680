#include "streams/znsl_Serializable.h"

#include "misc/internal/zntl_bytes.h"
#include "streams/internal/znsl_readWithin.h"
#include "system/internal/zn_File.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace znsl {

namespace {

using TypeField = std::uint16_t;
using LengthField = std::uint32_t;
constexpr std::size_t headerSize = sizeof(TypeField) + sizeof(LengthField);

/// The offset of the payload in the buffer. It leaves room for the header, and aligns the payload
/// like an allocation of its own.
constexpr std::size_t payloadOffset = alignof(std::max_align_t);
static_assert(payloadOffset >= headerSize);

/// Reads a payload of `length` bytes. Returns null if the file ends before that.
///
/// The length field alone never causes a large allocation. For a regular file, it is first compared
/// with the file's size. For a pipe, the buffer grows with the bytes that arrive. A character
/// device has the size 0, so only its header is read.
std::unique_ptr<unsigned char[]> readPayload(znst::File& file, LengthField length) {
    // Equivalent: other sizes are only slower
    constexpr std::uint64_t firstBlock = 65536;
    std::optional<std::uint64_t> const fileSize = file.size();
    if (fileSize && *fileSize < std::uint64_t{headerSize} + length)
        return nullptr;
    std::unique_ptr<unsigned char[]> payload;
    std::uint64_t size = 0;
    do {
        // Equivalent: growing otherwise is only slower
        std::uint64_t const next =
            fileSize ? length : std::min<std::uint64_t>(length, std::max(firstBlock, 2 * size));
        // Unreached: possible only with 32-bit addresses.
        if (next > PTRDIFF_MAX - zerosAfterPayload)
            throw std::bad_alloc();
        auto const count = static_cast<std::size_t>(next);
        std::unique_ptr<unsigned char[]> larger(new unsigned char[count + zerosAfterPayload]);
        std::copy_n(payload.get(), size, larger.get());
        std::memset(larger.get() + count, 0, zerosAfterPayload);
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
        // Unreached: possible only with 32-bit addresses.
        if (bufferSize > PTRDIFF_MAX)
            return false;
        std::unique_ptr<unsigned char[]> const buffer(
            new unsigned char[static_cast<std::size_t>(bufferSize)]);
        unsigned char* const payload = buffer.get() + payloadOffset;
        znst::File file = znst::File::create(path);
        if (!file || toBin(payload) != length)
            return false;

        unsigned char* const header = payload - headerSize;
        unsigned char* const afterType =
            zntl::storeNative(header, static_cast<TypeField>(getTypeId()));
        zntl::storeNative(afterType, LengthField{length});
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
        // Contract: the 16 stored bits are compared with the whole id, so a class whose id exceeds
        // 16 bits never loads. The file format has no room for more.
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
