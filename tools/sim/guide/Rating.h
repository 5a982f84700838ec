// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

namespace zviptv::sim {

/// The age in years from which a rating lets people watch: the first number up to 21 in `value` ("FSK 12",
/// "16+", "PG-13", "TV-Y7"), else what a word stands for ("G", "U": 0; "R", "TV-MA": 17). Nothing when the
/// value names no age ("PG").
std::optional<unsigned> MinimumAge(std::string_view value);

} // namespace zviptv::sim
