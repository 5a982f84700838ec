// SPDX-License-Identifier: MIT
#include "TransportStream.h"

#include <zviptv/IPTVTypes.h>

namespace zviptv::ctl {

namespace {

using Bytes = TransportStream::Bytes;

// The clock has units of 1/90000 s and 33 bits.
constexpr std::uint64_t ClockMask = (std::uint64_t{1} << 33U) - 1;
constexpr std::uint64_t PtsSecond = 90000;
constexpr std::uint64_t ClockInterval = PtsSecond / 20;
constexpr std::uint64_t TableInterval = PtsSecond / 10;

bool IsClocked(std::int32_t type)
{
    return type == ZV_PES_VIDEO || type == ZV_PES_AUDIO;
}

bool IsOccupied(std::uint16_t pid)
{
    return pid == 0 || pid >= TsWriter::PmtPid;
}

} // namespace

Bytes TransportStream::Pack(std::uint16_t pid, std::int32_t type, PesHeader const& header,
                            Bytes const& packet)
{
    Bytes out;
    if (!AcceptStream(pid, type, header)) {
        return out;
    }
    std::optional<std::uint64_t> clock;
    auto const time = header.DecodingTime();
    if (time && (IsClocked(type) || !m_hasClockedStream)) {
        clock = (*time - PtsSecond) & ClockMask;
    }
    bool const isLate = m_tablesAt && m_reached && ((*m_reached - *m_tablesAt) & ClockMask) >= TableInterval;
    if (!m_tablesAt || isLate) {
        AddTables(out);
    }
    AddUnit(pid, packet, out, clock);
    return out;
}

bool TransportStream::AcceptStream(std::uint16_t pid, std::int32_t type, PesHeader const& header)
{
    if (m_streams.count(pid) != 0) {
        return true;
    }
    auto const coding = IsOccupied(pid) ? std::nullopt : CodingOf(type, header);
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
    std::vector<TsWriter::Stream> streams;
    for (auto const& [pid, coding] : m_streams) {
        streams.push_back({pid, coding.streamType, coding.descriptors});
    }
    m_writer.AddTables(out, streams, PcrPid, m_version);
    m_tablesAt = m_reached.value_or(0);
}

/// Advances the clock to `clock` while the unit is written. The clock waits for a stream that is up to 1 s
/// later than another one; any larger difference is a jump.
void TransportStream::AddUnit(std::uint16_t pid, Bytes const& unit, Bytes& out,
                              std::optional<std::uint64_t> clock)
{
    std::uint64_t const former = m_reached.value_or(0);
    std::uint64_t const step = clock ? (*clock - former) & ClockMask : 0;
    bool const isLagging = step > ClockMask - PtsSecond;
    bool const isJump = clock && (!m_reached || (step > PtsSecond && !isLagging));
    if (isJump) {
        AddClock(*clock, m_reached.has_value(), out);
    }
    if (isJump || (clock && !isLagging)) {
        m_reached = clock;
    }
    for (std::size_t done = 0; done < unit.size();) {
        done += m_writer.AddPart(out, pid, unit, done);
        std::uint64_t const now = (former + step * done / unit.size()) & ClockMask;
        if (clock && !isJump && !isLagging && ((now - m_clock) & ClockMask) >= ClockInterval) {
            AddClock(now, false, out);
        }
    }
}

void TransportStream::AddClock(std::uint64_t clock, bool isDiscontinuous, Bytes& out)
{
    TsWriter::AddClock(out, PcrPid, clock, isDiscontinuous);
    m_clock = clock;
}

} // namespace zviptv::ctl
