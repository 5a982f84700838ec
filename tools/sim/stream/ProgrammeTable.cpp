#include "stream/ProgrammeTable.h"

#include <set>

namespace zviptv::sim {

namespace {

constexpr std::uint16_t PatPid = 0x0000;
constexpr std::uint16_t SdtPid = 0x0011;
constexpr std::uint8_t PatTable = 0x00;
constexpr std::uint8_t PmtTable = 0x02;

/// At most MaxProgrammes, each number once.
std::vector<PatEntry> Trim(std::vector<PatEntry> const& entries)
{
    std::vector<PatEntry> trimmed;
    std::set<std::uint16_t> numbers;
    for (PatEntry const& entry : entries)
        if (trimmed.size() < ProgrammeTable::MaxProgrammes && numbers.insert(entry.programme).second)
            trimmed.push_back(entry);
    return trimmed;
}

bool IsCurrent(ByteView section)
{
    return (section[5] & 0x01) != 0;
}

} // namespace

bool ProgrammeTable::Push(TsPacket const& packet)
{
    auto const assembler = m_assemblers.find(packet.pid);
    if (assembler == m_assemblers.end())
        return false;
    bool changed = false;
    for (auto const& section : assembler->second.Push(packet))
        if (IsCurrent(section))
            changed = PushSection(packet.pid, section) || changed;
    if (changed)
        Collect();
    return changed;
}

void ProgrammeTable::Restart()
{
    for (auto& [pid, assembler] : m_assemblers)
        assembler.Reset();
}

Programme const* ProgrammeTable::Find(std::uint16_t number) const
{
    auto const found = std::find_if(m_programmes.begin(), m_programmes.end(),
                                    [=](Programme const& programme) { return programme.number == number; });
    return found == m_programmes.end() ? nullptr : &*found;
}

bool ProgrammeTable::IsComplete() const
{
    return m_havePat && m_programmes.size() == m_entries.size();
}

bool ProgrammeTable::PushSection(std::uint16_t pid, ByteView section)
{
    if (pid == PatPid && section[0] == PatTable)
        return PushPat(section);
    if (pid == SdtPid)
        return PushSdt(section);
    return section[0] == PmtTable && PushPmt(pid, section);
}

bool ProgrammeTable::PushPat(ByteView section)
{
    auto const entries = m_patDecoder.Push(section);
    if (!entries)
        return false;
    m_havePat = true;
    m_entries = Trim(*entries);
    FollowPmtPids();
    return true;
}

/// Drops the programmes that are gone or have moved, and listens to the PIDs of the others.
void ProgrammeTable::FollowPmtPids()
{
    std::map<std::uint16_t, std::unique_ptr<Pmt>> pmts;
    std::set<std::uint16_t> pids{PatPid, SdtPid};
    for (PatEntry const& entry : m_entries) {
        pids.insert(entry.pid);
        auto& old = m_pmts[entry.programme];
        bool const moved = old && old->programme && old->programme->pmtPid != entry.pid;
        pmts[entry.programme] = old && !moved ? std::move(old) : std::make_unique<Pmt>(entry.programme);
    }
    m_pmts = std::move(pmts);

    for (auto it = m_assemblers.begin(); it != m_assemblers.end();)
        it = pids.count(it->first) ? std::next(it) : m_assemblers.erase(it);
    for (std::uint16_t const pid : pids)
        m_assemblers.try_emplace(pid);
}

bool ProgrammeTable::PushPmt(std::uint16_t pid, ByteView section)
{
    std::uint16_t const number = section.U16(3);
    bool const expected = std::any_of(m_entries.begin(), m_entries.end(), [=](PatEntry const& entry) {
        return entry.programme == number && entry.pid == pid;
    });
    if (!expected)
        return false;
    Pmt& pmt = *m_pmts.at(number);
    auto programme = pmt.decoder.Push(section);
    if (!programme)
        return false;
    programme->pmtPid = pid;
    pmt.programme = std::move(programme);
    return true;
}

bool ProgrammeTable::PushSdt(ByteView section)
{
    auto names = m_sdtDecoder.Push(section);
    if (!names)
        return false;
    m_names = std::move(*names);
    return true;
}

void ProgrammeTable::Collect()
{
    m_programmes.clear();
    for (PatEntry const& entry : m_entries) {
        auto const& programme = m_pmts.at(entry.programme)->programme;
        if (!programme)
            continue;
        m_programmes.push_back(*programme);
        auto const name = m_names.find(entry.programme);
        if (name == m_names.end())
            continue;
        m_programmes.back().name = name->second.name;
        m_programmes.back().provider = name->second.provider;
    }
}

} // namespace zviptv::sim
