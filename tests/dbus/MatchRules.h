// SPDX-License-Identifier: MIT
#pragma once

#include "GLibObjects.h"

#include <stdexcept>

namespace zviptv::test {

/// The number of match rules of the process's shared connection. When the bus answers, it has handled all
/// earlier requests of the process.
inline unsigned MatchRules()
{
    ConnectionPtr const connection = SharedConnection();
    VariantPtr const reply(g_dbus_connection_call_sync(
        connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Debug.Stats",
        "GetConnectionStats", g_variant_new("(s)", g_dbus_connection_get_unique_name(connection.get())),
        G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    VariantPtr const figures(reply == nullptr ? nullptr : g_variant_get_child_value(reply.get(), 0));
    guint32 rules = 0;
    if (figures == nullptr || g_variant_lookup(figures.get(), "MatchRules", "u", &rules) == FALSE) {
        throw std::runtime_error("the bus does not tell how many match rules it keeps");
    }
    return rules;
}

} // namespace zviptv::test
