// SPDX-License-Identifier: MIT
#pragma once

#include "Handles.h"

#include <string>

namespace zviptv::test {

/// A bare connection to DBUS_SYSTEM_BUS_ADDRESS that one thread sends through.
class BusLink
{
public:
    /// Throws std::runtime_error without a bus.
    BusLink();

    std::string Name() const { return dbus_bus_get_unique_name(m_connection.get()); }
    void Send(MessageHandle const& message)
    {
        dbus_connection_send(m_connection.get(), message.get(), nullptr);
    }
    /// Returns when everything sent has been written to the bus; takes in, and drops, what has come.
    void Flush();
    /// Returns when the bus has worked off everything sent.
    void Sync();

private:
    ConnectionHandle m_connection;
};

} // namespace zviptv::test
