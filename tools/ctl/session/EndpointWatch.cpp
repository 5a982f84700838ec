// SPDX-License-Identifier: MIT
#include "EndpointWatch.h"

#include "Session.h"

#include <zviptv/Protocol.h>
#include <zviptv/ProxyDBusHelper.h>

#include <mutex>
#include <set>
#include <utility>

namespace zviptv::ctl {

namespace {

std::string Text(char const* text)
{
    return text == nullptr ? "" : text;
}

std::string ChannelPath()
{
    return std::string("/org/corvel/zviptvapi/DbusCommunication/") + protocol::type::DataSubscriber;
}

/// Why the library finds no function name in the body. Empty if it finds one.
std::string BodyComplaint(GVariant* body)
{
    std::string const type = body == nullptr ? "()" : g_variant_get_type_string(body);
    if (type != "(a{sv})") {
        return "they have the type " + type + " instead of (a{sv})";
    }
    Owned<GVariant> const entries(g_variant_get_child_value(body, 0));
    std::string const key = std::string("\"") + protocol::key::FunctionName + "\"";
    Owned<GVariant> const name(g_variant_lookup_value(entries.get(), protocol::key::FunctionName, nullptr));
    if (name == nullptr) {
        return key + " is missing";
    }
    return g_variant_is_of_type(name.get(), G_VARIANT_TYPE_BYTESTRING) != FALSE
               ? ""
               : key + " has the type " + g_variant_get_type_string(name.get()) + " instead of ay";
}

/// Why the library ignores a push. Empty if it accepts it.
std::string ProblemOf(GDBusMessage* push, std::string const& endpoint)
{
    std::string const sender = Text(g_dbus_message_get_sender(push));
    std::string const path = Text(g_dbus_message_get_path(push));
    if (sender != endpoint) {
        return "they come from the connection " + sender + " instead of the endpoint's, " + endpoint;
    }
    if (path != ChannelPath()) {
        return "they come from the object " + path + " instead of " + ChannelPath();
    }
    return BodyComplaint(g_dbus_message_get_body(push));
}

} // namespace

/// Shared with GLib's thread, on which messages arrive.
struct EndpointWatch::State
{
    mutable std::mutex mutex;
    std::string endpoint;
    std::set<std::string> reported;
    std::vector<std::string> complaints;

    void See(GDBusMessage* message, bool isIncoming)
    {
        GDBusMessageType const type = g_dbus_message_get_message_type(message);
        std::string const interface = Text(g_dbus_message_get_interface(message));
        if (interface != CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE) {
            return;
        }
        std::lock_guard<std::mutex> const lock(mutex);
        if (!isIncoming && type == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
            Text(g_dbus_message_get_path(message)) == ChannelPath()) {
            endpoint = Text(g_dbus_message_get_destination(message));
        } else if (isIncoming && type == G_DBUS_MESSAGE_TYPE_SIGNAL && !endpoint.empty()) {
            Add(ProblemOf(message, endpoint));
        }
    }

    void Add(std::string const& complaint)
    {
        if (!complaint.empty() && reported.insert(complaint).second) {
            complaints.push_back("pushes are ignored: " + complaint);
        }
    }
};

EndpointWatch::EndpointWatch(GDBusConnection* connection)
    : m_connection(connection), m_state(std::make_shared<State>()),
      m_filter(g_dbus_connection_add_filter(
          connection, OnMessage, new std::shared_ptr<State>(m_state),
          [](gpointer state) { delete static_cast<std::shared_ptr<State>*>(state); }))
{
}

EndpointWatch::~EndpointWatch()
{
    g_dbus_connection_remove_filter(m_connection, m_filter);
}

void EndpointWatch::Follow(std::function<void()> const& onClosed)
{
    std::string const name = Name();
    if (name.empty()) {
        return;
    }
    m_watch.emplace(
        m_connection,
        [onClosed](ServiceWatch::Event event) {
            if (event == ServiceWatch::Event::Gone && Session::IsServiceRunning()) {
                onClosed();
            }
        },
        name.c_str());
}

std::string EndpointWatch::Name() const
{
    std::lock_guard<std::mutex> const lock(m_state->mutex);
    return m_state->endpoint;
}

std::vector<std::string> EndpointWatch::TakeProblems()
{
    std::lock_guard<std::mutex> const lock(m_state->mutex);
    return std::exchange(m_state->complaints, {});
}

GDBusMessage* EndpointWatch::OnMessage(GDBusConnection* /*connection*/, GDBusMessage* message,
                                       gboolean isIncoming, gpointer state)
{
    (*static_cast<std::shared_ptr<State>*>(state))->See(message, isIncoming != FALSE);
    return message;
}

} // namespace zviptv::ctl
