// Compares resolutions that are read from text with those that the C library's sscanf reads, and
// converts them back to text.

#include "fuzz.h"

#include "video/znvl_Resolution.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <strings.h>

using fuzz::require;
using znvl::Resolution;

namespace {

int saturated(long long number) {
    return static_cast<int>(std::clamp<long long>(number, std::numeric_limits<int>::min(),
                                                  std::numeric_limits<int>::max()));
}

std::optional<Resolution> scan(char const* text) {
    long long width = 0;
    long long height = 0;
    // NOLINTNEXTLINE(cert-err34-c): the C library saturates at 64 bits
    if (std::sscanf(text, "%lld x %lld", &width, &height) == 2)
        return Resolution(saturated(width), saturated(height));
    for (int i = 0; Resolution::NameStrings[i]; ++i) {
        if (strcasecmp(text, Resolution::NameStrings[i]) == 0)
            return scan(Resolution::ResolutionStrings[i]);
    }
    return std::nullopt;
}

} // namespace

void fuzz::run(Input& input) {
    std::string const text = input.takeRest();
    Resolution resolution(-7, -8);
    resolution.name = "kept";
    bool const taken = resolution.fromString(text);
    auto const expected = scan(text.c_str());
    require(taken == expected.has_value(), "fromString takes what the C library scans");
    require(resolution == expected.value_or(Resolution(-7, -8)), "fromString");
    require(resolution.name == "kept", "the name is unchanged");

    std::string const name = resolution.toNameString();
    require(scan(name.c_str()) == resolution, "toNameString is the way back");
    bool const isNamed = name.find('x') == std::string::npos;
    bool hasName = false;
    for (int i = 0; Resolution::NameStrings[i]; ++i)
        hasName = hasName || scan(Resolution::ResolutionStrings[i]) == resolution;
    require(isNamed == hasName, "toNameString names what has a name");
}
