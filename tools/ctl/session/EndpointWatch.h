// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceWatch.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// Reports two things that the library ignores silently: pushes that differ from those of the data
/// subscriber's endpoint in sender, object or form, and the end of the endpoint's connection. Create it
/// before the subscription: the request to subscribe names the connection of the endpoint.
class EndpointWatch
{
public:
    explicit EndpointWatch(GDBusConnection* connection);
    ~EndpointWatch();

    EndpointWatch(EndpointWatch const&) = delete;
    EndpointWatch& operator=(EndpointWatch const&) = delete;

    /// After subscribing: `onClosed` runs while the main context is iterated, if the service is still there.
    void Follow(std::function<void()> const& onClosed);

    /// The connection that the subscription was sent to; empty if it was sent to nobody.
    std::string Name() const;

    /// Why pushes were ignored, each reason once.
    std::vector<std::string> TakeComplaints();

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
