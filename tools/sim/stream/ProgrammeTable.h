// SPDX-License-Identifier: MIT
#pragma once

#include "stream/SectionAssembler.h"
#include "stream/ServiceTables.h"

namespace zviptv::sim {

/// Follows PAT, PMTs and SDT of a transport stream. Not thread-safe.
class ProgrammeTable
{
public:
    /// The largest number of programmes that are followed.
    static constexpr std::size_t MaxProgrammes = 256;

    /// The PID of the SDT.
    static constexpr std::uint16_t SdtPid = 0x0011;

    /// Reads a packet; returns true if it changed the result of Programmes().
    bool Push(TsPacket const& packet);

    /// Call it before packets from another place in the stream: drops unfinished sections, but keeps complete
    /// data.
    void Restart();

    /// The programmes whose PMT has arrived, in the order of the PAT.
    std::vector<Programme> const& Programmes() const { return m_programmes; }

    /// The programme; null if its PMT has not arrived.
    Programme const* Find(std::uint16_t number) const;

    /// Whether the PAT and all its PMTs have arrived.
    bool IsComplete() const;

    /// Whether the PAT and the first of its PMTs have arrived.
    bool HasFirst() const;

    /// Whether the SDT has arrived.
    bool HasNames() const { return m_hasSdt; }

    /// Sections of these tables with a wrong checksum or length so far.
    std::uint64_t DamagedSections() const { return m_damaged; }

private:
    struct Pmt
    {
        TableCollector table;
        std::optional<Programme> programme;
    };

    bool PushSection(std::uint16_t pid, std::vector<std::uint8_t> section);
    bool PushPat(std::vector<std::uint8_t> section);
    bool PushPmt(std::uint16_t pid, std::vector<std::uint8_t> section);
    bool PushSdt(std::vector<std::uint8_t> section);
    void FollowPmtPids();
    void Collect();

    TableCollector m_pat;
    TableCollector m_sdt;
    bool m_hasPat = false;
    bool m_hasSdt = false;
    std::vector<PatEntry> m_entries;
    std::map<std::uint16_t, Pmt> m_pmts; ///< by programme number
    std::map<std::uint16_t, ServiceName> m_names;
    std::map<std::uint16_t, SectionAssembler> m_assemblers{{0x0000, SectionAssembler()},
                                                           {SdtPid, SectionAssembler()}};
    std::vector<Programme> m_programmes;
    std::uint64_t m_damaged = 0;
};

} // namespace zviptv::sim
