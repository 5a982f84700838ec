// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"
#include "glib/Owned.h"

#include <optional>

namespace zviptv::sim {

/// The present properties of the control interface that the service knows: an a{sv}.
Owned<GVariant> Report(Service& service);

/// The state that outlives the death of the service: an a{sv} for Restore().
Owned<GVariant> Keep(Service& service);

/// The clock in the kept state; nullopt if there is none.
std::optional<SimulatedClock::State> ClockOf(GVariant* kept);

/// The present properties of a dead service, whose clock continues: an a{sv}.
Owned<GVariant> ReportDead(GVariant* kept);

/// Restores the state that Keep() of the previous service returned, in a service that has not begun. If its
/// input can no longer be played, the source state is that of an error.
void Restore(Service& service, GVariant* kept);

} // namespace zviptv::sim
