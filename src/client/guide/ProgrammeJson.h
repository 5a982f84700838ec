// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Programme.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zviptv::client {

/// The programme as a request names it. Nothing if its times do not fit into 32 bits.
std::optional<std::string> ToJson(ProgrammeId const& programme);

// These functions read answers of the guide. They return false for malformed JSON, a member that is missing
// or of another type, and a number out of range. They ignore unknown members. An empty text means that there
// is nothing.
bool FromJson(std::string_view json, std::optional<Programme>& programme);
bool FromJson(std::string_view json, std::optional<ProgrammeRating>& rating);
bool FromJson(std::string_view json, std::vector<std::string>& texts);
bool FromJson(std::string_view json, std::vector<Programme>& programmes);

} // namespace zviptv::client
