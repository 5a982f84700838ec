// SPDX-License-Identifier: MIT
#pragma once

#include "stream/AribLanguages.h"
#include "stream/AudioFormat.h"
#include "stream/Demux.h"
#include "stream/Pacer.h"
#include "stream/VideoFormat.h"

#include <zviptv/IPTVTypes.h>

#include <functional>
#include <optional>
#include <string>

namespace zviptv::sim {

struct PlayerOptions
{
    std::string path;
    std::optional<std::uint16_t> programme; ///< the first one of the stream when empty
    double speed = 1.0;
    bool loop = false;
};

/// Plays a transport stream at its own pace: hands out PES packets when they are due and knows the clock.
/// Not thread-safe; nothing happens but inside Advance().
class Player
{
public:
    using Listener = std::function<void(PesPacket const&)>;

    /// @throws StreamError when the file cannot be read or has no such programme
    Player(PlayerOptions const& options, Listener listener);

    /// Gets every transport packet as it is read, a little ahead of what is due.
    void SetPacketListener(Demux::PacketListener listener) { m_demux.SetPacketListener(std::move(listener)); }

    /// Gets what the programme that is played becomes, as long as Current() and what was learnt of it still
    /// are those before.
    using ProgrammeListener = std::function<void(Programme const& next)>;
    void SetProgrammeListener(ProgrammeListener listener) { m_onProgramme = std::move(listener); }

    /// Hands out what is due; returns how long until more is, nothing when the stream has ended.
    std::optional<std::chrono::milliseconds> Advance();

    EZVSourceState State() const { return m_state; }

    /// All programmes of the stream, in the order of the PAT.
    std::vector<Programme> const& Programmes() const { return m_demux.Programmes(); }

    /// The programme that is played; never null.
    Programme const& Current() const { return *m_programme; }

    /// The system time clock, 90 kHz; nothing before the first packet, or when the stream has no clock. It
    /// stops at the end of the stream.
    std::optional<std::uint64_t> Stc() const;

    /// First time stamp of the video, or where there is none of the first audio track, 90 kHz.
    std::optional<std::uint64_t> FirstPts() const;

    /// What the video's sequence head says; nothing before it has passed.
    std::optional<VideoFormat> const& Format() const { return m_format; }

    /// What the audio frames that have passed say, the latest of each track.
    AudioFormats const& Sounds() const { return m_sounds; }

    /// Languages of the ARIB texts, as far as their management data has passed.
    AribLanguages const& TextLanguages() const { return m_textLanguages; }

private:
    void Begin();
    bool Fetch();
    void Deliver(Event const& event);
    void Change(std::shared_ptr<Programme const> const& next);
    void LookAtVideo(PesPacket const& pes);
    void ListenToAudio(PesPacket const& pes);
    void ReadText(PesPacket const& pes);

    bool m_loop;
    Listener m_listener;
    ProgrammeListener m_onProgramme;
    Demux m_demux;
    Pacer m_pacer;
    std::shared_ptr<Programme const> m_programme;
    std::optional<Event> m_next;
    std::uint64_t m_passBegan = 0; ///< packets read before this pass over the stream
    EZVSourceState m_state = ZV_SOURCE_STATE_STARTING;
    std::optional<std::uint64_t> m_lastStc; ///< where the clock stopped at the end
    std::optional<VideoFormat> m_format;
    AudioFormats m_sounds;
    AribLanguages m_textLanguages;
};

} // namespace zviptv::sim
