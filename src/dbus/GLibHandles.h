// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <string>
#include <utility>

namespace zviptv {

/// GIO subscribes and owns names only on an open connection, and treats anything else as a programming error.
inline bool IsOpen(Owned<GDBusConnection> const& connection)
{
    return connection != nullptr && g_dbus_connection_is_closed(connection.get()) == FALSE;
}

/// Whether it is a valid bus name as a whole: of a text with a zero byte, GLib would only read the beginning.
inline bool IsBusName(std::string const& name)
{
    return name.find('\0') == std::string::npos && g_dbus_is_name(name.c_str()) != FALSE;
}

/// Whether a subscription can use the path: the bus accepts match rules of up to 1,024 bytes, and the rest of
/// a channel's rule needs less than half of that. The limit also leaves room for a body of MAX_BODY_SIZE
/// besides the header.
inline bool IsObjectPath(std::string const& path)
{
    std::size_t const longest = 512;
    return path.size() <= longest && path.find('\0') == std::string::npos &&
           g_variant_is_object_path(path.c_str()) != FALSE;
}

/// An exported object on a connection; End() or the destructor removes it.
class ObjectRegistration
{
public:
    ObjectRegistration() = default;
    ObjectRegistration(ObjectRegistration const&) = delete;
    ObjectRegistration& operator=(ObjectRegistration const&) = delete;
    ~ObjectRegistration() { End(); }

    /// Exports the first interface of `node` at `path`; `userData` is released with `release`, even on
    /// failure.
    bool Begin(GDBusConnection* connection, char const* path, GDBusNodeInfo* node,
               GDBusInterfaceVTable const& vtable, gpointer userData, GDestroyNotify release, Error& error)
    {
        m_id = g_dbus_connection_register_object(connection, path, node->interfaces[0], &vtable, userData,
                                                 release, error.Out());
        if (m_id != 0) {
            m_connection = Share(connection);
        } else {
            release(userData); // GLib does not release it if it refuses
        }
        return m_id != 0;
    }

    /// Returns false if the connection does not know the object.
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
