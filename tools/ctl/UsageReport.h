// SPDX-License-Identifier: MIT
#pragma once

#include "output/Failure.h"

#include <CLI/CLI.hpp>

#include <string>

namespace zviptv::ctl {

struct UsageError
{
    std::string command; ///< "zviptvctl audio", the last command that was recognised
    std::string message; ///< error in the words after it
};

UsageError ExplainUsage(CLI::App const& program, CLI::ParseError const& error);

/// Writes the error in the command line to standard error.
ExitCode ReportUsage(CLI::App const& program, CLI::ParseError const& error);

} // namespace zviptv::ctl
