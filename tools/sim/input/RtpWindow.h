// SPDX-License-Identifier: MIT
#pragma once

#include "input/RtpPacket.h"

#include <functional>
#include <map>
#include <set>

namespace zviptv::sim {

/// Puts RTP packets in the order of their sequence numbers, which wrap.
/// A packet whose predecessor is missing is held until the predecessor arrives, or until a packet arrives
/// that is Size or more packets later: then the missing packets are lost. Memory is bounded. Not thread-safe.
class RtpWindow
{
public:
    static constexpr int Size = 32;

    struct Counters
    {
        std::uint64_t lost = 0;       ///< packets that did not arrive, or too late
        std::uint64_t duplicated = 0; ///< packets that arrived again
        std::uint64_t reordered = 0;  ///< packets that arrived after a later one, but in time
    };

    /// `deliver` gets the payloads in order, inside Push(). They are valid during the call.
    explicit RtpWindow(std::function<void(ByteView payload)> deliver) : m_deliver(std::move(deliver)) {}

    /// Adds a packet. A packet of another source begins a new sequence. A packet that is far from the
    /// previous ones is ignored, unless the next packet follows it: then the sender has begun a new sequence.
    /// Returns true if a new sequence has begun.
    bool Push(RtpPacket const& packet);

    Counters const& Count() const { return m_counters; }

private:
    using Number = std::int64_t; ///< sequence number that does not wrap

    void Begin(RtpPacket const& packet);
    void Hold(Number number, ByteView payload);
    void DeliverHeld();
    void Skip(Number next);

    std::function<void(ByteView)> m_deliver;
    Counters m_counters;
    bool m_hasBegun = false;
    std::uint32_t m_source = 0;
    Number m_next = 0;                      ///< next number to deliver
    Number m_latest = 0;                    ///< highest number that has arrived
    std::optional<std::uint16_t> m_newNext; ///< sequence number that would confirm a new sequence
    std::map<Number, std::vector<std::uint8_t>> m_held;
    std::set<Number> m_missed; ///< missing numbers among the latest packets
};

} // namespace zviptv::sim
