#pragma once

#include <cstddef>
#include <vector>

/// Fills the processor's caches with something else, so that a run finds them cold whatever its
/// size is. Otherwise what goes at the speed of memory looks as if it grew faster than its input
/// between a size that fits the caches and one that does not.
inline void leaveCaches() {
    static std::vector<unsigned char> other(std::size_t{96} << 20);
    for (std::size_t i = 0; i < other.size(); i += 64)
        ++other[i];
}
