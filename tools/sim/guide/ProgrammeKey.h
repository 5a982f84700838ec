// SPDX-License-Identifier: MIT
#pragma once

#include "guide/Guide.h"

#include <string>

namespace zviptv::sim {

/// Reads the programme of a GetProgramIPG request: a JSON object with "service_id" (a string of digits),
/// "event_id", "start_time" and "duration" (numbers). The last two may be missing, which counts as 0. Returns
/// nullopt for any other text.
std::optional<ProgrammeKey> ParseProgrammeKey(std::string const& json);

} // namespace zviptv::sim
