// SPDX-License-Identifier: MIT
#pragma once

#include "Command.h"

namespace zviptv::ctl {

/// The commands `audio`, `subtitle` and `ttx`.
std::vector<Command> TrackCommands();

} // namespace zviptv::ctl
