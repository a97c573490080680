#pragma once

namespace zntl {

/// Whether a character is a space, tab, newline or carriage return. Trimming removes these, and
/// they end a tag's name.
inline bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

} // namespace zntl
