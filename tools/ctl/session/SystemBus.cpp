#include "SystemBus.h"

#include "output/Failure.h"

namespace zviptv::ctl {

SystemBus::SystemBus()
{
    GError* raw = nullptr;
    m_connection.reset(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &raw));
    std::unique_ptr<GError, decltype(&g_error_free)> const error(raw, g_error_free);
    if (error != nullptr) {
        throw Failure(ExitCode::NoService,
                      std::string("the system bus cannot be reached (") + error->message +
                          "): start it, or set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs");
    }
    g_dbus_connection_set_exit_on_close(m_connection.get(), FALSE);
}

} // namespace zviptv::ctl
