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

/// Which PES packets a subscription gets. An empty set lets all through.
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
/// Threads: for the thread that iterates the Television's context, on which its callback runs. Lifetime: it
/// may be destroyed inside its own callback, and may outlive the Television, which ends it.
class ZVIPTV_API Subscription
{
public:
    /// From this pause between two packets of a PID on, a gap is counted. Streams such as captions pause for
    /// longer by their nature.
    static constexpr std::chrono::seconds LongPause{1};

    /// Stands for no subscription.
    Subscription() = default;
    /// For the layer itself.
    Subscription(std::weak_ptr<client::PushHub> hub, std::shared_ptr<client::Subscriber> subscriber);
    ~Subscription();
    /// Takes over the subscription of `other`, which then stands for none.
    Subscription(Subscription&& other) noexcept;
    /// The same; what this object stood for ends.
    Subscription& operator=(Subscription&& other) noexcept;

    /// Whether packets may still come.
    bool IsActive() const;

    /// What has come so far; also after the end.
    PushCounters Counters() const;

    /// Ends the subscription: the callback does not run any more. Further calls do nothing.
    void End();

private:
    std::weak_ptr<client::PushHub> m_hub;
    std::shared_ptr<client::Subscriber> m_subscriber;
};

} // namespace zviptv
