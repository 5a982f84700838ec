// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IIPTVDataSubscriber.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace zviptv::ctl {

/// One packet of either kind, valid while it is handled.
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

/// A subscription, one of a kind at a time: the interface's callbacks carry no user data.
class Subscription
{
public:
    using Handler = std::function<void(Packet const& packet)>;
    using Wait = std::function<void()>;

    /// Subscribes; `handler` runs while the main context is iterated. A key cannot be made twice in one
    /// second: then it calls `waitForNextSecond` and tries again, a few times, and throws a Failure at last.
    Subscription(IIPTVDataSubscriber& subscriber, PacketKind kind, Handler handler,
                 Wait const& waitForNextSecond = WaitForNextSecond);

    /// Forgets the handler. Ends the subscription only if End() was called: the interface object may be gone.
    ~Subscription();

    Subscription(Subscription const&) = delete;
    Subscription& operator=(Subscription const&) = delete;

    /// Unsubscribes at the object that was subscribed at, or at its successor, which does not know the key.
    void End(IIPTVDataSubscriber& subscriber);

    /// Blocks until the clock's second changes.
    static void WaitForNextSecond();

private:
    PacketKind m_kind;
    int m_key = 0;
};

class Session;

/// Puts a subscription at the session's object into `place`. Throws a Failure where the service does not take
/// it.
void Subscribe(Session& session, PacketKind kind, Subscription::Handler handler,
               std::optional<Subscription>& place);

} // namespace zviptv::ctl
