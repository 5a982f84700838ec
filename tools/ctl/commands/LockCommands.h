// SPDX-License-Identifier: MIT
#pragma once

#include "Command.h"

namespace zviptv::ctl {

/// The commands `mute`, `rating` and `unlock`.
std::vector<Command> LockCommands();

} // namespace zviptv::ctl
