#pragma once

#include <gio/gio.h>

#include <memory>

namespace zviptv::test {

struct GObjectUnref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using ConnectionPtr = std::unique_ptr<GDBusConnection, GObjectUnref>;

struct VariantUnref
{
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using VariantPtr = std::unique_ptr<GVariant, VariantUnref>;

struct NodeInfoUnref
{
    void operator()(GDBusNodeInfo* info) const { g_dbus_node_info_unref(info); }
};
using NodeInfoPtr = std::unique_ptr<GDBusNodeInfo, NodeInfoUnref>;

/// The process's shared connection to the system bus, which the library uses too. It does not end the process
/// when the bus goes.
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

struct ContextUnref
{
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
};
using ContextPtr = std::unique_ptr<GMainContext, ContextUnref>;

} // namespace zviptv::test
