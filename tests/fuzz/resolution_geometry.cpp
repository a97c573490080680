// The scaling and the maximum of any two sizes. Input: four 32-bit numbers.

#include "fuzz.h"

#include "video/znvl_Resolution.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

using fuzz::require;
using znvl::Resolution;

namespace {

int takeNumber(fuzz::Input& input) {
    int number = 0;
    std::string const bytes = input.takeBytes(sizeof number);
    std::memcpy(&number, bytes.data(), bytes.size());
    return number;
}

/// Rounds half away from zero in single precision and saturates; NaN becomes 0.
int rounded(float x) {
    if (std::isnan(x))
        return 0;
    if (x >= 2147483648.0F)
        return std::numeric_limits<int>::max();
    if (x <= -2147483648.0F)
        return std::numeric_limits<int>::min();
    float volatile const sum = x >= 0 ? x + 0.5F : x - 0.5F;
    return static_cast<int>(std::trunc(sum));
}

/// Scales step by step. Each step is stored in a volatile float, so it is rounded to single
/// precision.
Resolution scaled(int width, int height, int boundsWidth, int boundsHeight) {
    float volatile const w = static_cast<float>(width);
    float volatile const h = static_cast<float>(height);
    float volatile const bw = static_cast<float>(boundsWidth);
    float volatile const bh = static_cast<float>(boundsHeight);
    float volatile const aspect = w / h;
    float volatile const fitHeight = bw / aspect;
    float volatile const fitWidth = aspect * bh;
    if (fitHeight > bh)
        return {rounded(fitWidth), boundsHeight};
    return {boundsWidth, rounded(fitHeight)};
}

} // namespace

void fuzz::run(Input& input) {
    int const width = takeNumber(input);
    int const height = takeNumber(input);
    int const boundsWidth = takeNumber(input);
    int const boundsHeight = takeNumber(input);
    Resolution value(width, height);
    value.name = "carried";
    Resolution const bounds(boundsWidth, boundsHeight);

    Resolution const result = value.scale(bounds);
    if (boundsWidth <= 0 || boundsHeight <= 0 || value == bounds) {
        require(result == value && result.name == "carried", "scale returns a copy");
    } else {
        require(result == scaled(width, height, boundsWidth, boundsHeight), "scale");
        require(result.name.empty(), "what was computed has no name");
    }

    Resolution const none(0, 0);
    Resolution const most = value.getMax(bounds);
    bool const isNone = value == none || bounds == none;
    require(most ==
                (isNone ? none
                        : Resolution(std::max(width, boundsWidth), std::max(height, boundsHeight))),
            "getMax");
    require(!(value < bounds && bounds < value), "the order is strict");
    require((value == bounds) == (!(value < bounds) && !(bounds < value)), "the order is total");
}
