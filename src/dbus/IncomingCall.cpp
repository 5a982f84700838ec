// SPDX-License-Identifier: MIT
#include "dbus/IncomingCall.h"

#include "dbus/HelperMessage.h"
#include "dbus/PeerMessage.h"
#include "log/Log.h"

namespace zviptv {

namespace {

thread_local IncomingScope* current = nullptr;

/// The body of an answer, in the format of the interface that was called.
Owned<GVariant> EncodeAnswer(GDBusMethodInvocation* invocation, CMessageBuffer const& reply, Error& error)
{
    char const* const interface = g_dbus_method_invocation_get_interface_name(invocation);
    if (g_strcmp0(interface, helper::Interface) != 0) {
        return EncodePeerMessage(reply, error);
    }
    GVariant* const body = helper::Encode(reply, error);
    return Owned<GVariant>(body == nullptr ? nullptr : g_variant_ref_sink(body));
}

void SendAnswer(GDBusMethodInvocation* invocation, Owned<GDBusMessage> const& answer)
{
    GDBusMessage* const call = g_dbus_method_invocation_get_message(invocation);
    if ((g_dbus_message_get_flags(call) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) == 0) {
        g_dbus_connection_send_message(g_dbus_method_invocation_get_connection(invocation), answer.get(),
                                       G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    }
}

} // namespace

IncomingScope::IncomingScope(char const* sender, GDBusMethodInvocation* invocation)
    : m_sender(sender), m_invocation(invocation), m_outer(current)
{
    current = this;
}

IncomingScope::~IncomingScope()
{
    current = m_outer;
    if (m_invocation != nullptr) {
        AnswerCallWithNothing(m_invocation);
    }
}

IncomingScope* IncomingScope::Current()
{
    return current;
}

void AnswerCall(GDBusMethodInvocation* invocation, CMessageBuffer const& reply)
{
    Error error;
    Owned<GVariant> const body = EncodeAnswer(invocation, reply, error);
    if (body == nullptr) {
        ZV_LOG_ERROR_LINE("Error while sending reply [%d] %s", error.Code(), error.Message());
        AnswerCallWithError(invocation, "org.freedesktop.DBus.Error.Failed", error.Message());
        return;
    }
    Owned<GDBusMessage> const answer(
        g_dbus_message_new_method_reply(g_dbus_method_invocation_get_message(invocation)));
    g_dbus_message_set_body(answer.get(), body.get());
    SendAnswer(invocation, answer);
}

void AnswerCallWithNothing(GDBusMethodInvocation* invocation)
{
    AnswerCallWithError(invocation, "org.freedesktop.DBus.Error.NoReply", "The service gives no answer");
}

void AnswerCallWithError(GDBusMethodInvocation* invocation, char const* name, char const* text)
{
    SendAnswer(invocation, Owned<GDBusMessage>(g_dbus_message_new_method_error_literal(
                               g_dbus_method_invocation_get_message(invocation), name, text)));
}

} // namespace zviptv
