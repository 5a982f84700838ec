// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zviptv::sim {

/// Removes blanks and line breaks at both ends, and replaces every run of them inside by one blank.
void TidyText(std::string& text);

/// The text in quotation marks for messages, shortened if it is long.
std::string Quoted(std::string_view text);

/// The first `limit` bytes of a UTF-8 text, or fewer if that would split a character.
std::string_view CutUtf8(std::string_view text, std::size_t limit);

} // namespace zviptv::sim
