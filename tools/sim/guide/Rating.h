// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

namespace zviptv::sim {

/// The minimum age of a rating in years: the first number up to 21 in `value` ("FSK 12", "16+", "PG-13",
/// "TV-Y7"), otherwise the age of a word ("G", "U": 0; "R", "TV-MA": 17). nullopt if the value contains no
/// age ("PG").
std::optional<unsigned> MinimumAge(std::string_view value);

} // namespace zviptv::sim
