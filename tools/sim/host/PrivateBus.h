// SPDX-License-Identifier: MIT
#pragma once

#include "process/Process.h"

#include <optional>
#include <string>

namespace zviptv::sim {

/// A system bus of one's own: a dbus-daemon for the user who started it, and root. It has no file anywhere,
/// and ends with this process however that ends, so nothing is ever left behind.
class PrivateBus
{
public:
    /// Returns when the bus answers; from then on DBUS_SYSTEM_BUS_ADDRESS names it.
    /// @throws std::runtime_error with a line for the user
    PrivateBus();

    std::string const& Address() const { return m_address; }

private:
    std::string m_address;
    std::optional<Process> m_daemon;
};

} // namespace zviptv::sim
