// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

#include <json/value.h>

#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

/// A line a finding, what it means and how to fix it below it, and a summary.
std::string TextOf(std::vector<Finding> const& findings);

/// The same, with "result", and "error" where something is wrong.
Json::Value JsonOf(std::vector<Finding> const& findings);

/// That of the first thing that is wrong.
ExitCode CodeOf(std::vector<Finding> const& findings);

} // namespace zviptv::ctl::doctor
