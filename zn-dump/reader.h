#pragma once

#include "bytes.h"
#include "listing.h"

#include <cstddef>
#include <optional>

namespace dump {

/// Streams and sets are followed this deep, so that neither the stack nor the indentation grows
/// with the file.
constexpr unsigned int maxDepth = 64;

/// The form of a file: that in which it is whole, which means that it consists of whole records, or
/// that a typed file's header is followed by exactly the bytes that it announces. When it is whole
/// in both forms or in none, bytes 2 and 3 decide: a stream has 0 there, and a typed file the low
/// half of its payload's length.
Form formOf(Bytes const& file);

/// Lists the values in a file of this form; returns the offset of the first damage. Takes time
/// proportional to the file, and memory for one string at a time.
std::optional<std::size_t> list(Bytes const& file, Form form, Listing& listing);

} // namespace dump
