// Formatting sizes, integers, floats and long strings.

#include "support/data.h"
#include "support/row.h"

#include "misc/zntl_String.h"

#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <boost/lexical_cast.hpp>
#include <fmt/format.h>
#include <fmt/printf.h>

#include <cstdio>
#include <string>

namespace bench {

namespace {

/// Uses snprintf as most programs do: formats into a large buffer, and copies that into a string.
template <class... Arguments>
std::string formatted(char const* format, Arguments... arguments) {
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, format, arguments...);
    return buffer;
}

/// Returns a copy whose value the compiler does not know.
template <class Value>
Value hidden(Value value) {
    Value volatile copy = value;
    return copy;
}

void addNumberRows() {
    Row("format: a size, %dx%d")
        .library([] { return zntl::String::fromFormat("%dx%d", hidden(1920), hidden(1080)); })
        .peer("snprintf", [] { return formatted("%dx%d", hidden(1920), hidden(1080)); })
        .peer("fmt", [] { return fmt::format("{}x{}", hidden(1920), hidden(1080)); })
        .peer("fmt::sprintf", [] { return fmt::sprintf("%dx%d", hidden(1920), hidden(1080)); })
        .peer("absl::StrFormat",
              [] { return absl::StrFormat("%dx%d", hidden(1920), hidden(1080)); })
        .peer("absl::StrCat", [] { return absl::StrCat(hidden(1920), "x", hidden(1080)); });
    Row("format: an integer")
        .library([] { return zntl::String::fromInteger(hidden(-1234567)); })
        .peer("snprintf", [] { return formatted("%d", hidden(-1234567)); })
        .peer("std::to_string", [] { return std::to_string(hidden(-1234567)); })
        .peer("fmt", [] { return fmt::to_string(hidden(-1234567)); })
        .peer("absl::StrCat", [] { return absl::StrCat(hidden(-1234567)); })
        .peer("boost", [] { return boost::lexical_cast<std::string>(hidden(-1234567)); });
    Row("format: a float with 2 decimals")
        .library([] { return zntl::String::fromFloat(hidden(1234.56789F), 2); })
        .peer("snprintf", [] { return formatted("%.*f", 2, double{hidden(1234.56789F)}); })
        .peer("fmt", [] { return fmt::format("{:.{}f}", hidden(1234.56789F), 2); })
        .peer("absl::StrFormat", [] { return absl::StrFormat("%.*f", 2, hidden(1234.56789F)); });
}

void addTextRow(std::string const& name, std::string const& text) {
    Row("format: " + name + " and two integers")
        .library([=] { return zntl::String::fromFormat("%s (%d): %d", text.c_str(), 272, 640); })
        .peer("snprintf",
              [=] {
                  // The first call returns the length, because the text can have any length.
                  auto const length =
                      std::snprintf(nullptr, 0, "%s (%d): %d", text.c_str(), 272, 640);
                  std::string all(static_cast<std::size_t>(length), '\0');
                  std::snprintf(all.data(), all.size() + 1, "%s (%d): %d", text.c_str(), 272, 640);
                  return all;
              })
        .peer("fmt", [=] { return fmt::format("{} ({}): {}", text, 272, 640); })
        .peer("fmt::sprintf", [=] { return fmt::sprintf("%s (%d): %d", text, 272, 640); })
        .peer("absl::StrFormat", [=] { return absl::StrFormat("%s (%d): %d", text, 272, 640); })
        .peer("absl::StrCat", [=] { return absl::StrCat(text, " (", 272, "): ", 640); });
}

[[maybe_unused]] bool const added = [] {
    addNumberRows();
    generator().seed(10);
    addTextRow("a text of 40 characters", randomText(40));
    addTextRow("a text of 4 KB", randomText(4096));
    addTextRow("a text of 1 MB", randomText(1 << 20));
    return true;
}();

} // namespace

} // namespace bench
