// SPDX-License-Identifier: MIT
#pragma once

#include "Command.h"

namespace zviptv::ctl {

/// The commands `guide`.
std::vector<Command> GuideCommands();

} // namespace zviptv::ctl
