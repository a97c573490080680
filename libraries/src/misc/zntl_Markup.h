#pragma once

#include "misc/zntl_String.h"

#include <string>
#include <string_view>

namespace zntl {

/// Returns "<name>content</name>", or the empty string if `name` is null. Does not encode the
/// content; String::encodeHtml does.
std::string renderElement(char const* name, std::string_view content);

/// Returns "<name/>", or the empty string if `name` is null.
std::string renderElement(char const* name);

/// Finds the first opening tag of an element `name` that starts at or after position `from`.
///
/// A tag is "<", the name, and then ">", "/>", or a blank (space, tab, newline or carriage return)
/// and everything up to the next ">". Quotes are ignored, so a ">" in an attribute's value ends the
/// tag. If something else follows the name, the search continues after the name.
///
/// Returns true if it finds one, with `start` at its "<", `end` at its ">", and `selfClosing` true
/// if the tag ends in "/>". Otherwise returns false, and the values of the three are unspecified.
/// Malformed markup is not an error. The positions have 32 bits, as in `findCloseTag`, so the text
/// must be shorter than 4 GiB.
bool findOpenTag(String const& text, unsigned int from, String const& name, unsigned int& start,
                 unsigned int& end, bool& selfClosing);

/// Finds the closing tag ("</", the name, ">") of an element `name`. Pass the position after the
/// ">" of its opening tag as `from`. Skips nested elements of the same name. Does not parse other
/// markup, so it finds tags even in comments and attribute values.
///
/// Returns true if it finds one, with `start` at its "<" and `end` at its ">". Otherwise returns
/// false, and the values of the two are unspecified. Takes time proportional to the distance to the
/// closing tag, and constant stack space for any depth of nesting.
bool findCloseTag(String const& text, unsigned int from, String const& name, unsigned int& start,
                  unsigned int& end);

} // namespace zntl
