// SPDX-License-Identifier: MIT
#pragma once

#include "guide/EitEvent.h"
#include <zviptv/client/ByteView.h>

namespace zviptv::sim {

/// Adds the data of an event's descriptors: short and extended event, content, parental rating. Truncated
/// descriptors are read as far as possible; other descriptors are ignored.
void AddEitDescriptors(ByteView descriptors, EitEvent& event);

/// Seconds since 1970 of a 16-bit Modified Julian Date and hours, minutes, seconds in BCD (5 bytes); nullopt
/// if it is undefined, invalid or before 1970.
std::optional<std::uint32_t> ParseMjdTime(ByteView bytes);

/// Seconds of hours, minutes and seconds in BCD (3 bytes); nullopt if it is undefined or invalid.
std::optional<std::uint32_t> ParseBcdDuration(ByteView bytes);

} // namespace zviptv::sim
