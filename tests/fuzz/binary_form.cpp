// `fromBin` of each class reads any bytes of any length. The first byte of the input chooses the
// class.

#include "fuzz.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <utility>

using fuzz::require;
using ResolutionSet = znsl::Set<znvl::Resolution>;
using Sizes = std::set<std::pair<int, int>>;

namespace {

/// Returns the result of `fromBin`; nullopt if it throws the library's exception.
std::optional<unsigned int> read(znsl::Serializable& value, fuzz::Input const& input) {
    try {
        return value.fromBin(input.data(), input.size());
    } catch (zntl::Exception const&) {
        return std::nullopt;
    }
}

int numberAt(fuzz::Input const& input, std::uint64_t position) {
    int number;
    std::memcpy(&number, input.data() + position, sizeof number);
    return number;
}

std::uint32_t lengthAt(fuzz::Input const& input, std::uint64_t position) {
    return static_cast<std::uint32_t>(numberAt(input, position));
}

void runInteger(fuzz::Input const& input) {
    zntl::Integer integer(-7);
    auto const consumed = read(integer, input);
    require(consumed.has_value() == (input.size() >= 4), "an integer needs four bytes");
    require(!consumed || *consumed == 4, "an integer takes four bytes");
    require(integer.getValue() == (consumed ? numberAt(input, 0) : -7), "the integer's value");
}

void runResolution(fuzz::Input const& input) {
    znvl::Resolution resolution(-7, -8);
    resolution.name = "kept";
    auto const consumed = read(resolution, input);
    require(consumed.has_value() == (input.size() >= 8), "a resolution needs eight bytes");
    require(!consumed || *consumed == 8, "a resolution takes eight bytes");
    int const width = input.size() >= 4 ? numberAt(input, 0) : -7;
    int const height = consumed ? numberAt(input, 4) : -8;
    require(resolution == znvl::Resolution(width, height), "the resolution's value");
    require(resolution.name == "kept", "the name is unchanged");
}

/// The result of `readForm`, which reads a set's binary form literally as it is defined.
struct Form {
    enum { unreadable, notRecords, otherType, partial, complete } verdict;
    Sizes sizes;
    std::uint32_t consumed;
};

Form readForm(fuzz::Input const& input) {
    if (input.size() < 4 || lengthAt(input, 0) > input.size() - 4)
        return {Form::unreadable, {}, 0};
    std::uint32_t const end = 4 + lengthAt(input, 0);
    std::uint64_t position = 4;
    while (position < end) {
        if (end - position < 8)
            return {Form::notRecords, {}, 0};
        position += std::uint64_t{8} + lengthAt(input, position + 4);
    }
    if (position != end)
        return {Form::notRecords, {}, 0};

    position = 4;
    // Returns the position of the next record's payload if the record has this type and at least
    // `least` bytes; otherwise 0.
    auto const next = [&](std::uint16_t type, std::uint32_t least) -> std::uint64_t {
        std::uint16_t found;
        if (position == end)
            return 0;
        std::memcpy(&found, input.data() + position, sizeof found);
        std::uint32_t const length = lengthAt(input, position + 4);
        if (found != type || length < least)
            return 0;
        std::uint64_t const payload = position + 8;
        position = payload + length;
        return payload;
    };

    std::uint64_t const typeField = next(504, 4);
    if (typeField == 0)
        return {Form::partial, {}, 0};
    if (numberAt(input, typeField) != 815)
        return {Form::otherType, {}, 0};
    std::uint64_t const countField = next(504, 4);
    if (countField == 0)
        return {Form::partial, {}, 0};
    Sizes sizes;
    for (int remaining = numberAt(input, countField); remaining > 0; --remaining) {
        std::uint64_t const element = next(815, 8);
        if (element == 0)
            return {Form::partial, sizes, 0};
        sizes.emplace(numberAt(input, element), numberAt(input, element + 4));
    }
    return {Form::complete, sizes, end};
}

Sizes sizesOf(ResolutionSet const& set) {
    Sizes sizes;
    for (znvl::Resolution const& resolution : set)
        sizes.emplace(resolution.width.getValue(), resolution.height.getValue());
    require(sizes.size() == set.size(), "no size twice");
    return sizes;
}

void runSet(fuzz::Input const& input) {
    Sizes const before = {{1, 2}};
    Form const form = readForm(input);
    ResolutionSet set;
    set.emplace(1, 2);
    auto const consumed = read(set, input);
    switch (form.verdict) {
    case Form::unreadable:
    case Form::partial:
        require(!consumed, "a record that cannot be read is refused");
        require(sizesOf(set) == form.sizes, "elements before the failure are kept");
        break;
    case Form::notRecords:
        require(!consumed, "what is not whole records is refused");
        require(sizesOf(set) == before, "and leaves the set");
        break;
    case Form::otherType:
        require(consumed == 0U, "another element type returns 0");
        require(set.empty(), "and empties the set");
        break;
    case Form::complete:
        require(consumed == form.consumed, "the stream's length is consumed");
        require(sizesOf(set) == form.sizes, "all elements are taken");
        break;
    }

    std::string bytes(set.getBinLength(), '\0');
    auto* const out = reinterpret_cast<unsigned char*>(bytes.data());
    require(set.toBin(out) == bytes.size(), "getBinLength is exact");
    ResolutionSet again;
    require(again.fromBin(out, static_cast<unsigned int>(bytes.size())) == bytes.size() &&
                sizesOf(again) == sizesOf(set),
            "a set reads what it wrote");
}

} // namespace

void fuzz::run(Input& input) {
    switch (input.takeByte()) {
    case 'i':
        return runInteger(input);
    case 'r':
        return runResolution(input);
    default:
        return runSet(input);
    }
}
