// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

#include <json/value.h>

#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

/// A line for each finding, followed by its consequence and the fix, and a summary.
std::string TextOf(std::vector<Finding> const& findings);

/// The same as JSON, with "result", and with "error" if there is a problem.
Json::Value JsonOf(std::vector<Finding> const& findings);

/// The exit code of the first problem.
ExitCode CodeOf(std::vector<Finding> const& findings);

} // namespace zviptv::ctl::doctor
