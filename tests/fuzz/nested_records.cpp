// Reads values of every type, in any nesting, from any bytes. The first byte of the input chooses
// the type, the second the operation. The rest are the bytes to read.

#include "fuzz.h"
#include "read_everything.h"

#include <cstdint>
#include <iterator>
#include <string>

namespace {

std::string recordOf(unsigned int type, std::string const& payload) {
    auto const type16 = static_cast<std::uint16_t>(type);
    std::uint16_t const reserved = 0;
    auto const length = static_cast<std::uint32_t>(payload.size());
    std::string bytes(reinterpret_cast<char const*>(&type16), sizeof type16);
    bytes.append(reinterpret_cast<char const*>(&reserved), sizeof reserved);
    bytes.append(reinterpret_cast<char const*>(&length), sizeof length);
    return bytes + payload;
}

} // namespace

void fuzz::run(Input& input) {
    unsigned int const type = readableTypes[input.takeByte() % std::size(readableTypes)];
    unsigned char const way = input.takeByte();
    std::string const payload = input.takeRest();
    switch (way % 4) {
    case 0:
        return readDirectly(type, payload);
    case 1:
        return readTypedFile(type, payload);
    case 2:
        return readStreamFile(payload);
    default:
        return readRecords(streamOf(recordOf(type, payload)));
    }
}
