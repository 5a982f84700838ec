#include "guide/EitReader.h"

namespace zviptv::sim {

bool EitReader::Push(TsPacket const& packet)
{
    if (packet.pid != Pid)
        return false;
    bool changed = false;
    for (auto const& section : m_sections.Push(packet))
        changed = m_table.Add(section) || changed;
    return changed;
}

} // namespace zviptv::sim
