// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Continuity.h"

namespace zviptv::sim {

// Bytes of a section of a table with versions before and after its data.
constexpr std::size_t SectionHeadSize = 8;
constexpr std::size_t SectionCrcSize = 4;

/// The rules for the sections of a table.
struct SectionRules
{
    std::size_t largest;  ///< bytes, including header and CRC
    bool numbersAreTight; ///< no section number is above the last section number in the section
};

/// A PAT, PMT or SDT.
constexpr SectionRules ServiceSections{1024, true};

/// An EIT, whose section numbers may have gaps because of its segments.
constexpr SectionRules EventSections{4096, false};

/// Whether this is one complete section of a table with versions: its lengths are consistent and its CRC is
/// correct.
bool IsValidSection(ByteView section, SectionRules const& rules = ServiceSections);

/// Extracts the sections from the packets of one PID. Holds at most one section.
class SectionAssembler
{
public:
    explicit SectionAssembler(SectionRules const& rules = ServiceSections) : m_rules(rules) {}

    /// The valid sections that this packet completes.
    std::vector<std::vector<std::uint8_t>> Push(TsPacket const& packet);

    /// Drops an unfinished section; the next packet may have any counter.
    void Reset();

    /// Complete but invalid sections so far.
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
