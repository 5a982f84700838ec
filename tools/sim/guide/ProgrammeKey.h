// SPDX-License-Identifier: MIT
#pragma once

#include "guide/Guide.h"

#include <string>

namespace zviptv::sim {

/// The programme that a GetProgramIPG request names: a JSON object with "service_id" (a string of digits),
/// "event_id", "start_time" and "duration" (numbers). The last two may be missing, which counts as 0. Nothing
/// when the text is anything else.
std::optional<ProgrammeKey> ParseProgrammeKey(std::string const& json);

} // namespace zviptv::sim
