#pragma once

#include "Process.h"

#include <optional>
#include <string>

namespace zviptv::sim {

/// A system bus of one's own: a dbus-daemon that everybody on it may use, in a directory of its own.
class PrivateBus
{
public:
    /// Returns when the bus answers; from then on DBUS_SYSTEM_BUS_ADDRESS names it.
    /// @throws std::runtime_error with a line for the user
    PrivateBus();
    /// Ends the bus and removes its directory.
    ~PrivateBus();
    PrivateBus(PrivateBus const&) = delete;
    PrivateBus& operator=(PrivateBus const&) = delete;

    std::string const& Address() const { return m_address; }

private:
    std::string m_directory;
    std::string m_address;
    std::optional<Process> m_daemon;
};

} // namespace zviptv::sim
