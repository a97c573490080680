#pragma once

namespace zntl {

/// Whether a character is one that trimming removes and that ends a tag's name.
inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

} // namespace zntl
