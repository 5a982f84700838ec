// SPDX-License-Identifier: MIT
#pragma once

#include "output/Failure.h"
#include "session/SystemBus.h"
#include "verbs/Verbs.h"

#include <json/value.h>

#include <string>

namespace zviptv::ctl {

/// The control interface of the simulator on the bus. What goes wrong is a Failure: without a simulator it
/// has the code NoService, and says how to start one.
class Simulator
{
public:
    Simulator();

    /// Waits for the answer, however long that takes: a call waits while the service comes back.
    void Call(verbs::Command const& command) const;

    /// All properties: one object. The answer comes within seconds, or a Failure.
    Json::Value State() const;

    GDBusConnection* Connection() const { return m_bus.Connection(); }

private:
    Owned<GVariant> Call(char const* interface, char const* method, GVariant* parameters,
                         int milliseconds) const;

    SystemBus m_bus;
};

/// To be thrown when there is no simulator.
Failure NoSimulator();

} // namespace zviptv::ctl
