// SPDX-License-Identifier: MIT
#pragma once

#include "Dictionary.h"
#include "endpoints/Service.h"

namespace zviptv::sim {

/// Adds the properties about the programme that is played: its tracks and its data in the guide.
void AddProgramme(Dictionary& report, Television const& television);

/// Adds kind, page and whether it is for the hard of hearing.
void AddSubtitle(Dictionary& entry, ZVHybridSBT const& subtitle);

} // namespace zviptv::sim
