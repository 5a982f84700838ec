// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// Examines the machine, and calls the bus and the service. It leaves nothing behind, except that a bus may
/// log the calls that it denies, which are intended. Takes at most some seconds; neither needs nor iterates a
/// main context.
Facts Gather(Names const& names);

/// `tool` is the file of this program, in whose folder the simulator may be.
MachineFacts LookUpMachine(std::string const& tool);

/// The files of the policy in these folders.
std::vector<std::string> PolicyFiles(std::vector<std::string> const& folders);

} // namespace zviptv::ctl::doctor
