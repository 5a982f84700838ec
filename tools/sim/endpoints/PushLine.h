// SPDX-License-Identifier: MIT
#pragma once

#include "Damage.h"
#include "Subscriber.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace zviptv::sim {

/// The notifications of one function to one application since its subscription: applies the faults, and
/// determines the order and the times.
class PushLine
{
public:
    using Time = Subscriber::Clock::time_point;

    /// A notification. Those of the same stream can be reordered.
    struct Push
    {
        Subscriber::Notification notification;
        std::size_t size = 0; ///< bytes
        std::uint16_t stream = 0;
    };

    /// Gets a notification to send and its time. Times never decrease.
    using Send = std::function<void(Push const& push, Time due)>;

    /// How long a burst holds notifications before it sends them.
    static constexpr std::chrono::seconds BurstHold{1};

    bool IsOn() const { return m_isOn; }
    /// Drops the notifications that are held.
    void Turn(bool on);

    /// Whether a notification of the stream is held until the next one of the same stream.
    bool Holds(std::uint16_t stream) const { return m_held.count(stream) != 0; }

    void Pass(Push push, Damage const& damage, Time now, Send const& send);

    /// Sends the notifications that are held, because none follows.
    void Release(Time now, Send const& send);

private:
    struct Item
    {
        Push push;
        Time due;
        bool isTwice = false;
    };

    Time BurstDue(int factor, Time now);
    void SendInOrder(Item const& item, Send const& send);

    bool m_isOn = false;
    Time m_last;                          ///< time of the last notification, which no other may overtake
    std::optional<Time> m_burst;          ///< time of the first notification of the burst
    std::map<std::uint16_t, Item> m_held; ///< held notifications, by their streams
};

} // namespace zviptv::sim
