// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace zviptv {

/// Text for XML, in elements and in attributes between double quotes.
std::string EscapeMarkup(std::string_view text);

} // namespace zviptv
