// SPDX-License-Identifier: MIT
#pragma once

#include "SimulatedClock.h"
#include "input/Input.h"
#include "mpegts/AribCaptions.h"
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
    InputOptions input;
    std::optional<std::uint16_t> programme; ///< the first one of the stream when empty
    double speed = 1.0;                     ///< live input sets the pace itself
    bool loop = false;                      ///< of a file
    bool mayFail = false;                   ///< if the input cannot be played, begin with Fail()
};

/// Plays a transport stream: hands out PES packets and knows the clock. A file is played at its own pace,
/// on the simulated clock, live input as it comes. Not thread-safe; lives on the thread whose default main
/// context calls back. Nothing is handed out but inside Advance().
class Player
{
public:
    using Listener = std::function<void(PesPacket const&)>;

    /// Seconds of the stream, from its first packet.
    using Seconds = std::chrono::duration<double>;

    /// Waits until the input is open. `clock` has to outlive the player. @throws StreamError when it cannot
    /// be read, is a file without such a programme, or does not go together with the other options, unless it
    /// may fail
    Player(PlayerOptions const& options, SimulatedClock& clock, Listener listener);

    /// Plays another input from its start: its first programme, at the speed of the options. `done` is called
    /// once, now or, for HTTP, from the main context: with the empty text after the change, else with a line
    /// for the user, and the input so far goes on. An input that is still being opened is given up.
    ///
    /// Everything that was known of the input before is forgotten, at once: the listeners hear of a programme
    /// without a number and tracks, then of the new one, which of live input comes later.
    using Opened = std::function<void(std::string const& error)>;
    void Open(InputOptions const& options, Opened done);

    /// The same, and waits until the input is open. @throws StreamError as the constructor does; then nothing
    /// has changed
    void OpenAndWait(InputOptions const& options, std::optional<std::uint16_t> programme);

    /// Plays an input that cannot be opened: from now on the state is that of an error, and nothing is handed
    /// out. `error` is a line for the user.
    void Fail(InputOptions const& options, std::optional<std::uint16_t> programme, std::string const& error);

    /// Goes to a position of a file, and moves the clock by the same distance. The first packet that is
    /// handed out is the first one that is complete at that position or later. What is passed over is read by
    /// the next Advance()s. @throws StreamError when the file cannot be read again; then nothing has changed
    void Seek(Seconds position);

    /// What lies before the position of a seek has not been passed over yet.
    bool IsSeeking() const { return m_next && m_next->at.time < m_skipUntil; }

    /// Plays a file from a position that is reached now, with the clock as it is. @throws StreamError as
    /// Seek() does
    void GoTo(Seconds position);

    /// What is played, as it was given.
    std::string const& Input() const { return m_options.url; }
    /// More may come later: it is live, or a file that is being written.
    bool IsArriving() const { return m_input->IsArriving(); }
    /// The sender sets the pace.
    bool IsLive() const { return m_demux->IsLive(); }
    /// The programme that was asked for; nothing for the first one.
    std::optional<std::uint16_t> const& Choice() const { return m_choice; }
    SimulatedClock const& Clock() const { return m_clock; }

    /// Since the start of the stream; with --loop since that of the present pass. At most the duration, also
    /// while the clock is ahead of what has been played.
    Seconds Position() const;

    /// The position of a stream that began this long ago.
    static Seconds PositionAfter(Seconds passed, std::optional<Seconds> duration, bool loops);

    /// When, on the clock, the position was 0. Meaningful once play has begun.
    SimulatedClock::Time BeganAt() const { return m_pacer.DueAt(m_passTime); }

    /// Of a file; nothing until it is known.
    std::optional<Seconds> const& Duration() const { return m_duration; }
    void SetDuration(Seconds duration) { m_duration = duration; }

    /// Plays another programme of this input, from here on; its duration is not known. False, and nothing
    /// changes, if there is no such programme.
    bool SelectProgramme(std::uint16_t number);

