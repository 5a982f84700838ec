// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/TsPacket.h"

namespace zviptv::sim {

enum class Continuity
{
    InOrder,
    Duplicate, ///< the same packet again, which the standard allows once
    Gap        ///< packets are missing
};

/// Follows the continuity counter of one PID.
class ContinuityCheck
{
public:
    Continuity Check(TsPacket const& packet);

    /// The next packet may have any counter.
    void Forget() { m_known = false; }

private:
    bool IsRepeat(TsPacket const& packet) const;
    void Remember(TsPacket const& packet);

    bool m_known = false;
    bool m_repeated = false;
    bool m_unitStart = false;
    std::uint8_t m_counter = 0;
    std::size_t m_size = 0;
    TsBytes m_payload{};
};

} // namespace zviptv::sim
