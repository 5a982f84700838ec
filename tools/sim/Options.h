#pragma once

#include "PesFilter.h"
#include "Player.h"

#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

struct Options
{
    PlayerOptions playback;
    PesFilter filter;
    bool privateBus = false;
    std::vector<std::string> command; ///< to run on the private bus; may be empty
};

/// The command line. When it asks for help or is wrong, that is printed and `exitStatus` is set instead.
std::optional<Options> ParseCommandLine(int argc, char** argv, int& exitStatus);

} // namespace zviptv::sim
