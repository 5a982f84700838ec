// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"

#include <functional>

namespace zviptv::sim {

/// Plays the stream as the service on the bus that the environment names, until SIGINT or SIGTERM; calls
/// `ready` once it answers. Before applications can know of it, a signal ends the process at once.
/// @throws std::exception with a line for the user
void RunService(ServiceOptions const& options, std::function<void()> const& ready);

} // namespace zviptv::sim
