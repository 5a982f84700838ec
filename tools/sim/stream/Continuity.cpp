// SPDX-License-Identifier: MIT
#include "stream/Continuity.h"

namespace zviptv::sim {

bool ContinuityCheck::IsRepeat(TsPacket const& packet) const
{
    return packet.continuity == m_counter && packet.unitStart == m_unitStart &&
           packet.payload.Size() == m_size &&
           std::equal(packet.payload.begin(), packet.payload.end(), m_payload.begin());
}

void ContinuityCheck::Remember(TsPacket const& packet)
{
    m_known = true;
    m_repeated = false;
    m_unitStart = packet.unitStart;
    m_counter = packet.continuity;
    m_size = std::min(packet.payload.Size(), m_payload.size());
    std::copy_n(packet.payload.begin(), m_size, m_payload.begin());
}

Continuity ContinuityCheck::Check(TsPacket const& packet)
{
    if (!packet.hasPayload) { // such packets do not increment the counter
        if (packet.discontinuity) {
            Forget();
        }
        return Continuity::InOrder;
    }
    if (m_known && !m_repeated && IsRepeat(packet)) {
        m_repeated = true;
        return Continuity::Duplicate;
    }
    bool const follows = packet.continuity == ((m_counter + 1) & 0x0F);
    bool const inOrder = !m_known || follows || packet.discontinuity;
    Remember(packet);
    return inOrder ? Continuity::InOrder : Continuity::Gap;
}

} // namespace zviptv::sim
