// SPDX-License-Identifier: MIT
#include "ServiceLink.h"

#include "verbs/Verbs.h"

#include <memory>
#include <utility>

namespace zviptv::sim {

ServiceLink::ServiceLink(int descriptor, Connected onConnected, Signal onSignal)
    : m_onConnected(std::move(onConnected)), m_onSignal(std::move(onSignal)),
      m_cancellable(g_cancellable_new())
{
    Owned<GSocket> const socket(g_socket_new_from_fd(descriptor, nullptr));
    Owned<GSocketConnection> const stream(g_socket_connection_factory_create_connection(socket.get()));
    Owned<char> const guid(g_dbus_generate_guid());
    g_dbus_connection_new(G_IO_STREAM(stream.get()), guid.get(),
                          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_SERVER |
                                                            G_DBUS_CONNECTION_FLAGS_DELAY_MESSAGE_PROCESSING),
                          nullptr, m_cancellable.get(), OnConnected, this);
}

ServiceLink::~ServiceLink()
{
    g_cancellable_cancel(m_cancellable.get());
    if (m_connection) {
        g_dbus_connection_signal_unsubscribe(m_connection.get(), m_subscription);
        g_dbus_connection_close(m_connection.get(), nullptr, nullptr, nullptr);
    }
}

/// After a failure, for example the end of the link, `self` may no longer exist. A service that has ended
/// fails, too.
void ServiceLink::OnConnected(GObject* /*source*/, GAsyncResult* result, gpointer self)
{
    Owned<GDBusConnection> connection(g_dbus_connection_new_finish(result, nullptr));
    if (connection == nullptr) {
        return;
    }
    auto& link = *static_cast<ServiceLink*>(self);
    link.m_connection = std::move(connection);
    link.m_subscription = g_dbus_connection_signal_subscribe(
        link.m_connection.get(), nullptr, nullptr, nullptr, verbs::ObjectPath, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, OnSignal, self, nullptr);
    g_dbus_connection_start_message_processing(link.m_connection.get());
    link.m_onConnected();
}

void ServiceLink::OnSignal(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                           char const* interface, char const* name, GVariant* body, gpointer self)
{
    static_cast<ServiceLink*>(self)->m_onSignal(interface, name, body);
}

void ServiceLink::Call(Request request)
{
    g_dbus_connection_call_with_unix_fd_list(
        m_connection.get(), nullptr, verbs::ObjectPath, request.interface, request.method.c_str(),
        request.parameters.get(), nullptr, G_DBUS_CALL_FLAGS_NONE, static_cast<int>(request.limit.count()),
        request.descriptors.get(), m_cancellable.get(), OnReply,
        std::make_unique<Reply>(std::move(request.reply)).release());
}

void ServiceLink::OnReply(GObject* source, GAsyncResult* result, gpointer reply)
{
    std::unique_ptr<Reply> const owned(static_cast<Reply*>(reply));
    GError* error = nullptr;
    Owned<GVariant> const value(
        g_dbus_connection_call_with_unix_fd_list_finish(G_DBUS_CONNECTION(source), nullptr, result, &error));
    (*owned)(value.get(), error);
    g_clear_error(&error);
}

} // namespace zviptv::sim
