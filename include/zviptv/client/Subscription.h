// SPDX-License-Identifier: MIT
/// @file
/// Subscriptions for what the service pushes.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/client/PesPacket.h>
#include <zviptv/client/Types.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <set>

namespace zviptv {

namespace client {
struct Subscriber;
class PushHub;
} // namespace client

/// Which PES packets a subscription gets. An empty set accepts all packets.
struct PesFilter
{
    std::set<std::uint16_t> pids; ///< PIDs of the streams
    std::set<PesKind> kinds;      ///< kinds of the streams

    /// Whether packets of this kind and PID pass.
    bool Passes(PesKind kind, std::uint16_t pid) const
    {
        return (pids.empty() || pids.count(pid) != 0) && (kinds.empty() || kinds.count(kind) != 0);
    }
};

/// What a subscription has received.
struct PushCounters
{
    std::uint64_t packets = 0; ///< packets, or pieces of caption data
    std::uint64_t bytes = 0;   ///< of packets with their headers, or of caption data
    std::uint64_t gaps = 0;    ///< pauses of LongPause or more between two packets of the same PID
};

/// A subscription for PES packets or captions. It ends when it is destroyed.
///
/// Threads: use it on the thread that iterates the Television's context; its callback runs on this thread.
/// Lifetime: it may be destroyed inside its own callback. It may outlive the Television, but gets nothing
/// after the Television has been destroyed.
class ZVIPTV_API Subscription
{
public:
    /// A pause of at least this time between two packets of a PID counts as a gap. Streams such as captions
    /// often pause for longer.
    static constexpr std::chrono::seconds LongPause{1};

    /// Stands for no subscription.
    Subscription() = default;
    /// Used by the client layer only.
    Subscription(std::weak_ptr<client::PushHub> hub, std::shared_ptr<client::Subscriber> subscriber);
    ~Subscription();
    /// Takes over the subscription of `other`, which then stands for none.
    Subscription(Subscription&& other) noexcept;
    /// Ends the subscription of this object, and takes over that of `other`.
    Subscription& operator=(Subscription&& other) noexcept;

    /// Whether packets may still come.
    bool IsActive() const;

    /// What the subscription has received so far; also available after its end.
    PushCounters Counters() const;

    /// Ends the subscription: the callback does not run any more. Further calls do nothing.
    void End();

private:
    std::weak_ptr<client::PushHub> m_hub;
    std::shared_ptr<client::Subscriber> m_subscriber;
};

} // namespace zviptv
