// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/ByteView.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A language that ARIB text comes in.
struct AribLanguage
{
    std::uint8_t tag = 0; ///< 0 to 7
    std::string language; ///< three characters, as sent
};

using AribLanguages = std::map<std::uint16_t, std::vector<AribLanguage>>; ///< by PID

/// The languages that caption management data (ARIB STD-B24) lists. Nothing for a PES packet of anything
/// else, among it the captions themselves.
std::optional<std::vector<AribLanguage>> ParseAribLanguages(ByteView pes);

} // namespace zviptv::sim
