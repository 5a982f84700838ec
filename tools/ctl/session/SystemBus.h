// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

namespace zviptv::ctl {

/// The process's connection to the system bus, which the library uses, too. Its exit-on-close setting is
/// switched off.
class SystemBus
{
public:
    /// If the bus cannot be reached, throws a Failure that says what to do.
    SystemBus();

    GDBusConnection* Connection() const { return m_connection.get(); }
    bool IsClosed() const { return g_dbus_connection_is_closed(m_connection.get()) != FALSE; }

private:
    Owned<GDBusConnection> m_connection;
};

} // namespace zviptv::ctl
