// SPDX-License-Identifier: MIT
#pragma once

#include "Command.h"

namespace zviptv::ctl {

/// The commands `captions`.
std::vector<Command> CaptionCommands();

} // namespace zviptv::ctl
