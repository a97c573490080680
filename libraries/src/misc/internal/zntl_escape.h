#pragma once

#include <string>

namespace zntl {

/// Appends `text` with its markup characters replaced by entities.
void appendEncoded(std::string& encoded, std::string const& text);

} // namespace zntl
