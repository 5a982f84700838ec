// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"

namespace CLI {
class App;
}

namespace zviptv::sim {

/// The options of the command line for a replay.
void AddReplay(CLI::App& app, ReplayOptions& options);

/// Checks that the other options are compatible with --replay, if it is given, and applies --speed to the
/// replay.
/// @throws CLI::RequiredError if there is nothing to play and nothing to replay
/// @throws std::invalid_argument with a line for the user if an option has no effect or no meaning with it
void ParseReplayOptions(CLI::App const& app, Options& all);

} // namespace zviptv::sim
