// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"

namespace CLI {
class App;
}

namespace zviptv::sim {

/// The options of the command line that are about a replay.
void AddReplay(CLI::App& app, ReplayOptions& options);

/// Checks the other options against --replay, if that is given, and applies --speed to the replay.
/// @throws CLI::RequiredError if there is nothing to play and nothing to replay
/// @throws std::invalid_argument with a line for the user if one has no effect or no sense with it
void UnderstandReplay(CLI::App const& app, Options& all);

} // namespace zviptv::sim
