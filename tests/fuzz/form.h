#pragma once

#include "nested.h"
#include "support/bytes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

// Builds binary forms byte by byte, and records the offsets of their fields, so that tests can
// corrupt single fields.

namespace fuzz {

using test::Bytes;

struct Form {
    Bytes bytes;
    std::vector<std::size_t> numbers; ///< positions of 32-bit lengths, counts and type ids
    std::vector<std::size_t> nuls;    ///< positions of the NULs that end strings

    Form& operator+=(Form const& other) {
        for (std::size_t const position : other.numbers)
            numbers.push_back(bytes.size() + position);
        for (std::size_t const position : other.nuls)
            nuls.push_back(bytes.size() + position);
        bytes.insert(bytes.end(), other.bytes.begin(), other.bytes.end());
        return *this;
    }
    friend Form operator+(Form a, Form const& b) { return a += b; }
};

inline void putNumber(Bytes& bytes, std::size_t position, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[position + i] = static_cast<unsigned char>(value >> (8 * i));
}

inline std::uint32_t numberAt(Bytes const& bytes, std::size_t position) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | bytes[position + i];
    return value;
}

inline Form number(std::size_t value) {
    Form form{Bytes(4), {0}, {}};
    putNumber(form.bytes, 0, static_cast<std::uint32_t>(value));
    return form;
}

inline Form string(std::string const& text) {
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return number(text.size()) + Form{bytes, {}, {text.size()}};
}

inline Form record(unsigned int type, Form const& payload) {
    Form const header{
        {static_cast<unsigned char>(type), static_cast<unsigned char>(type >> 8), 0, 0}, {}, {}};
    return header + number(payload.bytes.size()) + payload;
}

inline Form stream(std::initializer_list<Form> records) {
    Form content;
    for (Form const& form : records)
        content += form;
    return number(content.bytes.size()) + content;
}

inline Form set(unsigned int elementType, std::initializer_list<Form> elements) {
    Form content = record(504, number(elementType)) + record(504, number(elements.size()));
    for (Form const& element : elements)
        content += record(elementType, element);
    return number(content.bytes.size()) + content;
}

inline Form resolution(unsigned int width, unsigned int height) {
    return number(width) + number(height);
}

inline Form entry(std::string const& text) {
    return string(text) + number(7) + stream({record(504, number(1)), record(501, string("in"))}) +
           set(501, {string("a"), string("bc")});
}

/// Returns a form that the reader of this type accepts and consumes completely.
inline Form formOf(unsigned int type) {
    switch (type) {
    case 501:
    case Label::typeId:
    case Note::typeId:
        return string("text");
    case 504:
        return number(7);
    case 815:
        return resolution(640, 480);
    case 6:
    case Package::typeId:
        return stream({record(501, string("a")), record(6, stream({record(6, stream({}))})),
                       record(Entry::typeId, entry("e")), record(1, {})});
    case Entry::typeId:
        return entry("entry");
    case Folder::typeId:
        return stream({record(Label::typeId, string("l"))}) + entry("x") +
               set(Entry::typeId, {entry("y")}) + string("end");
    case 10000 + 501:
        return set(501, {string(""), string("a"), string("long enough for the heap")});
    case 10000 + 815:
        return set(815, {resolution(1, 2), resolution(3, 4)});
    case 10000 + Entry::typeId:
        return set(Entry::typeId, {entry("a"), entry("b")});
    case 10000 + Label::typeId:
        return set(Label::typeId, {string("l")});
    case 20000 + 501:
        return set(10000 + 501, {set(501, {}), set(501, {string("a"), string("b")})});
    case 20000 + 815:
        return set(10000 + 815, {set(815, {resolution(1, 2)})});
    default:
        return {};
    }
}

/// Returns values of a field at which a reader's arithmetic may go wrong. `value` is the correct
/// value, and `following` is the number of bytes after the field.
inline std::set<std::uint32_t> boundaries(std::uint32_t value, std::size_t following) {
    auto const rest = static_cast<std::uint32_t>(following);
    std::set<std::uint32_t> all = {0,        1,         3,          4,         5,
                                   6,        7,         8,          9,         value - 1,
                                   value,    value + 1, rest - 8,   rest - 1,  rest,
                                   rest + 1, rest + 8,  0x7FFFFFFF, 0x80000000};
    for (std::uint32_t last = 0xFFFFFFF8; last != 0; ++last)
        all.insert(last);
    return all;
}

/// Returns the most important values of `boundaries`, for tests with two wrong fields.
inline std::set<std::uint32_t> extremes(std::uint32_t value, std::size_t following) {
    return {0, value + 1, static_cast<std::uint32_t>(following), 0x7FFFFFFF, 0xFFFFFFFC};
}

/// Calls `visit` with the form's bytes: unchanged; with each field at each boundary value; with two
/// nearby fields wrong; with more and more NULs replaced; and truncated at each position.
template <class Visit>
void forEachFault(Form const& form, Visit visit) {
    visit(form.bytes);
    Bytes bytes = form.bytes;
    auto const following = [&](std::size_t position) { return bytes.size() - position - 4; };
    for (std::size_t i = 0; i < form.numbers.size(); ++i) {
        std::size_t const first = form.numbers[i];
        std::uint32_t const firstValue = numberAt(form.bytes, first);
        for (std::uint32_t const wrong : boundaries(firstValue, following(first))) {
            putNumber(bytes, first, wrong);
            visit(bytes);
        }
        for (std::size_t j = i + 1; j < std::min(i + 3, form.numbers.size()); ++j) {
            std::size_t const second = form.numbers[j];
            std::uint32_t const secondValue = numberAt(form.bytes, second);
            for (std::uint32_t const wrong : extremes(firstValue, following(first))) {
                putNumber(bytes, first, wrong);
                for (std::uint32_t const alsoWrong : extremes(secondValue, following(second))) {
                    putNumber(bytes, second, alsoWrong);
                    visit(bytes);
                }
            }
            putNumber(bytes, second, secondValue);
        }
        putNumber(bytes, first, firstValue);
    }
    for (std::size_t const position : form.nuls) {
        bytes[position] = 'x';
        visit(bytes);
    }
    visit(bytes); // no NUL at all
    for (std::size_t size = 0; size < form.bytes.size(); ++size)
        visit(Bytes(form.bytes.begin(), form.bytes.begin() + static_cast<std::ptrdiff_t>(size)));
}

} // namespace fuzz
