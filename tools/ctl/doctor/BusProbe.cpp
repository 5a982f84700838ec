// SPDX-License-Identifier: MIT
#include "doctor/BusProbe.h"

#include "glib/Deadline.h"

namespace zviptv::ctl::doctor {

namespace {

constexpr char Bus[] = "org.freedesktop.DBus";

/// A bus that refuses this user answers so, or just closes the connection, during the handshake.
Reach ReachOf(Error const& error, bool isSocketOpen)
{
    if (error.Is(G_IO_ERROR_CANCELLED)) {
        return Reach::Silent;
    }
    if (isSocketOpen) {
        return Reach::Refused;
    }
    return error.Is(G_IO_ERROR_PERMISSION_DENIED) ? Reach::Closed : Reach::Absent;
}

Owned<GDBusMessage> MessageTo(Address const& to, GVariant* body)
{
    Owned<GDBusMessage> message(g_dbus_message_new_method_call(to.destination.c_str(), to.path.c_str(),
                                                               to.interface.c_str(), to.member.c_str()));
    // A call must not start a service.
    g_dbus_message_set_flags(message.get(), G_DBUS_MESSAGE_FLAGS_NO_AUTO_START);
    if (body != nullptr) {
        g_dbus_message_set_body(message.get(), body);
    }
    return message;
}

Reply ReplyOf(GDBusMessage* message)
{
    Reply reply;
    char const* const sender = g_dbus_message_get_sender(message);
    reply.isFromBus = sender != nullptr && std::string(sender) == Bus;
    if (g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_ERROR) {
        GVariant* const body = g_dbus_message_get_body(message);
        reply.kind = Reply::Kind::Answer;
        reply.body.reset(body != nullptr ? g_variant_ref(body) : g_variant_ref_sink(g_variant_new("()")));
        return reply;
    }
    reply.kind = Reply::Kind::Error;
    char const* const name = g_dbus_message_get_error_name(message);
    char const* const text = g_dbus_message_get_arg0(message); // null if it is not a text
    reply.error = name == nullptr ? "" : name;
    reply.text = text == nullptr ? "" : text;
    return reply;
}

} // namespace

bool Reply::IsDenied() const
{
    return kind == Kind::Error && isFromBus && error == "org.freedesktop.DBus.Error.AccessDenied";
}

bool Reply::IsOf(char const* type) const
{
    return kind == Kind::Answer && g_variant_is_of_type(body.get(), G_VARIANT_TYPE(type)) != FALSE;
}

BusProbe::BusProbe(BusFacts& facts)
{
    Deadline const deadline{std::chrono::milliseconds(TimeoutMs)};
    Error error;
    Owned<GIOStream> const stream(
        g_dbus_address_get_stream_sync(facts.address.c_str(), nullptr, deadline.Get(), error.Out()));
    if (stream != nullptr) {
        m_connection.reset(g_dbus_connection_new_sync(stream.get(), nullptr,
                                                      G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr,
                                                      deadline.Get(), error.Out()));
    }
    if (m_connection != nullptr) {
        SayHello(facts);
        return;
    }
    facts.reach = error ? ReachOf(error, stream != nullptr) : Reach::Absent;
    facts.reason = facts.reach == Reach::Silent ? "no answer within 2 seconds"
                   : error                      ? error.Message()
                                                : "no reason given";
}

/// GLib's own "Hello" call cannot be cancelled, and waits for 25 seconds.
void BusProbe::SayHello(BusFacts& facts)
{
    Reply const reply = CallBus("Hello");
    if (reply.IsOf("(s)")) {
        char const* name = nullptr;
        g_variant_get(reply.body.get(), "(&s)", &name);
        m_name = name;
        facts.reach = Reach::Reached;
        return;
    }
    bool const isRefused = reply.kind == Reply::Kind::Error || !reply.text.empty(); // or is closed
    facts.reach = isRefused ? Reach::Refused : Reach::Silent;
    facts.reason = isRefused ? reply.text : "no answer within 2 seconds";
    Close();
}

BusProbe::~BusProbe()
{
    Close();
}

/// Closes synchronously, so that GLib's thread no longer uses it; nothing is left to write.
void BusProbe::Close()
{
    if (m_connection != nullptr) {
        g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
        m_connection.reset();
    }
}

Reply BusProbe::Call(Address const& to, GVariant* body)
{
    Owned<GVariant> const sunk(body == nullptr ? nullptr : g_variant_ref_sink(body));
    if (m_isBusSilent) {
        return {};
    }
    Owned<GDBusMessage> const message = MessageTo(to, sunk.get());
    Error error;
    Owned<GDBusMessage> const answer(g_dbus_connection_send_message_with_reply_sync(
        m_connection.get(), message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, TimeoutMs, nullptr, nullptr,
        error.Out()));
    if (answer != nullptr) {
        return ReplyOf(answer.get());
    }
    bool const isSilence = error.Is(G_IO_ERROR_TIMED_OUT);
    m_isBusSilent = !isSilence || to.destination == Bus;
    Reply reply;
    reply.text = isSilence || !error ? "" : error.Message();
    return reply;
}

Reply BusProbe::CallBus(char const* member, GVariant* body)
{
    return Call({Bus, "/org/freedesktop/DBus", Bus, member}, body);
}

void BusProbe::Emit(Address const& to)
{
    Owned<GDBusMessage> const message(
        g_dbus_message_new_signal(to.path.c_str(), to.interface.c_str(), to.member.c_str()));
    g_dbus_message_set_destination(message.get(), to.destination.c_str());
    g_dbus_connection_send_message(m_connection.get(), message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
}

} // namespace zviptv::ctl::doctor
