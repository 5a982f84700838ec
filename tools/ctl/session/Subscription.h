// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IIPTVDataSubscriber.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace zviptv::ctl {

/// A packet of either kind, valid while it is handled.
struct Packet
{
    std::int32_t type;
    std::optional<std::uint16_t> pid; ///< of PES packets
    std::optional<std::uint32_t> pts; ///< of PES packets
    std::vector<std::uint8_t> const& data;
};

enum class PacketKind
{
    Pes,
    Caption
};

/// A subscription. Only one of a kind can exist at a time, because the interface's callbacks get no user
/// data.
class Subscription
{
public:
    using Handler = std::function<void(Packet const& packet)>;
    using Wait = std::function<void()>;

    /// Subscribes; `handler` runs while the main context is iterated. A key cannot be made twice in one
    /// second: then it calls `waitForNextSecond` and tries again a few times, and finally throws a Failure.
    Subscription(IIPTVDataSubscriber& subscriber, PacketKind kind, Handler handler,
                 Wait const& waitForNextSecond = WaitForNextSecond);

    /// Releases the handler. Ends the subscription only if End() was called: the interface object may no
    /// longer exist.
    ~Subscription();

    Subscription(Subscription const&) = delete;
    Subscription& operator=(Subscription const&) = delete;

    /// Unsubscribes from the object of the subscription, or from its successor, which does not know the key.
    void End(IIPTVDataSubscriber& subscriber);

    /// Blocks until the clock's second changes.
    static void WaitForNextSecond();

private:
    PacketKind m_kind;
    int m_key = 0;
};

class Session;

/// Makes a subscription with the session's object and stores it in `place`. Throws a Failure if the service
/// does not accept it.
void Subscribe(Session& session, PacketKind kind, Subscription::Handler handler,
               std::optional<Subscription>& place);

} // namespace zviptv::ctl
