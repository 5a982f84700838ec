// SPDX-License-Identifier: MIT
#pragma once

#include "Player.h"
#include "guide/GuideFile.h"

#include <string>

namespace zviptv::sim {

// The guide of a stream, whose services are matched by their names.

ServiceNames NamesOf(Player const& player);

/// @throws std::runtime_error with a line for the user
LoadedGuide LoadGuideOf(Player const& player, std::string const& path);

/// Prints the guide's services to standard output, one line with id and name for each. An empty path means
/// the event information of the stream, whose services are the programmes.
/// @throws std::exception with a line for the user
void ListServices(PlayerOptions const& stream, std::string const& path);

} // namespace zviptv::sim
