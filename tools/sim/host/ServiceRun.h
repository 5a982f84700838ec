// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"

namespace zviptv::sim {

/// The name by which the program is called to be the service of a simulator, which it finds at
/// link::Descriptor.
constexpr char ServiceName[] = "zviptv-sim: service";

/// The same for a service that replaces one that has died. It also starts if its input or its
/// guide cannot be opened.
constexpr char ReturningName[] = "zviptv-sim: returning service";

/// Plays the stream as the service on the bus that the environment names, until SIGINT or SIGTERM, or until
/// the bus is lost. Before applications can know of it, a signal ends the process at once. Exit status: 1
/// when the bus was lost, which the simulator reports, else 0.
/// @throws std::exception with a line for the user
int RunService(ServiceOptions options, bool returns);

} // namespace zviptv::sim
