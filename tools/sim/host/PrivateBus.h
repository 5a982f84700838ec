// SPDX-License-Identifier: MIT
#pragma once

#include "process/Process.h"

#include <optional>
#include <string>

namespace zviptv::sim {

/// A private system bus: a dbus-daemon for root and the user who started it. It has no file, and always ends
/// with this process, so that nothing is left behind.
class PrivateBus
{
public:
    /// Returns when the bus answers; DBUS_SYSTEM_BUS_ADDRESS is then its address.
    /// @throws std::runtime_error with a line for the user
    PrivateBus();

    std::string const& Address() const { return m_address; }

private:
    std::string m_address;
    std::optional<Process> m_daemon;
};

} // namespace zviptv::sim
