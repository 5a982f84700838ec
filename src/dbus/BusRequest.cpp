// SPDX-License-Identifier: MIT
#include "dbus/BusRequest.h"

#include "glib/Owned.h"

namespace zviptv {

void SendToBus(GDBusConnection* connection, char const* method, GVariant* arguments)
{
    Owned<GDBusMessage> const message(g_dbus_message_new_method_call(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method));
    g_dbus_message_set_body(message.get(), arguments);
    g_dbus_connection_send_message(connection, message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
}

} // namespace zviptv
