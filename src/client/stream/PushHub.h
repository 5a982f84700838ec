// SPDX-License-Identifier: MIT
#pragma once

#include "client/stream/Push.h"
#include "client/stream/PushLink.h"

#include <zviptv/client/Subscription.h>

#include <chrono>
#include <map>
#include <memory>
#include <vector>

namespace zviptv::client {

/// One subscription of the application.
struct Subscriber
{
    using Clock = std::chrono::steady_clock;

    PushKind kind = PushKind::Pes;
    PesFilter filter;
    std::function<void(PesPacket const&)> onPes;
    std::function<void(CaptionData const&)> onCaption;
    PushCounters counters;
    std::map<std::uint16_t, Clock::time_point> latest; ///< by PID, 0 for captions
    bool isActive = true;

    void Count(std::uint16_t pid, std::size_t bytes, Clock::time_point now);
};

/// Passes pushes of the service to the application's subscriptions. Requests each kind from the service while
/// there is at least one subscription of it.
///
/// For the thread that iterates the context. Callbacks may subscribe, end subscriptions and close the hub.
class PushHub : public std::enable_shared_from_this<PushHub>
{
public:
    /// `link` must live until Close().
    explicit PushHub(PushLink& link) : m_link(&link) {}

    /// For a null callback, returns a subscription that has ended.
    Subscription Add(PesFilter filter, std::function<void(PesPacket const&)> callback);
    Subscription Add(std::function<void(CaptionData const&)> callback);

    /// Passes a push to the current subscriptions; ignores any other message.
    void Take(Push const& push, Subscriber::Clock::time_point now = Subscriber::Clock::now());

    /// Whether this kind must be requested from the service, also after a restart.
    bool Wants(PushKind kind) const;

    void End(Subscriber& subscriber);

    /// Ends all subscriptions without a message to the service.
    void Close();

private:
    Subscription Add(std::shared_ptr<Subscriber> subscriber);
    template <typename Item>
    void Deliver(Item const& item, std::uint16_t pid, std::function<void(Item const&)> Subscriber::*callback,
                 PushKind kind, char const* function, Subscriber::Clock::time_point now);

    PushLink* m_link; ///< null after Close()
    std::vector<std::shared_ptr<Subscriber>> m_subscribers;
};

} // namespace zviptv::client
