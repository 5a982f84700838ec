// SPDX-License-Identifier: MIT
#include <zviptv/ProxyDBusHelper.h>

#include "dbus/IncomingCall.h"
#include "dbus/PeerChannelState.h"
#include "dbus/PeerMessage.h"
#include "dbus/SendFailure.h"
#include "dbus/SyncCall.h"
#include "failure/LastFailure.h"
#include "log/Log.h"

using zviptv::CallbackGate;
using zviptv::DecodePeerMessage;
using zviptv::EncodePeerMessage;
using zviptv::Error;
using zviptv::FailureScope;
using zviptv::IncomingScope;
using zviptv::Owned;

namespace {

constexpr std::chrono::milliseconds SyncTimeout{2000};
constexpr int DefaultTimeout = -1;

/// Flags of a signal for which the bus must not start a service.
constexpr auto WithoutAutoStart = static_cast<GDBusMessageFlags>(G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED |
                                                                 G_DBUS_MESSAGE_FLAGS_NO_AUTO_START);

/// Sends a signal only to `partner`, and never with a null destination, with which GIO would broadcast it.
/// Uses the connection and path of the partner proxy, because the channel may end meanwhile.
bool EmitSignal(GDBusProxy* proxy, std::string const& partner, CMessageBuffer const& message, Error& error)
{
    if (!zviptv::IsBusName(partner)) {
        error.Set(G_IO_ERROR_INVALID_ARGUMENT, "The partner's name is no bus name");
        return false;
    }
    Owned<GVariant> const body = EncodePeerMessage(message, error);
    if (body == nullptr) {
        return false;
    }
    Owned<GDBusMessage> const signal(g_dbus_message_new_signal(g_dbus_proxy_get_object_path(proxy),
                                                               CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE,
                                                               CProxyDBusHelper::PROXY_DBUS_HELPER_SIG_NAME));
    g_dbus_message_set_destination(signal.get(), partner.c_str());
    g_dbus_message_set_body(signal.get(), body.get());
    if (g_dbus_is_unique_name(partner.c_str()) == FALSE) {
        g_dbus_message_set_flags(signal.get(), WithoutAutoStart);
    }
    return g_dbus_connection_send_message(g_dbus_proxy_get_connection(proxy), signal.get(),
                                          G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, error.Out()) != FALSE;
}

/// Calls the partner of the proxy, and waits for the answer.
Owned<GVariant> CallPartner(GDBusProxy* proxy, GVariant* body, Error& error)
{
    Owned<char> const owner(g_dbus_proxy_get_name_owner(proxy));
    if (owner == nullptr) { // refused without a message
        return Owned<GVariant>(g_dbus_proxy_call_sync(proxy, CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD,
                                                      body, G_DBUS_CALL_FLAGS_NONE, SyncTimeout.count(),
                                                      nullptr, error.Out()));
    }
    return zviptv::CallAndWait(g_dbus_proxy_get_connection(proxy),
                               {owner.get(), g_dbus_proxy_get_object_path(proxy),
                                CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE,
                                CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD},
                               body, SyncTimeout, error);
}

/// Refuses a send without a partner: sets the failure and returns the result of the send.
int RefuseUnconnected(Owned<GDBusConnection> const& connection)
{
    if (!zviptv::IsOpen(connection)) {
        zviptv::SetNoBus();
    } else {
        zviptv::SetFailureUnlessSet(ZV_FAILURE_NO_SERVICE,
                                    {"there is no partner on the bus: it has left, or was never connected; "
                                     "destroy the object and create it again"});
    }
    return 0;
}

} // namespace

int CProxyDBusHelper::SendMessage(CMessageBuffer& request, CMessageBuffer& reply, int async)
{
    FailureScope const scope("SendMessage");
    return async == 0 ? m_SendSyncMessage(request, reply)
                      : m_SendAsyncMessage(request, m_GAsyncMessageCallback, nullptr);
}

