// SPDX-License-Identifier: MIT
#pragma once

#include "Damage.h"
#include "Subscriber.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace zviptv::sim {

/// The notifications of one function that go to one application, from when it asks for them: what faults make
/// of them, in which order and when.
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

    /// Takes what is to be sent, and when. Times never go back.
    using Send = std::function<void(Push const& push, Time due)>;

    /// How long a burst holds notifications before it sends them.
    static constexpr std::chrono::seconds BurstHold{1};

    bool IsOn() const { return m_isOn; }
    /// What is held is forgotten.
    void Turn(bool on);

    /// A notification of the stream is held until the next one of it.
    bool Holds(std::uint16_t stream) const { return m_held.count(stream) != 0; }

    void Pass(Push push, Damage const& damage, Time now, Send const& send);

    /// Sends what is held, since nothing follows.
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
    Time m_last;                          ///< when the last one is due, which none overtakes
    std::optional<Time> m_burst;          ///< when the notifications of the burst began to come
    std::map<std::uint16_t, Item> m_held; ///< by their streams
};

} // namespace zviptv::sim
