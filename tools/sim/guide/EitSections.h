#pragma once

#include "stream/Continuity.h"

namespace zviptv::sim {

/// Largest section of an EIT, head and CRC included.
constexpr std::size_t MaxEitSection = 4096;

/// Cuts the sections of event information, which are longer than those of other tables, out of the packets of
/// their PID. Holds at most one section.
class EitSections
{
public:
    /// The sections that this packet completes: lengths agree, the CRC is right.
    std::vector<std::vector<std::uint8_t>> Push(TsPacket const& packet);

private:
    using Sections = std::vector<std::vector<std::uint8_t>>;

    void Begin(ByteView bytes, Sections& done);
    ByteView GoOn(ByteView bytes, Sections& done);

    ContinuityCheck m_continuity;
    std::vector<std::uint8_t> m_open; ///< the section being collected; empty: none
};

/// Whether this is one complete section of a table with versions, with the right CRC.
bool IsSoundEitSection(ByteView section);

} // namespace zviptv::sim
