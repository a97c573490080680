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

using zntl::String;

/// Uses snprintf as most programs do: formats into a large buffer, and copies that into a string.
template <class... Arguments>
std::string formatted(char const* format, Arguments... arguments) {
    char buffer[8192];
    std::snprintf(buffer, sizeof buffer, format, arguments...);
    return buffer;
}

} // namespace

void addRows() {
    Row("format: a size, %dx%d", 1920, 1080)
        .library([](int w, int h) { return String::fromFormat("%dx%d", w, h); })
        .peer("snprintf", [](int w, int h) { return formatted("%dx%d", w, h); })
        .peer("fmt", [](int w, int h) { return fmt::format("{}x{}", w, h); })
        .peer("fmt::sprintf", [](int w, int h) { return fmt::sprintf("%dx%d", w, h); })
        .peer("absl::StrFormat", [](int w, int h) { return absl::StrFormat("%dx%d", w, h); })
        .peer("absl::StrCat", [](int w, int h) { return absl::StrCat(w, "x", h); });
    Row("format: an integer", -1234567)
        .library([](int number) { return String::fromInteger(number); })
        .peer("snprintf", [](int number) { return formatted("%d", number); })
        .peer("std::to_string", [](int number) { return std::to_string(number); })
        .peer("fmt", [](int number) { return fmt::to_string(number); })
        .peer("absl::StrCat", [](int number) { return absl::StrCat(number); })
        .peer("boost", [](int number) { return boost::lexical_cast<std::string>(number); });
    Row("format: a float with 2 decimals", 1234.56789F)
        .library([](float number) { return String::fromFloat(number, 2); })
        .peer("snprintf", [](float number) { return formatted("%.*f", 2, double{number}); })
        .peer("fmt", [](float number) { return fmt::format("{:.{}f}", number, 2); })
        .peer("absl::StrFormat", [](float number) { return absl::StrFormat("%.*f", 2, number); });
    using Text = std::string const&;
    Row("format: a text of 4 KB and an integer", randomText(4096), 640)
        .library([](Text text, int n) { return String::fromFormat("%s (%d)", text.c_str(), n); })
        .peer("snprintf", [](Text text, int n) { return formatted("%s (%d)", text.c_str(), n); })
        .peer("fmt", [](Text text, int n) { return fmt::format("{} ({})", text, n); })
        .peer("fmt::sprintf", [](Text text, int n) { return fmt::sprintf("%s (%d)", text, n); })
        .peer("absl::StrFormat",
              [](Text text, int n) { return absl::StrFormat("%s (%d)", text, n); })
        .peer("absl::StrCat", [](Text text, int n) { return absl::StrCat(text, " (", n, ")"); });
}

} // namespace bench
