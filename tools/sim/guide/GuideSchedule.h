#pragma once

#include "guide/Guide.h"
#include "guide/GuideWarnings.h"

namespace zviptv::sim {

/// Length of a programme that has no stop and none after it, in seconds.
constexpr std::uint32_t DefaultDuration = 30 * 60;

/// Sorts the service's programmes by their start and makes sure that at most one is on at a time: of two that
/// start together the one with the lower event id stays; one that runs into the next ends where that begins;
/// one without a stop ends there, too.
void OrderSchedule(GuideService& service, GuideWarnings& warnings);

} // namespace zviptv::sim