int CProxyDBusHelper::m_SendSyncMessage(CMessageBuffer& request, CMessageBuffer& reply)
{
    State::Link const link = m_state->CurrentLink();
    if (!link.ready) {
        ZV_LOG_ERROR_LINE("Connection not set.");
        return RefuseUnconnected(m_state->m_connection);
    }
    if (link.proxy == nullptr) {
        ZV_LOG_ERROR_LINE("Proxy not ready");
        return RefuseUnconnected(m_state->m_connection);
    }
    ZV_LOG_DEBUG_LINE("Sending sync message with %d key-value pairs", request.Size());
    Error error;
    Owned<GVariant> const body = EncodePeerMessage(request, error);
    Owned<GVariant> result;
    CMessageBuffer decoded;
    if (body != nullptr) {
        // The channel may no longer exist when this returns: from here on, use only references of this
        // function.
        result = CallPartner(link.proxy.get(), body.get(), error);
    }
    bool const isAnswered = result != nullptr;
    if (!isAnswered || !DecodePeerMessage(result.get(), decoded, error)) {
        ZV_LOG_ERROR_LINE("Error while sending message [%d] %s", error.Code(), error.Message());
        if (isAnswered) {
            zviptv::SetFailure(ZV_FAILURE_MALFORMED_REPLY, {error.Message()});
        } else {
            zviptv::SetSendFailure(error, "the request");
        }
        return 0;
    }
    reply = std::move(decoded);
    ZV_LOG_DEBUG_LINE("Replyed");
    return 1;
}

int CProxyDBusHelper::m_SendAsyncMessage(CMessageBuffer& request,
                                         void (*callback)(GObject* source, GAsyncResult* result,
                                                          void* userData),
                                         void* userData)
{
    return zviptv::ChannelAccess::StartCall(*this, request, DefaultTimeout, nullptr, callback, userData,
                                            ZV_LOG_HERE);
}

int zviptv::ChannelAccess::StartCall(CProxyDBusHelper& channel, CMessageBuffer const& request, int timeoutMs,
                                     GCancellable* cancellable, GAsyncReadyCallback callback, void* userData,
                                     SourceLocation const& where)
{
    CProxyDBusHelper::State::Link const link = channel.m_state->CurrentLink();
    if (!link.ready) {
        WriteLog(ZV_LOG_ERROR, where, "Connection not set.");
        return RefuseUnconnected(channel.m_state->m_connection);
    }
    if (link.proxy == nullptr) {
        WriteLog(ZV_LOG_ERROR, where, "Proxy not ready");
        return RefuseUnconnected(channel.m_state->m_connection);
    }
    if (IsLogWanted(ZV_LOG_DEBUG)) {
        WriteLog(ZV_LOG_DEBUG, where, "Sending async message with %d key-value pairs", request.Size());
    }
    Error error;
    Owned<GVariant> const body = EncodePeerMessage(request, error);
    if (body == nullptr) {
        WriteLog(ZV_LOG_ERROR, where, "Error while sending message [%d] %s", error.Code(), error.Message());
        SetSendFailure(error, "the request");
        return 0;
    }
    g_dbus_proxy_call(link.proxy.get(), CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD, body.get(),
                      G_DBUS_CALL_FLAGS_NONE, timeoutMs, cancellable, callback, userData);
    return 1;
}

// Needs no channel: the call is finished on its partner proxy, which the completion keeps alive.
void CProxyDBusHelper::m_GAsyncMessageCallback(GObject* source, GAsyncResult* result, void* /*userData*/)
{
    ZV_LOG_DEBUG_LINE("Enter");
    Error error;
    Owned<GVariant> const reply(g_dbus_proxy_call_finish(G_DBUS_PROXY(source), result, error.Out()));
    if (error) {
        ZV_LOG_DEBUG_LINE("Error received: '%s'", error.Message());
        return;
    }
    ZV_LOG_INFO_LINE("Replyed");
}

