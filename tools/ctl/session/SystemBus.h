// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

namespace zviptv::ctl {

/// The process's connection to the system bus, which the library uses too. It is told not to end the process
/// when the bus closes it.
class SystemBus
{
public:
    /// Throws a Failure that says what to do when the bus cannot be reached.
    SystemBus();

    GDBusConnection* Connection() const { return m_connection.get(); }
    bool IsClosed() const { return g_dbus_connection_is_closed(m_connection.get()) != FALSE; }

private:
    Owned<GDBusConnection> m_connection;
};

} // namespace zviptv::ctl
