#pragma once

#include "misc/zntl_String.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace zntl {

/// Makes assertions print a String as text instead of a list of characters.
inline void PrintTo(String const& text, std::ostream* out) {
    *out << testing::PrintToString(static_cast<std::string const&>(text));
}

} // namespace zntl
