#include "dbus/BusConnection.h"

namespace zviptv {

std::string SystemBusAddress()
{
    std::unique_ptr<char, GLibFree> const address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return address == nullptr ? std::string() : std::string(address.get());
}

} // namespace zviptv
