// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"
#include "glib/Owned.h"

#include <optional>

namespace zviptv::sim {

/// The properties of the control interface that the service knows, as they are now: an a{sv}.
Owned<GVariant> Report(Service& service);

/// What outlives the service when it dies: an a{sv} for Restore().
Owned<GVariant> Keep(Service& service);

/// The clock among what was kept; nothing when there is none.
std::optional<SimulatedClock::State> ClockOf(GVariant* kept);

/// Properties of a service that is dead, as they are now, since the clock goes on: an a{sv}.
Owned<GVariant> ReportDead(GVariant* kept);

/// Makes a service that has not begun go on as the one before, whose Keep() this was. If its input cannot be
/// played any more, the source state is that of an error.
void Restore(Service& service, GVariant* kept);

} // namespace zviptv::sim
