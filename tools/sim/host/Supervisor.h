// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"
#include "ScenarioRunner.h"

namespace zviptv::sim {

/// Runs what the options ask for: the service on the bus that the environment names or on a private one,
/// there with a command beside it. Returns, with everything ended that it started, on SIGINT or SIGTERM, or
/// when the command or a service without one ends. Exit status: the command's where there is one; 1 instead
/// of 0 when the scenario has failed.
/// @throws std::exception with a line for the user
int Run(Options const& options, ScenarioOptions scenario);

} // namespace zviptv::sim
