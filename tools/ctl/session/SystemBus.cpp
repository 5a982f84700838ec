// SPDX-License-Identifier: MIT
#include "SystemBus.h"

#include "output/Failure.h"

namespace zviptv::ctl {

SystemBus::SystemBus()
{
    Error error;
    m_connection.reset(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (error) {
        throw Failure(ExitCode::NoService,
                      std::string("the system bus cannot be reached (") + error.Message() +
                          "): start it, or set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs");
    }
    g_dbus_connection_set_exit_on_close(m_connection.get(), FALSE);
}

} // namespace zviptv::ctl
