// SPDX-License-Identifier: MIT
#include "TransportStream.h"

#include <zviptv/IPTVTypes.h>

#include <algorithm>

namespace zviptv::ctl {

namespace {

using Bytes = TransportStream::Bytes;

constexpr std::size_t PacketSize = 188;
constexpr std::size_t HeaderSize = 4;
constexpr std::size_t PartSize = PacketSize - HeaderSize;
constexpr std::uint16_t Programme = 1;

// The clock counts 1/90000 s in 33 bits.
constexpr std::uint64_t ClockMask = (std::uint64_t{1} << 33U) - 1;
constexpr std::uint64_t Second = 90000;
constexpr std::uint64_t ClockInterval = Second / 20;
constexpr std::uint64_t TableInterval = Second / 10;

std::uint8_t Low(std::uint64_t number)
{
    return static_cast<std::uint8_t>(number & 0xFFU);
}

/// Two bytes, of which the highest bits are reserved: ones.
void AddMarked(Bytes& bytes, unsigned marks, std::size_t number)
{
    bytes.push_back(Low(marks << 4U | number >> 8U));
    bytes.push_back(Low(number));
}

std::uint32_t Crc32(Bytes const& bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::uint8_t const byte : bytes) {
        crc ^= std::uint32_t{byte} << 24U;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x80000000U) != 0 ? crc << 1U ^ 0x04C11DB7U : crc << 1U;
        }
    }
    return crc;
}

/// A whole section, without the checksum.
Bytes Section(std::uint8_t tableId, std::uint8_t version, Bytes const& body)
{
    constexpr std::size_t rest = 5 + 4; // what follows the length, and the checksum
    Bytes section = {tableId};
    AddMarked(section, 0xB, body.size() + rest);
    section.insert(section.end(), {0, Programme, Low(0xC1U | unsigned{version} << 1U), 0, 0});
    section.insert(section.end(), body.begin(), body.end());
    return section;
}

Bytes ProgrammeMap(std::map<std::uint16_t, StreamCoding> const& streams)
{
    Bytes body;
    AddMarked(body, 0xE, TransportStream::PcrPid);
    AddMarked(body, 0xF, 0);
    for (auto const& [pid, coding] : streams) {
        body.push_back(coding.streamType);
        AddMarked(body, 0xE, pid);
        AddMarked(body, 0xF, coding.descriptors.size());
        body.insert(body.end(), coding.descriptors.begin(), coding.descriptors.end());
    }
    return body;
}

void AddHeader(std::uint16_t pid, bool isStart, unsigned control, unsigned counter, Bytes& out)
{
    out.insert(out.end(),
               {0x47, Low((isStart ? 0x40U : 0U) | pid >> 8U), Low(pid), Low(control << 4U | counter)});
}

bool IsClocked(std::int32_t type)
{
    return type == ZV_PES_VIDEO || type == ZV_PES_AUDIO;
}

bool IsOccupied(std::uint16_t pid)
{
    return pid == 0 || pid >= TransportStream::PmtPid;
}

} // namespace

Bytes TransportStream::Pack(std::uint16_t pid, std::int32_t type, PesHeader const& header,
                            Bytes const& packet)
{
    Bytes out;
    if (!Admit(pid, type, header, packet)) {
        return out;
    }
    std::optional<std::uint64_t> clock;
    if (header.dts && (IsClocked(type) || !m_hasClockedStream)) {
        clock = (*header.dts - Second) & ClockMask;
    }
    bool const isLate = m_tablesAt && m_reached && ((*m_reached - *m_tablesAt) & ClockMask) >= TableInterval;
    if (!m_tablesAt || isLate) {
        AddTables(out);
    }
    AddUnit(pid, packet, out, clock);
    return out;
}

