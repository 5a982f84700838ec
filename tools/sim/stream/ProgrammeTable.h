#pragma once

#include "stream/DvbpsiTables.h"
#include "stream/SectionAssembler.h"

namespace zviptv::sim {

/// Follows PAT, PMTs and SDT of a transport stream. Not thread-safe.
class ProgrammeTable
{
public:
    /// Programmes of the PAT past this number are not followed.
    static constexpr std::size_t MaxProgrammes = 256;

    /// True when the packet changed what Programmes() tells.
    bool Push(TsPacket const& packet);

    /// The next packets are from elsewhere in the stream: drops unfinished sections, keeps what is known.
    void Restart();

    /// The programmes whose PMT has arrived, in the order of the PAT.
    std::vector<Programme> const& Programmes() const { return m_programmes; }

    /// Nothing when the PMT of this programme has not arrived.
    Programme const* Find(std::uint16_t number) const;

    /// The PAT has arrived, and every PMT that it names.
    bool IsComplete() const;

private:
    struct Pmt
    {
        explicit Pmt(std::uint16_t number) : decoder(number) {}
        PmtDecoder decoder;
        std::optional<Programme> programme;
    };

    bool PushSection(std::uint16_t pid, ByteView section);
    bool PushPat(ByteView section);
    bool PushPmt(std::uint16_t pid, ByteView section);
    bool PushSdt(ByteView section);
    void FollowPmtPids();
    void Collect();

    PatDecoder m_patDecoder;
    SdtDecoder m_sdtDecoder;
    bool m_havePat = false;
    std::vector<PatEntry> m_entries;
    std::map<std::uint16_t, std::unique_ptr<Pmt>> m_pmts; ///< by programme number
    std::map<std::uint16_t, ServiceName> m_names;
    std::map<std::uint16_t, SectionAssembler> m_assemblers{{0x0000, SectionAssembler()},
                                                           {0x0011, SectionAssembler()}};
    std::vector<Programme> m_programmes;
};

} // namespace zviptv::sim
