// SPDX-License-Identifier: MIT
#include "stream/Demux.h"

#include "mpegts/PesHeader.h"
#include "stream/TsReader.h"

namespace zviptv::sim {

namespace {

constexpr std::uint64_t MaxPacketsToSearch = 50'000; // for the tables: 9.4 MB

} // namespace

Demux::Demux(std::string const& path) : Demux(std::make_unique<TsReader>(path)) {}

Demux::Demux(std::unique_ptr<PacketSource> source)
    : m_source(std::move(source)),
      m_timeline(m_source->IsLive() ? Timeline::Order::AsIs : Timeline::Order::Timed)
{
    if (!IsLive()) {
        FindProgrammes();
    }
    if (!Programmes().empty()) {
        m_current = std::make_shared<Programme const>(Programmes().front());
    }
    FollowStreams();
}

/// Reads the tables first, so that no PES packet before them is lost. Names may arrive seconds after the
/// other tables, which then stay as they were at the start.
void Demux::FindProgrammes()
{
    TsBytes bytes;
    for (std::uint64_t count = 0; count < MaxPacketsToSearch && m_source->Read(bytes); ++count) {
        bool const isComplete = m_tables.IsComplete();
        if (isComplete && m_tables.HasNames()) {
            break;
        }
        auto const packet = ParseTsPacket(bytes);
        if (packet && (!isComplete || packet->pid == ProgrammeTable::SdtPid)) {
            m_tables.Push(*packet);
        }
    }
    m_tables.Restart();
    m_source->Rewind();
}

bool Demux::Select(std::uint16_t programme)
{
    Programme const* const found = m_tables.Find(programme);
    if (!found) {
        return false;
    }
    m_choice = programme;
    m_current = std::make_shared<Programme const>(*found);
    m_tracks.clear();
    FollowStreams();
    m_timeline.Clear();
    m_timeline.EndPass(m_packet);
    return true;
}

/// Whether the first known programme is the first of the stream. In a live stream, tables of other programmes
/// may arrive earlier, and the wait for a missing PMT is limited.
bool Demux::MayTakeFirst() const
{
    return !Programmes().empty() && (!IsLive() || m_tables.HasFirst() || m_packet >= MaxPacketsToSearch);
}

/// Detects that the programme has changed, appeared or vanished.
void Demux::FollowTables()
{
    Programme const* now = nullptr;
    if (m_choice) {
        now = m_tables.Find(*m_choice);
    } else if (m_current) {
        now = m_tables.Find(m_current->number);
    }
    if (!now && !m_choice && MayTakeFirst()) {
        now = &Programmes().front();
    }

    if (!now && !m_current) {
        return;
    }
    if (now && m_current && HaveSameContent(*now, *m_current)) {
        return;
    }
    m_current = now ? std::make_shared<Programme const>(*now) : nullptr;
    FollowStreams();
    m_timeline.AddProgramme(m_packet, m_current);
}

/// Keeps the tracks of unchanged PIDs, so that unfinished packets are not lost.
void Demux::FollowStreams()
{
    std::map<std::uint16_t, Track> tracks;
    if (m_current) {
        for (ElementaryStream const& stream : m_current->streams) {
            if (stream.kind == StreamKind::Sections || stream.pid == NullPid) {
                continue;
            }
            auto old = m_tracks.extract(stream.pid);
            if (!old.empty()) {
                tracks.insert(std::move(old));
            }
            tracks.try_emplace(stream.pid, stream.kind).first->second.kind = stream.kind;
        }
    }
    m_tracks = std::move(tracks);
}

void Demux::AddPes(std::uint16_t pid, StreamKind kind, PesAssembler::Pes bytes)
{
    PesPacket packet{pid, kind, {}, {}, std::move(bytes)};
    if (auto const header = ParsePesHeader(packet.bytes)) {
        packet.pts = header->pts;
        packet.dts = header->dts;
    }
    m_timeline.AddPes(m_packet, std::move(packet));
}

/// Adds an event with the time; for a live stream, that of this PCR.
void Demux::AddPcr(TsPacket const& packet)
{
    if (IsLive()) {
        m_timeline.AddPcr(m_packet, *packet.pcr, packet.discontinuity);
        m_timeline.AddClock(m_packet);
        return;
    }
    m_timeline.AddClock(m_packet);
    m_timeline.AddPcr(m_packet, *packet.pcr, packet.discontinuity);
}

void Demux::Handle(TsBytes const& bytes)
{
    auto const packet = ParseTsPacket(bytes);
    if (!packet) {
        ++m_malformed;
        return;
    }
    if (m_onPacket) {
        m_onPacket(*packet);
    }
    if (m_tables.Push(*packet) || (m_packet == MaxPacketsToSearch && IsLive())) {
        FollowTables();
    }
    if (packet->pcr && m_current && packet->pid == m_current->pcrPid) {
        AddPcr(*packet);
    }
    auto const track = m_tracks.find(packet->pid);
    if (track == m_tracks.end()) {
        return;
    }
    for (auto& pes : track->second.assembler.Push(*packet)) {
        AddPes(packet->pid, track->second.kind, std::move(pes));
    }
}

/// Handles the end of the stream: unfinished packets will not be completed.
void Demux::Finish()
{
    for (auto& [pid, track] : m_tracks) {
        if (auto last = track.assembler.Flush()) {
            AddPes(pid, track.kind, std::move(*last));
        }
    }
    m_timeline.AddClock(m_packet);
    m_timeline.EndPass(m_packet);
    m_ended = true;
}

std::optional<Event> Demux::Next()
{
    TsBytes bytes;
    auto event = m_timeline.Take();
    while (!event && !m_ended) {
        if (m_source->Read(bytes)) {
            Handle(bytes);
            m_timeline.Advance(m_packet);
            ++m_packet;
        } else if (m_source->HasEnded()) {
            Finish();
        } else {
            return std::nullopt;
        }
        event = m_timeline.Take();
    }
    if (event) {
        NoteFirstPts(*event);
    }
    return event;
}

void Demux::NoteFirstPts(Event const& event)
{
    if (event.type == EventType::Pes && event.pes.pts) {
        m_firstPts.try_emplace(event.pes.pid, *event.pes.pts);
    }
}

void Demux::Rewind()
{
    m_source->Rewind();
    m_timeline.Clear();
    if (!m_ended) {
        m_timeline.EndPass(m_packet);
    }
    for (auto& [pid, track] : m_tracks) {
        track.assembler.Restart();
    }
    m_tables.Restart();
    m_ended = false;
}

std::optional<std::uint64_t> Demux::FirstPts(std::uint16_t pid) const
{
    auto const found = m_firstPts.find(pid);
    return found == m_firstPts.end() ? std::nullopt : std::optional<std::uint64_t>(found->second);
}

PesCounters const* Demux::Counters(std::uint16_t pid) const
{
    auto const found = m_tracks.find(pid);
    return found == m_tracks.end() ? nullptr : &found->second.assembler.Counters();
}

} // namespace zviptv::sim
