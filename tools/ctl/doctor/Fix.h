// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

// Commands that the user can copy.

struct Fix
{
    std::vector<std::string> commands;
    std::string note;
};

/// The command run as root.
std::string AsRoot(Facts const& facts, std::string const& command);

/// Makes the bus read its policies again.
std::string ReloadBus(Facts const& facts);

/// Starts the simulator in place of the service, on the present bus.
Fix StartService(Facts const& facts);

/// Starts the service that has left the bus.
Fix StartServiceAgain(Facts const& facts);

/// Ends the service and starts it again. If nothing shows how the service is started, the note says so.
Fix RestartService(Facts const& facts);

/// What to do with a service that does not follow the protocol, in addition to the advice for its author: no
/// restart changes it, and no other service replaces it.
Fix CorrectService(Facts const& facts);

/// Makes the service run as the user in the policy.
Fix ChangeServiceUser(Facts const& facts);

/// Starts the simulator with a private bus.
std::string StartSimulator(Facts const& facts);

/// Continues a stopped process.
std::string ContinueService(Facts const& facts);

/// "process 1234 (zviptv-sim)"; empty if the bus does not report the process.
std::string ProcessText(ServiceFacts const& service);

/// A word of a command, quoted if necessary.
std::string Quoted(std::string const& word);

} // namespace zviptv::ctl::doctor
