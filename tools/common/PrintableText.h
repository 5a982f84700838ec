// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zviptv {

// Texts of others, so that they do not upset a terminal: control characters and bytes that are not UTF-8 as
// \xNN.

/// On one line: also line breaks and tabs are escaped, as \n and \t, and backslashes doubled.
std::string EscapeText(std::string_view text);

/// For people: line breaks and tabs as they are.
std::string PrintableText(std::string_view text);

/// Takes the first character off the text, which must not be empty; \xNN for the first byte of a control
/// character or of no character.
std::string TakePrintable(std::string_view& text);

} // namespace zviptv
