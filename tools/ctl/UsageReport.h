// SPDX-License-Identifier: MIT
#pragma once

#include "output/Failure.h"

#include <CLI/CLI.hpp>

namespace zviptv::ctl {

/// Writes what is wrong with the command line to standard error.
ExitCode ReportUsage(CLI::App const& program, CLI::ParseError const& error);

} // namespace zviptv::ctl
