// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

namespace zviptv::test {

using ConnectionPtr = Owned<GDBusConnection>;
using VariantPtr = Owned<GVariant>;
using NodeInfoPtr = Owned<GDBusNodeInfo>;
using ContextPtr = Owned<GMainContext>;

/// The process's shared connection to the system bus, which the library also uses. The process survives the
/// end of the bus.
inline ConnectionPtr SharedConnection()
{
    ConnectionPtr connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    if (connection != nullptr) {
        g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    }
    return connection;
}

/// Makes a new main context the thread default for a scope.
class ContextScope
{
public:
    explicit ContextScope(GMainContext* context) : m_context(context)
    {
        g_main_context_push_thread_default(m_context);
    }
    ~ContextScope() { g_main_context_pop_thread_default(m_context); }
    ContextScope(ContextScope const&) = delete;
    ContextScope& operator=(ContextScope const&) = delete;

private:
    GMainContext* m_context;
};

} // namespace zviptv::test
