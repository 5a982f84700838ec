// SPDX-License-Identifier: MIT
#pragma once

#include "stream/PacketSource.h"
#include "stream/PesAssembler.h"
#include "stream/ProgrammeTable.h"
#include "stream/Timeline.h"

#include <functional>

namespace zviptv::sim {

/// Plays one programme of a transport stream: returns its PES packets, each with its time, and its clock.
/// Everything happens inside Next(), which reads ahead as far as necessary (normally one step of the PCR).
/// Memory is bounded for any stream. Not thread-safe.
class Demux
{
public:
    using PacketListener = std::function<void(TsPacket const&)>;

    /// Opens a file and reads its tables. @throws StreamError like TsReader
    explicit Demux(std::string const& path);
    explicit Demux(std::unique_ptr<PacketSource> source);

    /// All programmes known so far, in the order of the PAT.
    std::vector<Programme> const& Programmes() const { return m_tables.Programmes(); }

    /// The programme that is played: the selected one, otherwise the first. Null until it is known. It is as
    /// new as the data that Next() has read, and therefore slightly ahead of the events.
    std::shared_ptr<Programme const> const& Current() const { return m_current; }

    /// Selects a programme and drops pending events. Returns false and changes nothing if the programme is
    /// unknown.
    bool Select(std::uint16_t programme);

    /// Plays this programme when it is known, and no other. Call it before Next().
    void Await(std::uint16_t programme) { m_choice = programme; }

    /// Whether the PAT and all its PMTs have arrived.
    bool HasAllTables() const { return m_tables.IsComplete(); }

    /// Called inside Next() for every valid packet, before it is handled.
    void SetPacketListener(PacketListener listener) { m_onPacket = std::move(listener); }

    /// The next event in stream order; nullopt at the end of the stream and, while HasEnded() is false, if
    /// nothing has arrived yet. @throws StreamError
    std::optional<Event> Next();

    /// Whether Next() has returned everything up to the end of the stream.
    bool HasEnded() const { return m_ended; }

    /// Whether the sender sets the pace. Then programmes become known when their tables arrive, and events
    /// have no time: they are returned at once, with the STC of the latest PCR.
    bool IsLive() const { return m_source->IsLive(); }

    /// Plays from the start again and drops pending events. Time continues. @throws StreamError
    void Rewind();

    /// PTS (90 kHz) of the first PES packet of this PID with one that Next() returned, since the start or
    /// ForgetFirstPts().
    std::optional<std::uint64_t> FirstPts(std::uint16_t pid) const;
    void ForgetFirstPts() { m_firstPts.clear(); }

    /// Whether the stream has a clock. Without a clock, the STC of events is meaningless, and time passes at
    /// the pace of a 5 Mbit/s stream.
    bool HasClock() const { return m_timeline.HasClock(); }

    /// Counters of the packets of this PID; null if it does not belong to the programme.
    PesCounters const* Counters(std::uint16_t pid) const;

    /// Packets read so far, without those of the search for the tables.
    std::uint64_t Packets() const { return m_packet; }

    /// Sections of the tables with a wrong checksum or length so far, including those of the search for the
    /// tables.
    std::uint64_t DamagedSections() const { return m_tables.DamagedSections(); }

    /// Packets with a contradictory header.
    std::uint64_t MalformedPackets() const { return m_malformed; }

private:
    struct Track
    {
        explicit Track(StreamKind streamKind) : kind(streamKind) {}
        StreamKind kind;
        PesAssembler assembler;
    };

    void FindProgrammes();
    bool MayTakeFirst() const;
    void AddPcr(TsPacket const& packet);
    void Handle(TsBytes const& bytes);
    void FollowTables();
    void FollowStreams();
    void Finish();
    void AddPes(std::uint16_t pid, StreamKind kind, PesAssembler::Pes bytes);
    void NoteFirstPts(Event const& event);

    std::unique_ptr<PacketSource> m_source;
    PacketListener m_onPacket;
    ProgrammeTable m_tables;
    std::optional<std::uint16_t> m_choice;
    std::shared_ptr<Programme const> m_current;
    std::map<std::uint16_t, Track> m_tracks; ///< by PID
    Timeline m_timeline;
    std::map<std::uint16_t, std::uint64_t> m_firstPts;
    std::uint64_t m_packet = 0;
    std::uint64_t m_malformed = 0;
    bool m_ended = false;
};

} // namespace zviptv::sim
