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
    bool listServices = false; ///< only list the services of the guide
    bool privateBus = false;
    std::optional<double> dieAfter;     ///< seconds until the service dies
    std::optional<double> restartAfter; ///< seconds until a dead service comes back; never if empty
    bool restartFromStart = false;      ///< whether clock and stream restart when it comes back
    std::string scenario;               ///< scenario file; none if empty
    std::optional<unsigned> panel;      ///< port of the page in the browser; 0 for any free one
    std::string junit;                  ///< file for the scenario's report; none if empty
    std::string record;                 ///< file for the messages of the bus; none if empty
    std::vector<std::string> command;   ///< to run on the private bus; may be empty
    std::vector<std::string> words;     ///< words of the command line, including the program's name
};

/// Reads the command line. If it requests help or is wrong, prints the help or the error and sets
/// `exitStatus` instead.
std::optional<Options> ParseCommandLine(int argc, char** argv, int& exitStatus);

} // namespace zviptv::sim
