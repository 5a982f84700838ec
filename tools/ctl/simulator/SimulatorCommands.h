// SPDX-License-Identifier: MIT
#pragma once

#include "output/Failure.h"

#include <functional>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// Runs a verb of the control interface with its arguments.
ExitCode ControlSimulator(std::vector<std::string> words, bool asJson);

/// The command `sim status`.
ExitCode ShowSimulator(bool asJson);

} // namespace zviptv::ctl
