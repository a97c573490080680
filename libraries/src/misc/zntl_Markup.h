#pragma once

#include "misc/zntl_String.h"

#include <string>
#include <string_view>

namespace zntl {

/// "<name>content</name>". The content is taken as it is: encode text first (String::encodeHtml).
/// Returns the empty string for a null name.
std::string renderElement(char const* name, std::string_view content);

/// "<name/>". Returns the empty string for a null name.
std::string renderElement(char const* name);

/// Finds the first opening tag of element `name` at or after position `from`: "<", the name, and
/// then ">", "/>", or a blank (space, tab, newline, carriage return) and anything up to the next
/// ">"; a ">" inside an attribute value ends the tag, quoting is not considered.
///
/// On success returns true with `start` at the tag's "<", `end` at its ">", and `selfClosing` true
/// when it ends in "/>". Otherwise returns false, and the three mean nothing. Nothing is thrown for
/// ill-formed markup, and nothing past the text's end is read.
bool findOpenTag(String const& text, unsigned int from, String const& name, unsigned int& start,
                 unsigned int& end, bool& selfClosing);

/// Finds the closing tag ("</", the name, ">") that matches an element of `name` opened before
/// `from`, and skips nested elements of the same name. Pass the position after the opening
/// tag's ">". Only the text counts: even a closing tag inside another tag is found.
///
/// On success returns true with `start` at the closing tag's "<" and `end` at its ">". Otherwise
/// returns false, and the two mean nothing. Takes time proportional to the distance to the closing
/// tag, however deep the nesting is, and no stack.
bool findCloseTag(String const& text, unsigned int from, String const& name, unsigned int& start,
                  unsigned int& end);

} // namespace zntl
