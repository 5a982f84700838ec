// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// Looks at the machine and asks the bus and the service. Nothing stays behind at either, but that a bus may
/// log what it denies: some questions are meant to be. Takes some seconds at most, however they behave;
/// neither needs nor iterates a main context.
Facts Gather(Names const& names);

/// `tool` is the file of this program, beside which the simulator may be.
MachineFacts LookUpMachine(std::string const& tool);

/// The files of the policy in these folders.
std::vector<std::string> PolicyFiles(std::vector<std::string> const& folders);

} // namespace zviptv::ctl::doctor
