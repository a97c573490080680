#pragma once

#include "bytes.h"
#include "listing.h"

#include <cstddef>
#include <optional>

namespace dump {

/// The depth of nesting that is listed. It bounds the stack and the indentation.
constexpr unsigned int maxDepth = 64;

/// Detects the form of a file. An object stream consists of whole records. A typed file has exactly
/// as many bytes after its header as that announces. When both or neither is true, bytes 2 and 3
/// decide: they are 0 in a stream, and the low half of the payload's length in a typed file.
Form formOf(Bytes const& file);

/// Lists the values in a file of this form and returns the offset of the first damage. The time is
/// linear in the file's size, and there is memory for one string at a time.
std::optional<std::size_t> list(Bytes const& file, Form form, Listing& listing);

} // namespace dump
