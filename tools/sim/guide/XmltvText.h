#pragma once

#include <string>
#include <string_view>

namespace zviptv::sim {

/// Takes blanks and line breaks off the ends; every run of them inside becomes one blank.
void TidyText(std::string& text);

/// The text, cut short where it is long, in quotation marks, for messages.
std::string Quoted(std::string_view text);

} // namespace zviptv::sim
