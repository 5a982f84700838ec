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
    /// Returns when all sent messages have been written to the bus. Drops received messages.
    void Flush();
    /// Returns when the bus has handled all sent messages.
    void Sync();

private:
    ConnectionHandle m_connection;
};

} // namespace zviptv::test
