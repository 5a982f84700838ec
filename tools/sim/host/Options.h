// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"

#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

struct Options
{
    ServiceOptions service;
    bool listServices = false; ///< of the guide, and nothing else
    bool privateBus = false;
    std::optional<double> dieAfter;     ///< seconds until the service dies
    std::optional<double> restartAfter; ///< seconds until a dead service comes back; never when empty
    bool restartFromStart = false;      ///< clock and stream, when it comes back
    std::string scenario;               ///< its file; none when empty
    std::optional<unsigned> panel;      ///< port of the page in the browser; 0 for any free one
    std::string junit;                  ///< the file for its report; none when empty
    std::string record;                 ///< the file for the messages of the bus; none when empty
    std::vector<std::string> command;   ///< to run on the private bus; may be empty
    std::vector<std::string> words;     ///< of the command line, that of the program included
};

/// The command line. When it asks for help or is wrong, that is printed and `exitStatus` is set instead.
std::optional<Options> ParseCommandLine(int argc, char** argv, int& exitStatus);

} // namespace zviptv::sim
