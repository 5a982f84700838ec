// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <string>
#include <utility>

namespace zviptv {

/// GIO subscribes and owns names on an open connection only, and takes anything else for a programming error.
inline bool IsOpen(Owned<GDBusConnection> const& connection)
{
    return connection != nullptr && g_dbus_connection_is_closed(connection.get()) == FALSE;
}

/// A bus name, whole: one with a zero byte would be taken for its beginning.
inline bool IsBusName(std::string const& name)
{
    return name.find('\0') == std::string::npos && g_dbus_is_name(name.c_str()) != FALSE;
}

/// A path that a subscription can name: the bus takes match rules of up to 1,024 bytes, of which the rest of
/// a channel's needs less than half. It also leaves MAX_BODY_SIZE the room beside the header.
inline bool IsObjectPath(std::string const& path)
{
    std::size_t const longest = 512;
    return path.size() <= longest && path.find('\0') == std::string::npos &&
           g_variant_is_object_path(path.c_str()) != FALSE;
}

/// An exported object on a connection; End() or its owner's end withdraws it.
class ObjectRegistration
{
public:
    ObjectRegistration() = default;
    ObjectRegistration(ObjectRegistration const&) = delete;
    ObjectRegistration& operator=(ObjectRegistration const&) = delete;
    ~ObjectRegistration() { End(); }

    /// Exports the first interface of `node` at `path`; `userData` is released with `release`, also on
    /// failure.
    bool Begin(GDBusConnection* connection, char const* path, GDBusNodeInfo* node,
               GDBusInterfaceVTable const& vtable, gpointer userData, GDestroyNotify release, Error& error)
    {
        m_id = g_dbus_connection_register_object(connection, path, node->interfaces[0], &vtable, userData,
                                                 release, error.Out());
        if (m_id != 0) {
            m_connection = Share(connection);
        } else {
            release(userData); // GLib leaves it with the caller when it refuses
        }
        return m_id != 0;
    }

    /// False when the connection knows nothing of the object.
    bool End()
    {
        if (m_id == 0) {
            return true;
        }
        return g_dbus_connection_unregister_object(m_connection.get(), std::exchange(m_id, 0)) != FALSE;
    }

    guint Id() const { return m_id; }

private:
    Owned<GDBusConnection> m_connection;
    guint m_id = 0;
};

} // namespace zviptv
