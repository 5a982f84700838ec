// SPDX-License-Identifier: MIT
#pragma once

#include "guide/EitEvent.h"
#include "stream/SectionAssembler.h"

#include <map>

namespace zviptv::sim {

/// The events of the actual transport stream: present and following (table 0x4E), schedule (0x50 to 0x5F).
class EitTable
{
public:
    /// The largest number of sections that are kept; more are ignored.
    static constexpr std::size_t MaxSections = 16384;

    /// Adds a valid section (see IsValidSection). Returns true if it contains new data.
    bool Add(ByteView section);

    /// The present event of a service; null if the stream does not contain it.
    EitEvent const* Present(std::uint16_t serviceId) const { return PresentOrFollowing(serviceId, 0); }
    EitEvent const* Following(std::uint16_t serviceId) const { return PresentOrFollowing(serviceId, 1); }

    /// Every event once, by service and event id; present and following have priority over the schedule.
    std::vector<EitEvent> Events() const;

private:
    struct Section
    {
        std::uint32_t crc = 0;
        std::vector<EitEvent> events;
    };

    struct Subtable
    {
        std::uint8_t version = 0;
        std::map<std::uint8_t, Section> sections; ///< by number

        Section const* Find(std::uint8_t number) const;
    };

    using SubtableId = std::pair<std::uint16_t, std::uint8_t>; ///< service and table id

    void ForgetOther(SubtableId id, std::uint8_t version);
    EitEvent const* PresentOrFollowing(std::uint16_t serviceId, std::uint8_t number) const;

    std::map<SubtableId, Subtable> m_subtables;
    std::size_t m_sections = 0;
};

/// Reads the event information of a DVB transport stream. Not for ARIB streams, which have Japanese times and
/// a different coding of texts.
class EitReader
{
public:
    static constexpr std::uint16_t Pid = 0x12;

    /// Reads a packet; packets of other PIDs are ignored. Returns true if it contains new data.
    bool Push(TsPacket const& packet);

    EitTable const& Table() const { return m_table; }

private:
    SectionAssembler m_sections{EventSections};
    EitTable m_table;
};

/// The complete events of one valid section.
std::vector<EitEvent> ParseEitEvents(ByteView section);

} // namespace zviptv::sim
