// SPDX-License-Identifier: MIT
#pragma once

#include "guide/EitEvent.h"
#include <zviptv/client/ByteView.h>

namespace zviptv::sim {

/// Adds what an event's descriptors say: short and extended event, content, parental rating. Descriptors that
/// are cut short count as far as they go; others are passed over.
void AddEitDescriptors(ByteView descriptors, EitEvent& event);

/// Seconds since 1970 of a 16-bit Modified Julian Date and hours, minutes, seconds in BCD (5 bytes); nothing
/// when undefined, no such time or before 1970.
std::optional<std::uint32_t> ParseMjdTime(ByteView bytes);

/// Seconds of hours, minutes and seconds in BCD (3 bytes); nothing when undefined or no such time.
std::optional<std::uint32_t> ParseBcdDuration(ByteView bytes);

} // namespace zviptv::sim