    /// What the input has given so far, and how.
    InputCounters Counters() const;

    /// Called when Advance() has to be called again though it has returned nothing: packets have come, or
    /// another input is played.
    void SetWakeUp(std::function<void()> wake);

    /// Gets every transport packet as it is read, a little ahead of what is due.
    void SetPacketListener(Demux::PacketListener listener);

    /// Gets what the programme that is played becomes, as long as Current() and what was learnt of it still
    /// are those before.
    using ProgrammeListener = std::function<void(Programme const& next)>;
    void SetProgrammeListener(ProgrammeListener listener) { m_onProgramme = std::move(listener); }

    /// Gets every PES packet that is handed out and, with true, those that a seek passes over.
    using PesListener = std::function<void(PesPacket const& pes, bool isPassedOver)>;
    void SetPesListener(PesListener listener) { m_onPes = std::move(listener); }

    /// Called when another input is about to be played.
    void SetInputListener(std::function<void()> listener) { m_onInput = std::move(listener); }

    /// Hands out what is due; returns how long until more is, nothing when the stream has ended, nothing has
    /// come yet, or the clock is paused. @throws StreamError when reading fails
    std::optional<std::chrono::milliseconds> Advance();

    /// Starting until something has been handed out, and while the input is stalled.
    EZVSourceState State() const;

    /// The stream has been handed out to its end.
    bool HasEnded() const { return m_state == ZV_SOURCE_STATE_ENDED; }

    /// All programmes of the stream, in the order of the PAT.
    std::vector<Programme> const& Programmes() const { return m_demux->Programmes(); }

    /// The programme that is played; one without a number and tracks as long as it is not known.
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
    std::unique_ptr<Demux> Load(std::unique_ptr<sim::Input> input, std::optional<std::uint16_t> choice) const;
    void PlayInput(std::unique_ptr<sim::Input> input, InputOptions const& options,
                   std::optional<std::uint16_t> programme);
    void Take(std::unique_ptr<Demux> demux, sim::Input* input);
    void Use(std::unique_ptr<Demux> demux, sim::Input* input);
    void Reopen();
    void FinishOpening(std::string const& error);
    bool LacksProgramme() const;
    void Begin();
    std::optional<std::chrono::milliseconds> AdvanceLive();
    bool Fetch();
    void End();
    void Deliver(Event const& event);
    void Change(std::shared_ptr<Programme const> const& next);
    void LookAtVideo(PesPacket const& pes);
    void ListenToAudio(PesPacket const& pes);
    void ReadText(PesPacket const& pes);

    bool m_loop;
    SimulatedClock& m_clock;
    InputOptions m_options;                ///< of the input that is played
    std::optional<std::uint16_t> m_choice; ///< the programme that was asked for
    Listener m_listener;
    Demux::PacketListener m_onPacket;
    ProgrammeListener m_onProgramme;
    PesListener m_onPes;
    std::function<void()> m_onInput;
    std::function<void()> m_wake;
    std::unique_ptr<Demux> m_demux;
    sim::Input* m_input = nullptr; ///< the demultiplexer's; never null
    std::unique_ptr<sim::Input> m_opening;
    InputOptions m_openingOptions;
    Opened m_onOpened; ///< for it
    Pacer m_pacer;
    std::shared_ptr<Programme const> m_programme;
    std::optional<Event> m_next;
    std::uint64_t m_passBegan = 0; ///< packets read before this pass over the stream
    StreamTime m_passTime{};       ///< when this pass began
    StreamTime m_skipUntil{};      ///< what comes before is not handed out
    StreamTime m_lastTime{};       ///< of the event that was handed out last
    std::optional<Seconds> m_duration;
    EZVSourceState m_state = ZV_SOURCE_STATE_STARTING;
    std::optional<std::uint64_t> m_lastStc; ///< where the clock stopped at the end
    std::optional<VideoFormat> m_format;
    AudioFormats m_sounds;
    AribLanguages m_textLanguages;
};

} // namespace zviptv::sim
