// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

namespace zviptv::ctl::doctor {

/// One finding for each check, in the order in which they depend on each other.
std::vector<Finding> Judge(Facts const& facts);

/// Examines the machine, judges it and writes the report to standard output.
ExitCode Run(Names const& names, bool asJson);

} // namespace zviptv::ctl::doctor
