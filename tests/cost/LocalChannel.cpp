#include "LocalChannel.h"

#include "Require.h"
#include "dbus/PeerChannelState.h"
#include "dbus/PeerMessage.h"

#include <zviptv/ConnectionHelperDBusClient.h>

using namespace zviptv;

namespace {

struct Service
{
    Owned<GVariant> reply;
    void (*notify)(CMessageBuffer&, void*) = nullptr;
    void* userData = nullptr;
};

Service service;

void Encode(CMessageBuffer const& message)
{
    Error error;
    test::Require(EncodePeerMessage(message, error) != nullptr, "a proxy's message can be sent");
}

} // namespace

void test::SetReply(CMessageBuffer const& reply)
{
    Error error;
    service.reply = Arrived(EncodePeerMessage(reply, error).get());
}

void test::Notify(GVariant* body)
{
    CMessageBuffer notification;
    Error error;
    Require(DecodePeerMessage(body, notification, error), "a notification can be read");
    service.notify(notification, service.userData);
}

Owned<GVariant> test::Arrived(GVariant* body)
{
    Owned<GDBusMessage> const sent(g_dbus_message_new_signal("/a", "a.b", "C"));
    g_dbus_message_set_serial(sent.get(), 1);
    g_dbus_message_set_body(sent.get(), body);
    gsize size = 0;
    std::unique_ptr<guchar, decltype(&g_free)> const wire(
        g_dbus_message_to_blob(sent.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr), g_free);
    Require(wire != nullptr, "a message can be put on the wire");
    Owned<GDBusMessage> const arrived(
        g_dbus_message_new_from_blob(wire.get(), size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
    Require(arrived != nullptr, "a message can be read from the wire");
    return Owned<GVariant>(g_variant_ref(g_dbus_message_get_body(arrived.get())));
}

void CProxyDBusHelper::SetCallback(CMessageBuffer (*)(CMessageBuffer&, void*),
                                   void (*notificationCb)(CMessageBuffer&, void*), void* userData)
{
    service.notify = notificationCb;
    service.userData = userData;
}

int CProxyDBusHelper::SendMessage(CMessageBuffer& request, CMessageBuffer& reply, int /*async*/)
{
    Encode(request);
    CMessageBuffer decoded;
    Error error;
    test::Require(DecodePeerMessage(service.reply.get(), decoded, error), "a reply can be read");
    reply = std::move(decoded);
    return 1;
}

int CProxyDBusHelper::SendNotification(CMessageBuffer& message)
{
    Encode(message);
    return 1;
}

bool CConnectionHelperDBusClient::CheckConnection()
{
    return true;
}
