#include "doctor/BusProbe.h"

#include "doctor/Deadline.h"

namespace zviptv::ctl::doctor {

namespace {

constexpr char Bus[] = "org.freedesktop.DBus";

Reach ReachOf(GError const& error)
{
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
        return Reach::Silent;
    }
    // A daemon that does not want this user says no, or just hangs up, within the handshake.
    for (int const code : {G_IO_ERROR_PERMISSION_DENIED, G_IO_ERROR_CLOSED, G_IO_ERROR_CONNECTION_CLOSED,
                           G_IO_ERROR_BROKEN_PIPE, G_IO_ERROR_PARTIAL_INPUT}) {
        if (g_error_matches(&error, G_IO_ERROR, code) != FALSE) {
            return Reach::Refused;
        }
    }
    bool const isDenied = g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) != FALSE ||
                          g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_AUTH_FAILED) != FALSE;
    return isDenied ? Reach::Refused : Reach::Absent;
}

Owned<GDBusMessage> MessageTo(Address const& to, GVariant* body)
{
    Owned<GDBusMessage> message(g_dbus_message_new_method_call(to.destination.c_str(), to.path.c_str(),
                                                               to.interface.c_str(), to.member.c_str()));
    // Asking must not start anything.
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
    char const* const text = g_dbus_message_get_arg0(message); // null where it is no text
    reply.error = name == nullptr ? "" : name;
    reply.text = text == nullptr ? "" : text;
    return reply;
}

} // namespace

bool Reply::IsDenied() const
{
    return kind == Kind::Error && isFromBus && error == "org.freedesktop.DBus.Error.AccessDenied";
}

BusProbe::BusProbe(BusFacts& facts)
{
    Deadline const deadline;
    GError* raw = nullptr;
    auto const flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_connection.reset(
        g_dbus_connection_new_for_address_sync(facts.address.c_str(), flags, nullptr, deadline.Get(), &raw));
    Owned<GError> const error(raw);
    if (m_connection != nullptr) {
        facts.reach = Reach::Reached;
        return;
    }
    facts.reach = error == nullptr ? Reach::Absent : ReachOf(*error);
    facts.reason = facts.reach == Reach::Silent ? "no answer within 2 seconds"
                   : error == nullptr           ? "no reason is told"
                                                : error->message;
}

BusProbe::~BusProbe()
{
    if (m_connection != nullptr) {
        // Sync, so that GLib's thread is done with it; there is nothing left to be written.
        g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
    }
}

std::string BusProbe::Name() const
{
    char const* const name = g_dbus_connection_get_unique_name(m_connection.get());
    return name == nullptr ? "" : name;
}

Reply BusProbe::Call(Address const& to, GVariant* body)
{
    Owned<GVariant> const sunk(body == nullptr ? nullptr : g_variant_ref_sink(body));
    if (m_isBusSilent) {
        return {};
    }
    Owned<GDBusMessage> const message = MessageTo(to, sunk.get());
    GError* raw = nullptr;
    Owned<GDBusMessage> const answer(g_dbus_connection_send_message_with_reply_sync(
        m_connection.get(), message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, PatienceMs, nullptr, nullptr,
        &raw));
    Owned<GError> const error(raw);
    if (answer != nullptr) {
        return ReplyOf(answer.get());
    }
    bool const isSilence = g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE;
    m_isBusSilent = !isSilence || to.destination == Bus;
    return {};
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
