#pragma once

#include "stream/Continuity.h"

namespace zviptv::sim {

/// Largest section of a PAT, PMT or SDT, head and CRC included.
constexpr std::size_t MaxTableSection = 1024;

/// Whether this is one complete section of a table with versions: lengths agree, the CRC is right.
bool IsSoundSection(ByteView section);

/// Cuts the sections out of the packets of one PID. Holds at most one section.
class SectionAssembler
{
public:
    /// The sections that this packet completes, sound ones only.
    std::vector<std::vector<std::uint8_t>> Push(TsPacket const& packet);

    /// Drops what is unfinished; the next packet may have any counter.
    void Reset();

private:
    using Sections = std::vector<std::vector<std::uint8_t>>;

    void Append(ByteView bytes, Sections& done);
    void Start(ByteView bytes, Sections& done);
    std::size_t Wanted() const;
    void Drop();

    ContinuityCheck m_continuity;
    std::vector<std::uint8_t> m_bytes;
    bool m_open = false;
};

} // namespace zviptv::sim
