// SPDX-License-Identifier: MIT
#include "Question.h"

#include <zviptv/Protocol.h>
#include <zviptv/ProxyDBusHelper.h>

#include <utility>

namespace zviptv::sim {

namespace {

constexpr char Bus[] = "org.freedesktop.DBus";
constexpr char AccessDenied[] = "org.freedesktop.DBus.Error.AccessDenied";

Owned<GDBusMessage> NewCall(std::string const& busName)
{
    std::string const path =
        std::string(CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_NAME) + "/" + protocol::type::DataSubscriber;
    Owned<GDBusMessage> call(g_dbus_message_new_method_call(busName.c_str(), path.c_str(),
                                                            CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE,
                                                            CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD));
    g_dbus_message_set_flags(call.get(), G_DBUS_MESSAGE_FLAGS_NO_AUTO_START);
    g_dbus_message_set_body(call.get(), g_variant_new_parsed("(@a{sv} {},)"));
    return call;
}

/// Any reply of the application is an answer, also an error. The bus replies for an application that has
/// left; if the bus forbids such calls, its error is the only possible answer.
bool IsAnswer(GDBusMessage* reply)
{
    return g_strcmp0(g_dbus_message_get_sender(reply), Bus) != 0 ||
           g_strcmp0(g_dbus_message_get_error_name(reply), AccessDenied) == 0;
}

} // namespace

Question::Question(std::string busName)
    : m_busName(std::move(busName)), m_connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr)),
      m_cancellable(g_cancellable_new())
{
}

bool Question::Ask()
{
    if (m_connection == nullptr) {
        return false;
    }
    Owned<GDBusMessage> const reply(g_dbus_connection_send_message_with_reply_sync(
        m_connection.get(), NewCall(m_busName).get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, G_MAXINT, nullptr,
        m_cancellable.get(), nullptr));
    return reply != nullptr && IsAnswer(reply.get());
}

void Question::Cancel()
{
    g_cancellable_cancel(m_cancellable.get());
}

} // namespace zviptv::sim
