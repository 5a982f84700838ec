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
    std::optional<std::uint16_t> programme; ///< the first one of the stream if empty
    double speed = 1.0;                     ///< live input sets its own pace
    bool loop = false;                      ///< for files only
    bool mayFail = false;                   ///< if the input cannot be played, start with Fail()
};

/// Plays a transport stream: presents PES packets and keeps the clock. A file is played at its own pace, on
/// the simulated clock, and live input as it arrives. Not thread-safe; used on the thread whose default main
/// context calls back. Packets are presented only inside Advance().
class Player
{
public:
    using Listener = std::function<void(PesPacket const&)>;

    /// Seconds of the stream, from its first packet.
    using Seconds = std::chrono::duration<double>;

    /// Waits until the input is open. `clock` must outlive the player. @throws StreamError if the input
    /// cannot be read, is a file without such a programme, or is not compatible with the other options,
    /// unless it may fail
    Player(PlayerOptions const& options, SimulatedClock& clock, Listener listener);

    /// Plays another input from its start: its first programme, at the speed of the options. `done` is called
    /// once, now or, for HTTP, from the main context: with an empty text after the change; otherwise with a
    /// line for the user, and the previous input continues. An input that is still being opened is abandoned.
    /// All data about the previous input is discarded at once: the listeners get a programme without a number
    /// and tracks, then the new one, which for live input arrives later.
    using Opened = std::function<void(std::string const& error)>;
    void Open(InputOptions const& options, Opened done);

    /// The same, but waits until the input is open. @throws StreamError like the constructor; then nothing
    /// has changed
    void OpenAndWait(InputOptions const& options, std::optional<std::uint16_t> programme);

    /// Sets the state of an input that cannot be opened: an error, and nothing is presented. `error` is a
    /// line for the user.
    void Fail(InputOptions const& options, std::optional<std::uint16_t> programme, std::string const& error);

    /// Goes to a position of a file, and moves the clock by the same distance. The first packet that is
    /// presented is the first one that is complete at or after that position. The next calls of Advance()
    /// read the skipped part. @throws StreamError if the file cannot be read again; then nothing has changed
    void Seek(Seconds position);

    /// Whether the part before the position of a seek is still being read.
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

    /// The position of a stream that began this time ago.
    static Seconds PositionAfter(Seconds passed, std::optional<Seconds> duration, bool loops);

    /// The time on the clock at which the position was 0. Only valid after playback has begun.
    SimulatedClock::Time BeganAt() const { return m_pacer.DueAt(m_passTime); }

    /// The duration of a file; nullopt until it is known.
    std::optional<Seconds> const& Duration() const { return m_duration; }
    void SetDuration(Seconds duration) { m_duration = duration; }

    /// Plays another programme of this input from the present position; its duration is unknown. Returns
    /// false and changes nothing if there is no such programme.
    bool SelectProgramme(std::uint16_t number);

    /// The counters of the input.
    InputCounters Counters() const;

    /// Called when Advance() must be called again although it has returned nullopt: packets have arrived, or
    /// another input is played.
    void SetWakeUp(std::function<void()> wake);

    /// Gets every transport packet when it is read, slightly before it is due.
    void SetPacketListener(Demux::PacketListener listener);

    /// Gets the new state of the programme before Current() and the data about it change.
    using ProgrammeListener = std::function<void(Programme const& next)>;
    void SetProgrammeListener(ProgrammeListener listener) { m_onProgramme = std::move(listener); }

    /// Gets every PES packet that is presented and, with true, those that a seek skips.
    using PesListener = std::function<void(PesPacket const& pes, bool isPassedOver)>;
    void SetPesListener(PesListener listener) { m_onPes = std::move(listener); }

    /// Called before another input is played.
    void SetInputListener(std::function<void()> listener) { m_onInput = std::move(listener); }

    /// Presents the packets that are due. Returns the time until the next ones, or nullopt if the stream has
    /// ended, nothing has arrived yet, or the clock is paused. @throws StreamError if reading fails
    std::optional<std::chrono::milliseconds> Advance();

    /// Starting until something has been presented, and while the input is stalled.
    EZVSourceState State() const;

    /// Whether the stream has been presented to its end.
    bool HasEnded() const { return m_state == ZV_SOURCE_STATE_ENDED; }

    /// All programmes of the stream, in the order of the PAT.
    std::vector<Programme> const& Programmes() const { return m_demux->Programmes(); }

    /// The programme that is played; without a number and tracks until it is known.
    Programme const& Current() const { return *m_programme; }

    /// The system time clock, 90 kHz; nullopt before the first packet, or if the stream has no clock. It
    /// stops at the end of the stream.
    std::optional<std::uint64_t> Stc() const;

    /// First time stamp of the video or, without video, of the first audio track, 90 kHz.
    std::optional<std::uint64_t> FirstPts() const;

    /// The format in the video's sequence header; nullopt before it has been presented.
    std::optional<VideoFormat> const& Format() const { return m_format; }

    /// The formats in the last presented audio frames of each track.
    AudioFormats const& Sounds() const { return m_sounds; }

    /// Languages of the ARIB texts whose management data has been presented.
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
    void InspectVideo(PesPacket const& pes);
    void ListenToAudio(PesPacket const& pes);
    void ReadText(PesPacket const& pes);

    bool m_loop;
    SimulatedClock& m_clock;
    InputOptions m_options;                ///< options of the present input
    std::optional<std::uint16_t> m_choice; ///< the requested programme
    Listener m_listener;
    Demux::PacketListener m_onPacket;
    ProgrammeListener m_onProgramme;
    PesListener m_onPes;
    std::function<void()> m_onInput;
    std::function<void()> m_wake;
    std::unique_ptr<Demux> m_demux;
    sim::Input* m_input = nullptr; ///< input of the demultiplexer; never null
    std::unique_ptr<sim::Input> m_opening;
    InputOptions m_openingOptions;
    Opened m_onOpened; ///< callback for it
    Pacer m_pacer;
    std::shared_ptr<Programme const> m_programme;
    std::optional<Event> m_next;
    std::uint64_t m_passBegan = 0; ///< packets read before this pass over the stream
    StreamTime m_passTime{};       ///< time at which this pass began
    StreamTime m_skipUntil{};      ///< earlier packets are not presented
    StreamTime m_lastTime{};       ///< time of the last presented event
    std::optional<Seconds> m_duration;
    EZVSourceState m_state = ZV_SOURCE_STATE_STARTING;
    std::optional<std::uint64_t> m_lastStc; ///< value at which the clock stopped at the end
    std::optional<VideoFormat> m_format;
    AudioFormats m_sounds;
    AribLanguages m_textLanguages;
};

} // namespace zviptv::sim
