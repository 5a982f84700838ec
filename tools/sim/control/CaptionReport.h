// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"
#include "glib/Owned.h"

namespace zviptv::sim {

/// What is shown of the selected ISDB caption and superimposed text: an a{sv} with "PanelCaption" and
/// "PanelSuperimpose", each an a{sv} with the "number" (t) of the last statement and the last "statements"
/// (as), in base64.
Owned<GVariant> CaptionsOf(StreamTap& tap);

} // namespace zviptv::sim
