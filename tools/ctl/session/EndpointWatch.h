// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceWatch.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// Reports two events that the library ignores silently: pushes whose sender, object or form is not that of
/// the data subscriber's endpoint, and the end of the endpoint's connection. Create it before the
/// subscription, because the request to subscribe contains the connection of the endpoint.
class EndpointWatch
{
public:
    explicit EndpointWatch(GDBusConnection* connection);
    ~EndpointWatch();

    EndpointWatch(EndpointWatch const&) = delete;
    EndpointWatch& operator=(EndpointWatch const&) = delete;

    /// Call it after subscribing: `onClosed` runs while the main context is iterated, if the service is still
    /// on the bus.
    void Follow(std::function<void()> const& onClosed);

    /// The connection to which the subscription was sent; empty if it was not sent.
    std::string Name() const;

    /// Why pushes were ignored, each reason once.
    std::vector<std::string> TakeProblems();

private:
    struct State;

    static GDBusMessage* OnMessage(GDBusConnection* connection, GDBusMessage* message, gboolean isIncoming,
                                   gpointer state);

    GDBusConnection* m_connection;
    std::shared_ptr<State> m_state;
    unsigned m_filter;
    std::optional<ServiceWatch> m_watch;
};

} // namespace zviptv::ctl