int CProxyDBusHelper::SendNotification(CMessageBuffer& message)
{
    FailureScope const scope("SendNotification");
    State::Link const link = m_state->CurrentLink();
    if (!link.ready) {
        ZV_LOG_ERROR_LINE("Connection not set.");
        return RefuseUnconnected(m_state->m_connection);
    }
    if (link.subscription == 0) {
        ZV_LOG_ERROR_LINE("SignalSubscription not ready");
        return RefuseUnconnected(m_state->m_connection);
    }
    ZV_LOG_DEBUG_LINE("Sending signal with %d key-value pairs", message.Size());
    Error error;
    if (!EmitSignal(link.proxy.get(), link.partner, message, error)) {
        ZV_LOG_ERROR_LINE("Error while sending signal [%d] %s", error.Code(), error.Message());
        zviptv::SetSendFailure(error, "the notification");
        return 0;
    }
    return 1;
}

void CProxyDBusHelper::m_SignalCallback(GDBusConnection* connection, char const* sender,
                                        char const* objectPath, char const* interfaceName,
                                        char const* signalName, GVariant* parameters, void* userData)
{
    ZV_LOG_DEBUG_LINE("m_SignalCallback sender=%s obj_path=%s iface_name=%s signal_name=%s", sender,
                      objectPath, interfaceName, signalName);
    if (connection == nullptr || userData == nullptr) {
        ZV_LOG_ERROR_LINE("Empty user_data or connection not valid.");
        return;
    }
    CallbackGate::Visit<CProxyDBusHelper> const channel(CallbackGate::FromToken(userData));
    if (!channel || channel->m_state->m_object_name != objectPath) {
        return;
    }
    CMessageBuffer notification;
    Error error;
    if (!DecodePeerMessage(parameters, notification, error)) {
        ZV_LOG_ERROR_LINE("Malformed signal [%d] %s", error.Code(), error.Message());
        return;
    }
    State::NotificationHandler const handler = channel->m_state->Get(&State::m_notification_cb);
    if (handler.call != nullptr) {
        IncomingScope const scope(sender);
        handler.call(notification, handler.userData);
    }
}

void CProxyDBusHelper::m_MethodCallback(GDBusConnection* connection, char const* sender,
                                        char const* objectPath, char const* interfaceName,
                                        char const* methodName, GVariant* parameters,
                                        GDBusMethodInvocation* invocation, void* userData)
{
    Owned<GDBusMethodInvocation> const owned(invocation);
    ZV_LOG_INFO_LINE("m_MethodCallback sender=%s obj_path=%s iface_name=%s method_name=%s", sender,
                     objectPath, interfaceName, methodName);
    if (connection == nullptr || userData == nullptr) {
        ZV_LOG_ERROR_LINE("Empty user_data or connection not valid.");
        return;
    }
    CallbackGate::Visit<CProxyDBusHelper> const channel(CallbackGate::FromToken(userData));
    if (!channel) {
        zviptv::AnswerCallWithError(invocation, "org.freedesktop.DBus.Error.UnknownObject",
                                    "The channel has ended");
        return;
    }
    ZV_LOG_INFO_LINE("m_object_name: %s", channel->m_state->m_object_name.c_str());
    if (channel->m_state->m_object_name != objectPath) {
        return;
    }
    CMessageBuffer request;
    CMessageBuffer reply;
    Error error;
    DecodePeerMessage(parameters, request, error); // GDBus has checked the type
    State::MessageHandler const handler = channel->m_state->Get(&State::m_message_cb);
    IncomingScope scope(sender, invocation);
    if (handler.call != nullptr) {
        reply = handler.call(request, handler.userData);
    }
    if (GDBusMethodInvocation* const unanswered = scope.TakeInvocation()) {
        zviptv::AnswerCall(unanswered, reply);
    }
}

std::string CProxyDBusHelper::GetSenderName()
{
    IncomingScope const* const incoming = IncomingScope::Current();
    return incoming == nullptr ? std::string() : std::string(incoming->Sender());
}
