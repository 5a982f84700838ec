// SPDX-License-Identifier: MIT
#pragma once

#include "Event.h"
#include "ParsedMessage.h"

namespace zviptv::trace {

/// Adds the body of a request, a reply or a notification to `event`: function (unless it is set), handle,
/// result, values and problems. The event must have its kind and endpoint.
void AddEntries(Event& event, ParsedMessage const& message);

/// Adds the body of an announcement or of the answer to it.
void AddPairs(Event& event, ParsedMessage const& message);

} // namespace zviptv::trace
