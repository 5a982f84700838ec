// SPDX-License-Identifier: MIT
#pragma once

#include "input/RtpPacket.h"

#include <functional>
#include <map>
#include <set>

namespace zviptv::sim {

/// Puts RTP packets in the order of their sequence numbers, which wrap.
///
/// A packet whose predecessor is missing is held until that comes, or until one has come that is Size or more
/// packets later: then the missing ones are lost. Memory is bounded. Not thread-safe.
class RtpWindow
{
public:
    static constexpr int Size = 32;

    struct Counters
    {
        std::uint64_t lost = 0;       ///< never came, or too late
        std::uint64_t duplicated = 0; ///< came again
        std::uint64_t reordered = 0;  ///< came after a later one, and in time
    };

    /// `deliver` gets the payloads in order, inside Push(). They are valid during the call.
    explicit RtpWindow(std::function<void(ByteView payload)> deliver) : m_deliver(std::move(deliver)) {}

    /// A packet of another source begins again. One that is far from the packets before is passed over,
    /// unless the next one follows it: then the sender has begun again. True when it has, either way.
    bool Push(RtpPacket const& packet);

    Counters const& Count() const { return m_counters; }

private:
    using Number = std::int64_t; ///< sequence number that does not wrap

    void Begin(RtpPacket const& packet);
    void Hold(Number number, ByteView payload);
    void GoOn();
    void Skip(Number next);

    std::function<void(ByteView)> m_deliver;
    Counters m_counters;
    bool m_hasBegun = false;
    std::uint32_t m_source = 0;
    Number m_next = 0;                      ///< to be delivered
    Number m_latest = 0;                    ///< highest that has come
    std::optional<std::uint16_t> m_newNext; ///< sequence number that would confirm another sequence
    std::map<Number, std::vector<std::uint8_t>> m_held;
    std::set<Number> m_missed; ///< of the latest packets
};

} // namespace zviptv::sim
