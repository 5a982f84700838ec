// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"

namespace zviptv::sim {

/// The name by which the program is called to be the service of a simulator, which it finds at
/// link::Descriptor.
constexpr char ServiceName[] = "zviptv-sim: service";

/// Plays the stream as the service on the bus that the environment names, until SIGINT or SIGTERM. Before
/// applications can know of it, a signal ends the process at once.
/// @throws std::exception with a line for the user
void RunService(ServiceOptions const& options);

} // namespace zviptv::sim
