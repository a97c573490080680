#pragma once

#include "misc/zntl_String.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace zntl {

/// Lets assertions show a string as a text, not as a list of characters.
inline void PrintTo(String const& text, std::ostream* out) {
    *out << testing::PrintToString(static_cast<std::string const&>(text));
}

} // namespace zntl
