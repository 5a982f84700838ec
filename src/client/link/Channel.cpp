// SPDX-License-Identifier: MIT
#include "client/link/Channel.h"

#include "client/link/Failures.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <chrono>
#include <thread>

namespace zviptv::client {

namespace {

/// How long GIO's thread may take to close a socket, which it does at once unless the machine is overloaded.
constexpr std::chrono::milliseconds CloseTimeout{1000};

} // namespace

Channel::Channel(GDBusConnection* connection, EndpointId endpoint)
    : m_endpoint(endpoint), m_connection(Share(connection)), m_helper(TypeWord(endpoint), connection)
{
}

void Channel::SetPushHandlers(PushHandlers handlers)
{
    if (m_pushes != nullptr) {
        return;
    }
    m_pushes = std::make_shared<PushHandlers const>(std::move(handlers));
    m_helper.SetCallback(
        nullptr,
        [](CMessageBuffer& message, void* self) {
            auto const kept = static_cast<Channel*>(self)->m_pushes; // the handler may end the channel
            kept->received(message);
        },
        this);
    m_helper.SetDisconnectNotiCB(
        [](std::string, std::string, void* self) {
            auto const kept = static_cast<Channel*>(self)->m_pushes;
            kept->lost();
        },
        this);
}

bool Channel::IsReady()
{
    return !Partner().empty() && m_helper.IsConnectionReady();
}

std::optional<Failure> Channel::ConnectNow(char const* function)
{
    CConnectionHelperDBusClient client(m_connection.get());
    std::string const partner = client.Connect(m_helper.GetPublicName(), TypeWord(m_endpoint));
    return Accept(partner, function);
}

std::optional<Failure> Channel::Accept(std::string const& partner, char const* function)
{
    if (partner.empty()) {
        Failure failure = LastFailure(function);
        if (IsNoReply(failure)) {
            return NoService(function, LeftUnanswered);
        }
        if (failure.errorName.empty() && failure.kind == FailureKind::NoService) {
            failure.key = protocol::key::DBusName;
            failure.message = std::string("the service has no endpoint for ") + TypeWord(m_endpoint);
        }
        return failure;
    }
    // A name of any other form would have to be looked up, which takes the bus's time.
    if (partner.find('\0') != std::string::npos || g_dbus_is_unique_name(partner.c_str()) == FALSE) {
        return Failure{FailureKind::MalformedReply, function, protocol::key::DBusName, "",
                       "dbusname is malformed: expected a unique bus name"};
    }
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (m_helper.Connect(partner) == 0) {
        return LastFailure(function);
    }
    m_partner = partner;
    return std::nullopt;
}

void Channel::Forget()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_partner.clear();
}

std::string Channel::Partner()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_partner;
}

bool Channel::HasLeft(std::string const& partner)
{
    if (partner.empty()) {
        return true;
    }
    int const timeoutMs = 1000;
    Owned<GVariant> const answer(g_dbus_connection_call_sync(
        m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "NameHasOwner", g_variant_new("(s)", partner.c_str()), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE,
        timeoutMs, nullptr, nullptr));
    gboolean hasOwner = TRUE;
    if (answer != nullptr) {
        g_variant_get(answer.get(), "(b)", &hasOwner);
    }
    return hasOwner == FALSE;
}

bool Attachment::IsAlive() const
{
    if (g_dbus_connection_is_closed(m_connection.get()) != FALSE) {
        return false;
    }
    // GIO notices on another thread, a moment later than the socket.
    GIOStream* const stream = g_dbus_connection_get_stream(m_connection.get());
    return G_IS_SOCKET_CONNECTION(stream) == FALSE ||
           g_socket_condition_check(g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream)), G_IO_HUP) ==
               0;
}

Channel& Attachment::Get(EndpointId endpoint)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    std::unique_ptr<Channel>& channel = m_channels[static_cast<std::size_t>(endpoint)];
    if (channel == nullptr) {
        channel = std::make_unique<Channel>(m_connection.get(), endpoint);
    }
    return *channel;
}

void Attachment::ForgetPartners()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    for (std::unique_ptr<Channel> const& channel : m_channels) {
        if (channel != nullptr) {
            channel->Forget();
        }
    }
}

void Attachment::Close()
{
    GIOStream* const stream = g_dbus_connection_get_stream(m_connection.get());
    g_dbus_connection_close(m_connection.get(), nullptr, nullptr, nullptr);
    // A callback would need a main context, and thereby a descriptor, which GIO's thread would close late.
    auto const limit = std::chrono::steady_clock::now() + CloseTimeout;
    while (g_io_stream_is_closed(stream) == FALSE && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
}

} // namespace zviptv::client