bool TransportStream::Admit(std::uint16_t pid, std::int32_t type, PesHeader const& header,
                            Bytes const& packet)
{
    if (m_streams.count(pid) != 0) {
        return true;
    }
    auto const coding = IsOccupied(pid) ? std::nullopt : CodingOf(type, header, packet);
    if (!coding) {
        m_leftOut.insert(pid);
        return false;
    }
    m_leftOut.erase(pid);
    m_streams[pid] = *coding;
    m_hasClockedStream = m_hasClockedStream || IsClocked(type);
    m_version = (m_version + 1U) & 0x1FU;
    m_tablesAt.reset();
    return true;
}

void TransportStream::AddTables(Bytes& out)
{
    Bytes association = {0, Programme};
    AddMarked(association, 0xE | PmtPid >> 12U, PmtPid & 0xFFFU);
    AddSection(0, Section(0x00, 0, association), out);
    AddSection(PmtPid, Section(0x02, m_version, ProgrammeMap(m_streams)), out);
    m_tablesAt = m_reached.value_or(0);
}

void TransportStream::AddSection(std::uint16_t pid, Bytes section, Bytes& out)
{
    std::uint32_t const crc = Crc32(section);
    section.insert(section.end(), {Low(crc >> 24U), Low(crc >> 16U), Low(crc >> 8U), Low(crc)});
    section.insert(section.begin(), 0); // the section begins at once
    AddUnit(pid, section, out);
}

/// The clock runs on to `clock` while the unit is written. It waits for a stream that lags up to 1 s behind
/// another one; anything else is a jump.
void TransportStream::AddUnit(std::uint16_t pid, Bytes const& unit, Bytes& out,
                              std::optional<std::uint64_t> clock)
{
    std::uint64_t const former = m_reached.value_or(0);
    std::uint64_t const step = clock ? (*clock - former) & ClockMask : 0;
    bool const isLagging = step > ClockMask - Second;
    bool const isJump = clock && (!m_reached || (step > Second && !isLagging));
    if (isJump) {
        AddClock(*clock, m_reached.has_value(), out);
    }
    if (isJump || (clock && !isLagging)) {
        m_reached = clock;
    }
    for (std::size_t done = 0; done < unit.size();) {
        done += AddPart(pid, unit, done, out);
        std::uint64_t const now = (former + step * done / unit.size()) & ClockMask;
        if (clock && !isJump && !isLagging && ((now - m_clock) & ClockMask) >= ClockInterval) {
            AddClock(now, false, out);
        }
    }
}

/// One packet with as much of the unit as fits. What is left of its space is an adaptation field.
std::size_t TransportStream::AddPart(std::uint16_t pid, Bytes const& unit, std::size_t begin, Bytes& out)
{
    std::size_t const size = std::min(PartSize, unit.size() - begin);
    std::size_t const space = PartSize - size;
    std::uint8_t& counter = m_counters[pid];
    AddHeader(pid, begin == 0, space == 0 ? 1 : 3, counter, out);
    counter = (counter + 1U) & 0xFU;
    if (space > 0) {
        out.push_back(Low(space - 1));
        out.insert(out.end(), std::min<std::size_t>(space - 1, 1), 0); // no flags
        out.insert(out.end(), space > 2 ? space - 2 : 0, 0xFF);
    }
    auto const first = unit.begin() + static_cast<std::ptrdiff_t>(begin);
    out.insert(out.end(), first, first + static_cast<std::ptrdiff_t>(size));
    return size;
}

/// A packet without a payload, which the counter does not count.
void TransportStream::AddClock(std::uint64_t clock, bool isDiscontinuous, Bytes& out)
{
    AddHeader(PcrPid, false, 2, 0, out);
    out.insert(out.end(),
               {Low(PartSize - 1), Low(isDiscontinuous ? 0x90U : 0x10U), Low(clock >> 25U), Low(clock >> 17U),
                Low(clock >> 9U), Low(clock >> 1U), Low((clock & 1U) << 7U | 0x7EU), 0});
    out.insert(out.end(), PartSize - 8, 0xFF);
    m_clock = clock;
}

} // namespace zviptv::ctl
