// SPDX-License-Identifier: MIT
#include "dbus/SignalSubscription.h"

#include <utility>

namespace zviptv {

namespace {

std::string Rule(SignalSubscription::Match const& match)
{
    std::string rule = "type='signal'";
    auto const add = [&rule](char const* key, std::string const& value) {
        if (!value.empty()) {
            rule.append(",").append(key).append("='").append(value).append("'");
        }
    };
    add("sender", match.sender);
    add("interface", match.interface);
    add("member", match.member);
    add("path", match.path);
    add("arg0", match.firstArgument);
    return rule;
}

/// Nothing comes of it on a connection that has closed.
void TellTheBus(GDBusConnection* connection, char const* method, std::string const& rule)
{
    Owned<GDBusMessage> const message(g_dbus_message_new_method_call(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method));
    g_dbus_message_set_body(message.get(), g_variant_new("(s)", rule.c_str()));
    g_dbus_connection_send_message(connection, message.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
}

char const* TextOrAny(std::string const& text)
{
    return text.empty() ? nullptr : text.c_str();
}

} // namespace

SignalSubscription::SignalSubscription(GDBusConnection* connection, Match const& match,
                                       GDBusSignalCallback callback, void* userData, GDestroyNotify release)
    : m_connection(Share(connection)), m_rule(Rule(match)),
      m_id(g_dbus_connection_signal_subscribe(connection, TextOrAny(match.sender), TextOrAny(match.interface),
                                              TextOrAny(match.member), TextOrAny(match.path),
                                              TextOrAny(match.firstArgument),
                                              G_DBUS_SIGNAL_FLAGS_NO_MATCH_RULE, callback, userData, release))
{
    TellTheBus(connection, "AddMatch", m_rule);
}

SignalSubscription::SignalSubscription(SignalSubscription&& other) noexcept
    : m_connection(std::move(other.m_connection)), m_rule(std::move(other.m_rule)),
      m_id(std::exchange(other.m_id, 0))
{
}

SignalSubscription& SignalSubscription::operator=(SignalSubscription&& other) noexcept
{
    std::swap(m_connection, other.m_connection);
    std::swap(m_rule, other.m_rule);
    std::swap(m_id, other.m_id);
    return *this;
}

SignalSubscription::~SignalSubscription()
{
    if (m_id != 0) {
        TellTheBus(m_connection.get(), "RemoveMatch", m_rule);
        g_dbus_connection_signal_unsubscribe(m_connection.get(), m_id);
    }
}

} // namespace zviptv
