#pragma once

#include "Options.h"

namespace zviptv::sim {

/// Plays the stream as the service on the bus that the environment names, until SIGINT or SIGTERM. Exit
/// status.
int RunService(Options const& options);

/// Starts a private bus and the service, each in a process of its own, and runs the command, or waits for
/// SIGINT or SIGTERM where there is none. Ends everything it started. Exit status: the command's.
int RunPrivately(Options const& options);

} // namespace zviptv::sim
