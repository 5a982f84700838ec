// SPDX-License-Identifier: MIT
#pragma once

#include "Command.h"

namespace zviptv::ctl {

/// The command `status`.
std::vector<Command> StatusCommands();

} // namespace zviptv::ctl
