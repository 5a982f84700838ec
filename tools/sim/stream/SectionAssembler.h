// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Continuity.h"

namespace zviptv::sim {

/// What the sections of a table may be.
struct SectionRules
{
    std::size_t largest;  ///< bytes, head and CRC included
    bool numbersAreTight; ///< no section number is above the last one that the section names
};

/// A PAT, PMT or SDT.
constexpr SectionRules ServiceSections{1024, true};

/// An EIT, whose segments let the numbers jump.
constexpr SectionRules EventSections{4096, false};

/// Whether this is one complete section of a table with versions: lengths agree, the CRC is right.
bool IsSoundSection(ByteView section, SectionRules const& rules = ServiceSections);

/// Cuts the sections out of the packets of one PID. Holds at most one section.
class SectionAssembler
{
public:
    explicit SectionAssembler(SectionRules const& rules = ServiceSections) : m_rules(rules) {}

    /// The sections that this packet completes, sound ones only.
    std::vector<std::vector<std::uint8_t>> Push(TsPacket const& packet);

    /// Drops what is unfinished; the next packet may have any counter.
    void Reset();

    /// Sections so far that were complete, but not sound.
    std::uint64_t Damaged() const { return m_damaged; }

private:
    using Sections = std::vector<std::vector<std::uint8_t>>;

    void Append(ByteView bytes, Sections& done);
    void Start(ByteView bytes, Sections& done);
    std::size_t Wanted() const;
    void Drop();

    SectionRules m_rules;
    ContinuityCheck m_continuity;
    std::vector<std::uint8_t> m_bytes;
    bool m_open = false;
    std::uint64_t m_damaged = 0;
};

} // namespace zviptv::sim
