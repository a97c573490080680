#pragma once

#include "bytes.h"
#include "listing.h"

#include <cstddef>
#include <optional>

namespace dump {

/// The maximum nesting depth of listed values. It limits stack use and indentation.
constexpr unsigned int maxDepth = 64;

/// Detects the form of a file. A file of whole records is an object stream. A file whose size is
/// that of its header plus the payload length in the header is a typed file. If both or neither is
/// true, bytes 2 and 3 decide: they are 0 in a stream, and the low half of the payload length in
/// a typed file.
Form formOf(Bytes const& file);

/// Passes the values in a file of this form to `listing`. Returns the offset of the first damage,
/// or nothing if there is none. Takes linear time, and copies at most one string at a time.
std::optional<std::size_t> list(Bytes const& file, Form form, Listing& listing);

} // namespace dump
