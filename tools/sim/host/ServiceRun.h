// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"

namespace zviptv::sim {

/// The program name with which the program runs as the service of a simulator, whose connection is
/// link::Descriptor.
constexpr char ServiceName[] = "zviptv-sim: service";

/// The same for a service that replaces a dead one. It also starts if its input or its guide cannot be
/// opened.
constexpr char ReturningName[] = "zviptv-sim: returning service";

/// Plays the stream as the service on the bus of the environment, until SIGINT or SIGTERM, or until the bus
/// is lost. Before applications can find it, a signal ends the process at once. Exit status: 1 if the bus was
/// lost, which the simulator reports, otherwise 0.
/// @throws std::exception with a line for the user
int RunService(ServiceOptions options, bool returns);

} // namespace zviptv::sim
