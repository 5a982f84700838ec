// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"
#include "ScenarioRunner.h"

namespace zviptv::sim {

/// Runs the service on the bus of the environment, or on a private bus with a command, as the options
/// request. Returns on SIGINT or SIGTERM, or after the end of the command, or of the service if there is no
/// command; by then, all processes that it started have ended. Exit status: that of the command, if there is
/// one; 1 instead of 0 if the scenario has failed.
/// @throws std::exception with a line for the user
int Run(Options const& options, ScenarioOptions scenario);

} // namespace zviptv::sim
