// SPDX-License-Identifier: MIT
#include "client/link/CloseSource.h"

#include <utility>

namespace zviptv::client {

namespace {

struct Source
{
    GSource base;
    GDBusConnection* connection;
    void* socket; ///< null if there is none, or it has hung up
    bool hasHungUp;
};

Source& Get(GSource* source)
{
    return *reinterpret_cast<Source*>(source);
}

/// GIO closes the connection on another thread, a moment after the socket has hung up.
gboolean Prepare(GSource* source, int* timeout)
{
    *timeout = Get(source).hasHungUp ? 1 : -1;
    return g_dbus_connection_is_closed(Get(source).connection);
}

gboolean Check(GSource* source)
{
    Source& self = Get(source);
    if (self.socket != nullptr && g_source_query_unix_fd(source, self.socket) != 0) {
        g_source_remove_unix_fd(source, std::exchange(self.socket, nullptr));
        self.hasHungUp = true;
    }
    return g_dbus_connection_is_closed(self.connection);
}

gboolean Dispatch(GSource* /*source*/, GSourceFunc callback, void* data)
{
    return callback(data);
}

GSourceFuncs functions{Prepare, Check, Dispatch, nullptr, nullptr, nullptr};

} // namespace

CloseSource::CloseSource(GDBusConnection* connection, std::function<void()> closed)
    : m_connection(Share(connection)), m_closed(std::move(closed)),
      m_source(g_source_new(&functions, sizeof(Source)))
{
    Source& source = Get(m_source.get());
    source.connection = connection;
    GIOStream* const stream = g_dbus_connection_get_stream(connection);
    int const descriptor = G_IS_SOCKET_CONNECTION(stream) == FALSE
                               ? -1
                               : g_socket_get_fd(g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream)));
    if (descriptor >= 0) {
        source.socket = g_source_add_unix_fd(m_source.get(), descriptor, G_IO_HUP);
    }
    g_source_set_callback(m_source.get(), OnClosed, this, nullptr);
    g_source_attach(m_source.get(), g_main_context_get_thread_default());
}

CloseSource::~CloseSource()
{
    g_source_destroy(m_source.get());
}

gboolean CloseSource::OnClosed(void* self)
{
    auto& source = *static_cast<CloseSource*>(self);
    // GIO has queued what it received: a new timer comes after that.
    source.m_report = Timer(g_source_get_context(source.m_source.get()), std::chrono::milliseconds(0),
                            [closed = source.m_closed] { closed(); });
    return G_SOURCE_REMOVE;
}

} // namespace zviptv::client
