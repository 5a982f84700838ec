// SPDX-License-Identifier: MIT
#include "LocalChannel.h"

#include "Require.h"
#include "dbus/PeerChannelState.h"
#include "dbus/PeerMessage.h"

#include <zviptv/ConnectionHelperDBusClient.h>

using namespace zviptv;

namespace {

using Token = std::unique_ptr<void, decltype(&CallbackGate::ReleaseToken)>;

struct Service
{
    Owned<GVariant> reply;
    GDBusSignalCallback notify = nullptr;
    Token channel{nullptr, CallbackGate::ReleaseToken};
};

Service service;

constexpr char ObjectName[] = "/local";

} // namespace

void test::SetReply(CMessageBuffer const& reply)
{
    Error error;
    service.reply = Arrived(EncodePeerMessage(reply, error).get());
}

void test::Notify(GVariant* body)
{
    static Owned<GObject> const connection(G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr)));
    service.notify(reinterpret_cast<GDBusConnection*>(connection.get()), ":1.2", ObjectName,
                   CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE,
                   CProxyDBusHelper::PROXY_DBUS_HELPER_SIG_NAME, body, service.channel.get());
}

test::Wire test::ToWire(GVariant* body)
{
    Owned<GDBusMessage> const message(g_dbus_message_new_signal("/a", "a.b", "C"));
    g_dbus_message_set_serial(message.get(), 1);
    g_dbus_message_set_body(message.get(), body);
    gsize size = 0;
    Owned<unsigned char> bytes(
        g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
    Require(bytes != nullptr, "a message can be put on the wire");
    return {std::move(bytes), size};
}

Owned<GVariant> test::FromWire(Wire const& wire)
{
    Owned<GDBusMessage> const message(
        g_dbus_message_new_from_blob(wire.bytes.get(), wire.size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
    Require(message != nullptr, "a message can be read from the wire");
    return Owned<GVariant>(g_variant_ref(g_dbus_message_get_body(message.get())));
}

Owned<GVariant> test::Arrived(GVariant* body)
{
    return FromWire(ToWire(body));
}

char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE = "org.corvel.zviptvapi.DbusCommunication";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD = "Send";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_SIG_NAME = "SendSignal";

int CProxyDBusHelper::Connect(std::string /*partner*/)
{
    m_state->m_object_name = ObjectName;
    m_state->m_partner_proxy.reset(reinterpret_cast<GDBusProxy*>(g_object_new(G_TYPE_OBJECT, nullptr)));
    m_state->m_connection_ready = 1;
    return 1;
}

void CProxyDBusHelper::SetCallback(CMessageBuffer (*messageCb)(CMessageBuffer&, void*),
                                   void (*notificationCb)(CMessageBuffer&, void*), void* userData)
{
    m_state->m_message_cb = {messageCb, userData};
    m_state->m_notification_cb = {notificationCb, userData};
    service.channel.reset(CallbackGate::NewToken(m_state->m_gate));
    service.notify = m_SignalCallback;
}

/// Replaces GIO's function, because the linker finds it first. Reports no owner, so that the call below is
/// made.
gchar* g_dbus_proxy_get_name_owner(GDBusProxy* /*proxy*/)
{
    return nullptr;
}

/// In GIO's place, too: the service's answer to every request.
GVariant* g_dbus_proxy_call_sync(GDBusProxy* /*proxy*/, gchar const* /*method*/, GVariant* /*parameters*/,
                                 GDBusCallFlags /*flags*/, gint /*timeout*/, GCancellable* /*cancellable*/,
                                 GError** /*error*/)
{
    return g_variant_ref(service.reply.get());
}

bool CConnectionHelperDBusClient::CheckConnection()
{
    return true;
}
