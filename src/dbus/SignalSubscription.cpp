// SPDX-License-Identifier: MIT
#include "dbus/SignalSubscription.h"

#include "dbus/BusRequest.h"

#include <utility>

namespace zviptv {

namespace {

/// The match rule; empty if the bus needs none.
std::string Rule(SignalSubscription::Match const& match)
{
    if (match.isUnicast) {
        return std::string();
    }
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

void SendRule(GDBusConnection* connection, char const* method, std::string const& rule)
{
    if (!rule.empty()) {
        SendToBus(connection, method, g_variant_new("(s)", rule.c_str()));
    }
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
    SendRule(connection, "AddMatch", m_rule);
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
        SendRule(m_connection.get(), "RemoveMatch", m_rule);
        g_dbus_connection_signal_unsubscribe(m_connection.get(), m_id);
    }
}

} // namespace zviptv
