// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zviptv::sim {

/// Takes blanks and line breaks off the ends; every run of them inside becomes one blank.
void TidyText(std::string& text);

/// The text, cut short where it is long, in quotation marks, for messages.
std::string Quoted(std::string_view text);

/// The first `limit` bytes of a UTF-8 text, or less where that would cut a character in two.
std::string_view CutUtf8(std::string_view text, std::size_t limit);

} // namespace zviptv::sim
