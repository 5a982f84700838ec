// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Continuity.h"

namespace zviptv::sim {

/// Counters of the packets of one PID.
struct PesCounters
{
    std::uint64_t delivered = 0;
    std::uint64_t damaged = 0;   ///< begun, but lost because of a gap, an error mark or scrambling
    std::uint64_t truncated = 0; ///< the next one began, or the stream ended, before its announced end
    std::uint64_t oversized = 0; ///< longer than the limit
    std::uint64_t headless = 0;  ///< did not begin with 00 00 01
    std::uint64_t duplicatePackets = 0;
    std::uint64_t scrambledPackets = 0;
};

/// Assembles the PES packets of one PID, byte for byte as in the stream, including their headers.
/// A packet with an announced length is returned as soon as it is complete; a packet of unspecified length
/// when the next one begins, or by Flush(). At most one packet is held, of at most `limit` bytes.
class PesAssembler
{
public:
    using Pes = std::vector<std::uint8_t>;

    static constexpr std::size_t DefaultLimit = 8 * 1024 * 1024;

    explicit PesAssembler(std::size_t limit = DefaultLimit) : m_limit(limit) {}

    /// The PES packets that this packet completes, in order: two at most.
    std::vector<Pes> Push(TsPacket const& packet);

    /// Call it at the end of the stream: returns the last packet of unspecified length, if there is one.
    std::optional<Pes> Flush();

    /// Call it before packets from another place in the stream: drops an unfinished packet without counting
    /// it.
    void Restart();

    PesCounters const& Counters() const { return m_counters; }

private:
    void Append(ByteView payload, std::vector<Pes>& done);
    void Drop();
    void Abandon(std::uint64_t& counter);
    Pes HandOut();

    std::size_t const m_limit;
    ContinuityCheck m_continuity;
    PesCounters m_counters;
    bool m_open = false;
    Pes m_bytes;
};

} // namespace zviptv::sim
