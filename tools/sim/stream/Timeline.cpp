// SPDX-License-Identifier: MIT
#include "stream/Timeline.h"

namespace zviptv::sim {

namespace {

/// The approximate memory of an event.
std::size_t CostOf(Event const& event)
{
    constexpr std::size_t EventCost = 256;
    constexpr std::size_t ProgrammeCost = 32 * 1024;
    return EventCost + event.pes.bytes.size() +
           (event.type == EventType::ProgrammeChanged ? ProgrammeCost : 0);
}

/// The decoding time of a PES packet in units of the PCR.
std::optional<std::uint64_t> StampOf(PesPacket const& pes)
{
    auto const& stamp = pes.dts ? pes.dts : pes.pts;
    return stamp ? std::optional<std::uint64_t>(*stamp * 300) : std::nullopt;
}

} // namespace

void Timeline::AddSample(std::uint64_t packet, std::uint64_t value, bool jump)
{
    m_lastSample = std::max(m_lastSample, packet);
    if (m_clock.Sample(packet, value, jump)) {
        ReleaseUpTo(packet);
    }
}

void Timeline::AddPcr(std::uint64_t packet, std::uint64_t pcr, bool jump)
{
    if (m_order == Order::AsIs) {
        m_latestPcr = pcr % PcrModulus;
        return;
    }
    bool const takesOver = m_reference.has_value();
    m_reference.reset();
    AddSample(packet, pcr, jump || takesOver);
}

void Timeline::Hold(std::uint64_t packet, Event event)
{
    if (m_order == Order::AsIs) {
        event.at.stc = m_latestPcr.value_or(0);
        m_ready.push_back(std::move(event));
        return;
    }
    m_pendingBytes += CostOf(event);
    m_pending.push_back({packet, std::move(event)});
}

void Timeline::AddProgramme(std::uint64_t packet, std::shared_ptr<Programme const> programme)
{
    Hold(packet, {EventType::ProgrammeChanged, {}, {}, std::move(programme)});
}

void Timeline::AddClock(std::uint64_t packet)
{
    Hold(packet, {EventType::Clock, {}, {}, nullptr});
}

void Timeline::AddPes(std::uint64_t packet, PesPacket pes)
{
    auto const stamp = pes.pid == m_reference ? StampOf(pes) : std::nullopt;
    Hold(packet, {EventType::Pes, {}, std::move(pes), nullptr});
    if (stamp) {
        AddSample(packet, *stamp, false);
    }
}

void Timeline::ReleaseUpTo(std::uint64_t packet)
{
    while (!m_pending.empty() && m_pending.front().packet <= packet) {
        Pending& next = m_pending.front();
        m_pendingBytes -= CostOf(next.event);
        next.event.at = m_clock.At(next.packet);
        next.event.at.time = m_latest = std::max(next.event.at.time, m_latest);
        m_ready.push_back(std::move(next.event));
        m_pending.pop_front();
    }
}

/// Selects the PID whose time stamps replace the PCR, and applies the ones received so far.
void Timeline::UseTimeStamps()
{
    PesPacket const* chosen = nullptr;
    for (Pending const& pending : m_pending) {
        PesPacket const& pes = pending.event.pes;
        if (StampOf(pes) && (!chosen || (pes.kind == StreamKind::Video && chosen->kind != pes.kind))) {
            chosen = &pes;
        }
    }
    if (!chosen) {
        return;
    }
    bool const isNew = m_reference != chosen->pid;
    m_reference = chosen->pid;

    std::vector<std::pair<std::uint64_t, std::uint64_t>> samples;
    for (Pending const& pending : m_pending) {
        if (auto const stamp = StampOf(pending.event.pes); stamp && pending.event.pes.pid == m_reference) {
            samples.emplace_back(pending.packet, *stamp);
        }
    }
    bool jump = isNew;
    for (auto const& [packet, stamp] : samples) {
        AddSample(packet, stamp, jump);
        jump = false;
    }
}

void Timeline::Advance(std::uint64_t packet)
{
    if (m_pendingBytes <= MaxPendingBytes && packet - m_lastSample <= MaxPacketsWithoutClock) {
        return;
    }
    if (m_pending.empty()) {
        return;
    }
    UseTimeStamps();
    if (m_pendingBytes > MaxPendingBytes || packet - m_lastSample > MaxPacketsWithoutClock) {
        m_clock.FinishLine();
        ReleaseUpTo(packet);
    }
}

void Timeline::EndPass(std::uint64_t packet)
{
    if (!m_clock.IsMeasured()) {
        UseTimeStamps();
    }
    m_clock.FinishLine();
    ReleaseUpTo(packet);
    m_clock.Restart(packet);
    m_lastSample = packet;
}

void Timeline::Clear()
{
    m_pending.clear();
    m_pendingBytes = 0;
    m_ready.clear();
    m_latestPcr.reset();
}

std::optional<Event> Timeline::Take()
{
    if (m_ready.empty()) {
        return std::nullopt;
    }
    Event event = std::move(m_ready.front());
    m_ready.pop_front();
    return event;
}

} // namespace zviptv::sim
