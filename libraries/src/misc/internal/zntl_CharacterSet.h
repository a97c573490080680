#pragma once

#include <array>
#include <climits>
#include <string_view>

namespace zntl {

/// A set of characters with a look-up that does not depend on their number.
class CharacterSet {
public:
    constexpr explicit CharacterSet(std::string_view characters) {
        for (char const c : characters)
            contains_[static_cast<unsigned char>(c)] = true;
    }

    constexpr bool contains(char c) const { return contains_[static_cast<unsigned char>(c)]; }

private:
    std::array<bool, UCHAR_MAX + 1> contains_{};
};

} // namespace zntl
