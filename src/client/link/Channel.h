// SPDX-License-Identifier: MIT
#pragma once

#include "client/message/Endpoint.h"
#include "glib/Owned.h"

#include <zviptv/ProxyDBusHelper.h>
#include <zviptv/client/Failure.h>

#include <array>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace zviptv::client {

/// One end of a channel to an endpoint of the service. Any thread may use it.
class Channel
{
public:
    Channel(GDBusConnection* connection, EndpointId endpoint);

    CProxyDBusHelper& Helper() { return m_helper; }

    struct PushHandlers
    {
        std::function<void(CMessageBuffer& message)> received;
        std::function<void()> lost; ///< the partner has left
    };
    /// They run through the context of the thread that connects. The first ones stay.
    void SetPushHandlers(PushHandlers handlers);

    /// Whether the service has named a partner that has not left since.
    bool IsReady();
    /// Announces the channel and waits for the service's answer, 2 s at most. Nothing on success.
    std::optional<Failure> ConnectNow(char const* function);
    /// Connects to the partner that the service has named. Nothing on success.
    std::optional<Failure> Accept(std::string const& partner, char const* function);
    /// Makes the next use request the partner again.
    void Forget();
    /// The unique name of the partner; empty if it must be requested.
    std::string Partner();
    /// Asks the bus, for 1 s at most, whether this partner has left.
    bool HasLeft(std::string const& partner);

private:
    EndpointId const m_endpoint;
    Owned<GDBusConnection> const m_connection;
    std::mutex m_mutex;
    std::string m_partner;
    std::shared_ptr<PushHandlers const> m_pushes;
    CProxyDBusHelper m_helper; ///< last: it uses the handlers
};

/// A connection to the bus with the channels on it, which are made at first use. Any thread may use it.
class Attachment
{
public:
    explicit Attachment(Owned<GDBusConnection> connection) : m_connection(std::move(connection)) {}

    GDBusConnection* Connection() const { return m_connection.get(); }
    /// Whether the bus is still there.
    bool IsAlive() const;
    Channel& Get(EndpointId endpoint);
    /// Reports that the service has left: the next use requests each partner again.
    void ForgetPartners();
    /// Closes the connection, upon which the service sees all channels leave. Waits for GIO, which closes the
    /// socket on another thread, but not for the bus.
    void Close();

private:
    Owned<GDBusConnection> const m_connection;
    std::mutex m_mutex;
    std::array<std::unique_ptr<Channel>, EndpointCount> m_channels;
};

} // namespace zviptv::client
