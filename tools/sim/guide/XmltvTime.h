// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zviptv::sim {

/// Seconds since 1970 (UTC) of an XMLTV time: "YYYYMMDDhhmmss" or its first 4, 6, 8, 10 or 12 digits, then
/// blanks and a zone: "+hhmm", "+hh:mm", "+hh" or a name ("UTC", "CEST"). Without a zone, it is UTC. nullopt
/// for anything else: an invalid day or hour, an unknown zone.
std::optional<std::int64_t> ParseXmltvTime(std::string_view text);

} // namespace zviptv::sim
