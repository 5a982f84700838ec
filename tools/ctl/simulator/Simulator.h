// SPDX-License-Identifier: MIT
#pragma once

#include "output/Failure.h"
#include "session/SystemBus.h"
#include "verbs/Verbs.h"

#include <json/value.h>

#include <string>

namespace zviptv::ctl {

/// The control interface of the simulator on the bus. Errors are thrown as a Failure; without a simulator, it
/// has the code NoService and says how to start one.
class Simulator
{
public:
    Simulator();

    /// Waits for the answer without a limit: a call waits while the service comes back.
    void Call(verbs::Command const& command) const;

    /// All properties as one object. Throws a Failure if the answer does not arrive within seconds.
    Json::Value State() const;

    GDBusConnection* Connection() const { return m_bus.Connection(); }

private:
    Owned<GVariant> Call(char const* interface, char const* method, GVariant* parameters,
                         int milliseconds) const;

    SystemBus m_bus;
};

/// The Failure to throw if there is no simulator.
Failure NoSimulator();

} // namespace zviptv::ctl
