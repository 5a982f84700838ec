// SPDX-License-Identifier: MIT
#include "stream/ProgrammeTable.h"

#include <set>

namespace zviptv::sim {

namespace {

constexpr std::uint16_t PatPid = 0x0000;
constexpr std::uint8_t PatTable = 0x00;
constexpr std::uint8_t PmtTable = 0x02;
constexpr std::uint8_t SdtActual = 0x42;

/// The programmes of the PAT: at most MaxProgrammes, each number once.
std::vector<PatEntry> Trim(std::vector<PatEntry> const& entries)
{
    std::vector<PatEntry> trimmed;
    std::set<std::uint16_t> numbers;
    for (PatEntry const& entry : entries) {
        if (trimmed.size() < ProgrammeTable::MaxProgrammes && numbers.insert(entry.programme).second) {
            trimmed.push_back(entry);
        }
    }
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
    if (assembler == m_assemblers.end()) {
        return false;
    }
    bool changed = false;
    std::uint64_t const damaged = assembler->second.Damaged();
    auto sections = assembler->second.Push(packet);
    m_damaged += assembler->second.Damaged() - damaged;
    for (auto& section : sections) {
        if (IsCurrent(section)) {
            changed = PushSection(packet.pid, std::move(section)) || changed;
        }
    }
    if (changed) {
        Collect();
    }
    return changed;
}

void ProgrammeTable::Restart()
{
    for (auto& [pid, assembler] : m_assemblers) {
        assembler.Reset();
    }
}

Programme const* ProgrammeTable::Find(std::uint16_t number) const
{
    auto const found = std::find_if(m_programmes.begin(), m_programmes.end(),
                                    [=](Programme const& programme) { return programme.number == number; });
    return found == m_programmes.end() ? nullptr : &*found;
}

bool ProgrammeTable::IsComplete() const
{
    return m_hasPat && m_programmes.size() == m_entries.size();
}

bool ProgrammeTable::HasFirst() const
{
    return !m_programmes.empty() && m_programmes.front().number == m_entries.front().programme;
}

bool ProgrammeTable::PushSection(std::uint16_t pid, std::vector<std::uint8_t> section)
{
    std::uint8_t const table = section[0];
    if (pid == PatPid && table == PatTable) {
        return PushPat(std::move(section));
    }
    if (pid == SdtPid) {
        return table == SdtActual && PushSdt(std::move(section));
    }
    return table == PmtTable && PushPmt(pid, std::move(section));
}

bool ProgrammeTable::PushPat(std::vector<std::uint8_t> section)
{
    auto const* const table = HasWholePatEntries(section) ? m_pat.Push(std::move(section)) : nullptr;
    if (table == nullptr) {
        return false;
    }
    m_hasPat = true;
    m_entries = Trim(ParsePat(*table));
    FollowPmtPids();
    return true;
}

/// Drops the programmes that have vanished or moved, and follows the PIDs of the others.
void ProgrammeTable::FollowPmtPids()
{
    std::map<std::uint16_t, Pmt> pmts;
    std::set<std::uint16_t> pids{PatPid, SdtPid};
    for (PatEntry const& entry : m_entries) {
        pids.insert(entry.pid);
        Pmt& old = m_pmts[entry.programme];
        bool const moved = old.programme && old.programme->pmtPid != entry.pid;
        pmts[entry.programme] = moved ? Pmt() : std::move(old);
    }
    m_pmts = std::move(pmts);

    for (auto it = m_assemblers.begin(); it != m_assemblers.end();) {
        it = pids.count(it->first) ? std::next(it) : m_assemblers.erase(it);
    }
    for (std::uint16_t const pid : pids) {
        m_assemblers.try_emplace(pid);
    }
}

bool ProgrammeTable::PushPmt(std::uint16_t pid, std::vector<std::uint8_t> section)
{
    std::uint16_t const number = ByteView(section).U16(3);
    bool const expected = std::any_of(m_entries.begin(), m_entries.end(), [=](PatEntry const& entry) {
        return entry.programme == number && entry.pid == pid;
    });
    if (!expected || !HasWholePmtHead(section)) {
        return false;
    }
    Pmt& pmt = m_pmts[number];
    auto const* const table = pmt.table.Push(std::move(section));
    if (table == nullptr) {
        return false;
    }
    pmt.programme = ParsePmt(*table);
    pmt.programme->pmtPid = pid;
    return true;
}

bool ProgrammeTable::PushSdt(std::vector<std::uint8_t> section)
{
    auto const* const table = HasWholeSdtHead(section) ? m_sdt.Push(std::move(section)) : nullptr;
    if (table == nullptr) {
        return false;
    }
    m_hasSdt = true;
    m_names = ParseSdt(*table);
    return true;
}

void ProgrammeTable::Collect()
{
    m_programmes.clear();
    for (PatEntry const& entry : m_entries) {
        auto const& programme = m_pmts.at(entry.programme).programme;
        if (!programme) {
            continue;
        }
        m_programmes.push_back(*programme);
        auto const name = m_names.find(entry.programme);
        if (name == m_names.end()) {
            continue;
        }
        m_programmes.back().name = name->second.name;
        m_programmes.back().provider = name->second.provider;
    }
}

} // namespace zviptv::sim
