#pragma once

#include "guide/GuideData.h"
#include "guide/GuideWarnings.h"

namespace zviptv::sim {

/// Length of a programme that has no stop and none behind it, in seconds.
constexpr std::uint32_t DefaultDuration = 30 * 60;

/// Puts the entries into the guide's order and makes sure that at most one of a service is on at a time: of
/// two that start together the one with the lower event id stays; one that runs into the next ends where that
/// begins; one without a stop ends there, too.
void OrderSchedule(GuideData& data, GuideWarnings& warnings);

} // namespace zviptv::sim
