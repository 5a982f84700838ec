#pragma once

#include "guide/EitTable.h"
#include "stream/SectionAssembler.h"

namespace zviptv::sim {

/// Reads the event information of a DVB transport stream. Not for ARIB streams, whose times are Japanese and
/// whose texts are coded differently.
class EitReader
{
public:
    static constexpr std::uint16_t Pid = 0x12;

    /// Any packet; those of other PIDs are passed over. True when it brings something new.
    bool Push(TsPacket const& packet);

    EitTable const& Table() const { return m_table; }

private:
    SectionAssembler m_sections{EventSections};
    EitTable m_table;
};

} // namespace zviptv::sim
