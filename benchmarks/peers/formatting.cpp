// Formatted text: sizes, integers, floats, long texts.

#include "support/data.h"
#include "support/row.h"

#include "misc/zntl_String.h"

#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <boost/lexical_cast.hpp>
#include <fmt/format.h>
#include <fmt/printf.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

namespace bench {

namespace {

/// snprintf as it is used most: into a buffer that is large enough, and a string from that.
template <class... Arguments>
std::string formatted(char const* format, Arguments... arguments) {
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, format, arguments...);
    return buffer;
}

/// Behind a volatile, so that no contender knows the values beforehand.
template <class Value>
class Hidden {
public:
    Hidden(Value value) : value_(value) {}
    Hidden(Hidden const& other) : value_(other) {}
    operator Value() const { return value_; }

private:
    Value volatile value_;
};

void addSizeRow() {
    Hidden<int> const width = 1920;
    Hidden<int> const height = 1080;
    Row("format: a size, %dx%d")
        .library([=] { return zntl::String::fromFormat("%dx%d", int{width}, int{height}); })
        .peer("snprintf", [=] { return formatted("%dx%d", int{width}, int{height}); })
        .peer("std::to_string",
              [=] { return std::to_string(width) + 'x' + std::to_string(height); })
        .peer("fmt", [=] { return fmt::format("{}x{}", int{width}, int{height}); })
        .peer("fmt::sprintf", [=] { return fmt::sprintf("%dx%d", int{width}, int{height}); })
        .peer("absl::StrFormat", [=] { return absl::StrFormat("%dx%d", int{width}, int{height}); })
        .peer("absl::StrCat", [=] { return absl::StrCat(int{width}, "x", int{height}); })
        .peer("boost",
              [=] {
                  return boost::lexical_cast<std::string>(int{width}) + 'x' +
                         boost::lexical_cast<std::string>(int{height});
              })
        .limit("std::to_chars", [=] {
            char text[24];
            char* const end = std::to_chars(text, text + 11, width).ptr;
            *end = 'x';
            return std::to_chars(end + 1, text + sizeof text, height).ptr - text;
        });
}

void addIntegerRow() {
    Hidden<int> const value = -1234567;
    Row("format: an integer")
        .library([=] { return zntl::String::fromInteger(value); })
        .peer("snprintf", [=] { return formatted("%d", int{value}); })
        .peer("std::to_string", [=] { return std::to_string(value); })
        .peer("fmt", [=] { return fmt::to_string(int{value}); })
        .peer("absl::StrCat", [=] { return absl::StrCat(int{value}); })
        .peer("boost", [=] { return boost::lexical_cast<std::string>(int{value}); })
        .limit("std::to_chars", [=] {
            char text[12];
            return std::to_chars(text, text + sizeof text, value).ptr - text;
        });
}

void addFloatRow() {
    Hidden<float> const value = 1234.56789F;
    Row("format: a float with 2 decimals")
        .library([=] { return zntl::String::fromFloat(value, 2); })
        .peer("snprintf", [=] { return formatted("%.*f", 2, double{float{value}}); })
        .peer("fmt", [=] { return fmt::format("{:.{}f}", float{value}, 2); })
        .peer("fmt::sprintf", [=] { return fmt::sprintf("%.*f", 2, double{float{value}}); })
        .peer("absl::StrFormat", [=] { return absl::StrFormat("%.*f", 2, float{value}); })
        .limit("std::to_chars", [=] {
            char text[64];
            auto const end =
                std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2).ptr;
            return end - text;
        });
}

void addTextRow(std::string const& name, std::string const& text) {
    auto const copy = [=, all = std::string(text.size() + 32, ' ')]() mutable {
        std::memcpy(all.data(), text.data(), text.size());
        return all.data();
    };
    Row("format: " + name + " and two integers")
        .library([=] { return zntl::String::fromFormat("%s (%d): %d", text.c_str(), 272, 640); })
        .peer("snprintf",
              [=] {
                  // Measured first: the text is of any length.
                  auto const length =
                      std::snprintf(nullptr, 0, "%s (%d): %d", text.c_str(), 272, 640);
                  std::string all(static_cast<std::size_t>(length), '\0');
                  std::snprintf(all.data(), all.size() + 1, "%s (%d): %d", text.c_str(), 272, 640);
                  return all;
              })
        .peer("fmt", [=] { return fmt::format("{} ({}): {}", text, 272, 640); })
        .peer("fmt::sprintf", [=] { return fmt::sprintf("%s (%d): %d", text, 272, 640); })
        .peer("absl::StrFormat", [=] { return absl::StrFormat("%s (%d): %d", text, 272, 640); })
        .peer("absl::StrCat", [=] { return absl::StrCat(text, " (", 272, "): ", 640); })
        .limit("memcpy", copy);
}

[[maybe_unused]] bool const added = [] {
    addSizeRow();
    addIntegerRow();
    addFloatRow();
    generator().seed(10);
    addTextRow("a text of 40 characters", randomText(40));
    addTextRow("a text of 4 KB", randomText(4096));
    addTextRow("a text of 1 MB", randomText(1 << 20));
    return true;
}();

} // namespace

} // namespace bench
