// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/TsPacket.h"

namespace zviptv::sim {

/// Counts gaps in the continuity counters of all PIDs.
class ContinuityWatch
{
public:
    void Push(TsBytes const& packet)
    {
        std::uint16_t const pid = ByteView(packet.data(), packet.size()).U16(1) & 0x1FFF;
        bool const hasField = (packet[3] & 0x20) != 0;
        bool const hasPayload = (packet[3] & 0x10) != 0;
        bool const isDiscontinuous = hasField && packet[4] > 0 && (packet[5] & 0x80) != 0;
        std::uint8_t& last = m_last[pid];
        if (pid == NullPid || (!hasPayload && !isDiscontinuous)) {
            return;
        }
        std::uint8_t const counter = (packet[3] & 0x0F) | Known;
        std::uint8_t const next = ((last + 1) & 0x0F) | Known;
        m_gaps += (last & Known) != 0 && !isDiscontinuous && counter != last && counter != next ? 1U : 0U;
        last = counter;
    }

    std::uint64_t Gaps() const { return m_gaps; }

private:
    static constexpr std::uint8_t Known = 0x80;

    std::array<std::uint8_t, 8192> m_last{}; ///< counter by PID
    std::uint64_t m_gaps = 0;
};

} // namespace zviptv::sim
