// SPDX-License-Identifier: MIT
#pragma once

#include "Command.h"

namespace zviptv::ctl {

struct CommandGroup
{
    char const* name;
    char const* help;
};

std::vector<CommandGroup> const& CommandGroups();
std::vector<Command> const& Commands();

} // namespace zviptv::ctl
