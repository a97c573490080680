#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace bench {

/// Returns a random number. The sequence is the same in every run.
inline int randomInt(int least, int most) {
    static std::mt19937 engine(20240229);
    return std::uniform_int_distribution<int>(least, most)(engine);
}

inline std::string randomWord(std::size_t length) {
    std::string word;
    for (std::size_t i = 0; i < length; ++i)
        word += static_cast<char>('a' + randomInt(0, 25));
    return word;
}

/// Returns words and blanks, together exactly `length` characters.
inline std::string randomText(std::size_t length) {
    std::string text;
    while (text.size() < length)
        text += randomWord(static_cast<std::size_t>(randomInt(2, 9))) + ' ';
    text.resize(length, 'x');
    return text;
}

} // namespace bench
