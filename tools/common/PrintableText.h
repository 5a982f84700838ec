// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zviptv {

// Makes texts of other programs safe for a terminal and for XML: control characters, U+FFFE, U+FFFF and bytes
// that are not UTF-8 become \xNN.

/// The text on one line: line breaks and tabs are also escaped, as \n and \t, and backslashes are doubled.
std::string EscapeText(std::string_view text);

/// The text for people: line breaks and tabs are unchanged.
std::string PrintableText(std::string_view text);

/// Removes the first character from the text, which must not be empty, and returns it; returns \xNN for a
/// control character, or for a byte that is not part of a character.
std::string TakePrintable(std::string_view& text);

} // namespace zviptv
