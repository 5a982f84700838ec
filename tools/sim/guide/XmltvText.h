// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zviptv::sim {

constexpr bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

constexpr bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Removes blanks and line breaks at both ends, and replaces every run of them inside by one blank.
void TidyText(std::string& text);

/// The text in quotation marks for messages, shortened if it is long.
std::string Quoted(std::string_view text);

/// The first `limit` bytes of a UTF-8 text, or fewer if that would split a character.
std::string_view CutUtf8(std::string_view text, std::size_t limit);

} // namespace zviptv::sim
