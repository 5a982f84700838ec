// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

// Commands, ready to be copied.

struct Fix
{
    std::vector<std::string> commands;
    std::string note;
};

/// What only root may do.
std::string AsRoot(Facts const& facts, std::string const& command);

/// Has the bus read its policies again.
std::string ReloadBus(Facts const& facts);

/// The simulator in the service's place, on the bus that is used.
Fix StartService(Facts const& facts);

/// Ends what owns the name, whatever it is, and starts the simulator.
Fix ReplaceService(Facts const& facts);

/// Ends the service and starts it again, or the simulator where nothing tells how it is started.
Fix RestartService(Facts const& facts);

/// Has the service run as the user whom the policy names.
Fix ChangeServiceUser(Facts const& facts);

/// The simulator with a private bus.
std::string StartDesk(Facts const& facts);

/// Lets a stopped process run on.
std::string ContinueService(Facts const& facts);

/// "process 1234 (zviptv-sim)"; empty when the bus does not tell the process.
std::string ProcessText(ServiceFacts const& service);

/// A word of a command.
std::string Quoted(std::string const& word);

} // namespace zviptv::ctl::doctor
