// SPDX-License-Identifier: MIT
#pragma once

#include "stream/PacketSource.h"
#include "stream/PesAssembler.h"
#include "stream/ProgrammeTable.h"
#include "stream/Timeline.h"

#include <functional>

namespace zviptv::sim {

/// Plays one programme of a transport stream: hands out its PES packets, each with its time, and its clock.
///
/// Pull style: nothing happens but inside Next(), which reads ahead as far as it has to (a step of the PCR,
/// as a rule). Memory is bounded whatever the stream holds. Not thread-safe.
class Demux
{
public:
    using PacketListener = std::function<void(TsPacket const&)>;

    /// Opens a file and reads its tables. @throws StreamError as TsReader does
    explicit Demux(std::string const& path);
    explicit Demux(std::unique_ptr<PacketSource> source);

    /// All programmes known so far, in the order of the PAT.
    std::vector<Programme> const& Programmes() const { return m_tables.Programmes(); }

    /// The programme being played: the chosen one, else the first. Null as long as it is not known. It is as
    /// new as what Next() has read, so a little ahead of the events.
    std::shared_ptr<Programme const> const& Current() const { return m_current; }

    /// Chooses a programme; false if it is not known, then nothing changes. Events not taken yet are dropped.
    bool Select(std::uint16_t programme);

    /// Plays this programme once it is known, and no other; to be called before Next().
    void Await(std::uint16_t programme) { m_choice = programme; }

    /// The PAT has arrived, and every PMT that it names.
    bool HasAllTables() const { return m_tables.IsComplete(); }

    /// Called inside Next() for every packet that is sound, before it is worked off.
    void SetPacketListener(PacketListener listener) { m_onPacket = std::move(listener); }

    /// The next event in stream order; nothing at the end of the stream and, as long as HasEnded() is false,
    /// when nothing has come yet. @throws StreamError
    std::optional<Event> Next();

    /// Next() has told everything up to the end of the stream.
    bool HasEnded() const { return m_ended; }

    /// The sender sets the pace. The programmes become known as their tables come, and events have no time:
    /// they are handed out at once, with the STC of the latest PCR.
    bool IsLive() const { return m_source->IsLive(); }

    /// Plays from the start again; events not taken yet are dropped. Time goes on. @throws StreamError
    void Rewind();

    /// PTS (90 kHz) of the first PES packet of this PID with one that Next() returned, since the start or
    /// ForgetFirstPts().
    std::optional<std::uint64_t> FirstPts(std::uint16_t pid) const;
    void ForgetFirstPts() { m_firstPts.clear(); }

    /// The stream has shown a clock. Without one the STC of events means nothing, and time passes at the pace
    /// of a 5 Mbit/s stream.
    bool HasClock() const { return m_timeline.HasClock(); }

    /// What became of the packets of this PID; null if it is not of the programme.
    PesCounters const* Counters(std::uint16_t pid) const;

    /// Packets read so far, those of looking for the tables left out.
    std::uint64_t Packets() const { return m_packet; }

    /// Sections of the tables so far, those read in looking for them included, whose check sum or length was
    /// wrong.
    std::uint64_t DamagedSections() const { return m_tables.DamagedSections(); }

    /// Packets whose head contradicted itself.
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
