#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// Characters or longer pieces from which strings are built.
using Pieces = std::vector<std::string>;

/// Returns each character of a string as a piece.
inline Pieces letters(std::string const& text) {
    Pieces pieces;
    for (char const c : text)
        pieces.emplace_back(1, c);
    return pieces;
}

/// Generates strings of random pieces, the same ones in each run and on each machine.
class RandomTexts {
public:
    explicit RandomTexts(Pieces pieces) : pieces_(std::move(pieces)) {}

    /// Returns a string of up to `most` pieces; each number of pieces is equally likely.
    std::string next(std::size_t most) {
        std::string text;
        for (std::size_t left = random_() % (most + 1); left > 0; --left)
            text += pieces_[random_() % pieces_.size()];
        return text;
    }

private:
    Pieces pieces_;
    std::minstd_rand random_{301};
};

/// Calls `visit` with every sequence of up to `most` pieces, the empty one included.
template <class Visit>
void forEachText(Pieces const& pieces, std::size_t most, Visit const& visit,
                 std::string const& text = {}) {
    visit(text);
    if (most == 0)
        return;
    for (std::string const& piece : pieces)
        forEachText(pieces, most - 1, visit, text + piece);
}

/// Returns the string repeated `count` times.
inline std::string repeated(std::string const& text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (; count > 0; --count)
        all += text;
    return all;
}

} // namespace test
