// SPDX-License-Identifier: MIT
#pragma once

#include "Dictionary.h"
#include "endpoints/Service.h"

namespace zviptv::sim {

/// Adds the properties about the programme that is played: its tracks and what the guide says of it.
void AddProgramme(Dictionary& report, Television const& television);

} // namespace zviptv::sim
