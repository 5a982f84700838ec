// SPDX-License-Identifier: MIT
#include "Player.h"

#include <cmath>
#include <utility>

namespace zviptv::sim {

namespace {

/// After this time, other work runs.
constexpr std::chrono::milliseconds LongestTurn{20};

/// The PID whose first time stamp is that of the programme.
std::optional<std::uint16_t> FirstPtsStream(Programme const& programme)
{
    if (!programme.video.empty()) {
        return programme.video.front().pid;
    }
    return programme.audio.empty() ? std::nullopt : std::optional<std::uint16_t>(programme.audio.front().pid);
}

} // namespace

Player::Player(PlayerOptions const& options, SimulatedClock& clock, Listener listener)
    : m_loop(options.loop), m_clock(clock), m_listener(std::move(listener)),
      m_programme(std::make_shared<Programme const>())
{
    try {
        std::unique_ptr<sim::Input> input = OpenInputAndWait(options.input);
        if (input->IsArriving() && (m_loop || options.speed != 1.0)) {
            throw StreamError(options.input.url + " is live input, which sets its own pace: leave out " +
                              (m_loop ? "--loop" : "--speed") + ", or play a file");
        }
        PlayInput(std::move(input), options.input, options.programme);
    } catch (StreamError const& failure) {
        if (!options.mayFail) {
            throw;
        }
        Fail(options.input, options.programme, failure.what());
    }
}

void Player::Seek(Seconds position)
{
    Seconds const distance = position - Position();
    GoTo(position);
    m_clock.Jump(std::chrono::duration_cast<std::chrono::nanoseconds>(distance));
    m_pacer.Start(m_skipUntil);
}

/// Time increases in a stream, so that the position is reached again from the start.
void Player::GoTo(Seconds position)
{
    bool const isAhead = m_passTime + std::chrono::duration_cast<StreamTime>(position) > m_lastTime;
    if (m_state != ZV_SOURCE_STATE_PLAYING || !isAhead) {
        Reopen();
    }
    m_skipUntil = m_passTime + std::chrono::duration_cast<StreamTime>(position);
    m_pacer.Start(m_skipUntil);
}

Player::Seconds Player::Position() const
{
    switch (m_state) {
    case ZV_SOURCE_STATE_PLAYING:
        return PositionAfter(m_pacer.StreamNow() - m_passTime, m_duration, m_loop);
    case ZV_SOURCE_STATE_ENDED:
        return m_lastTime - m_passTime;
    default:
        return Seconds(0);
    }
}

Player::Seconds Player::PositionAfter(Seconds passed, std::optional<Seconds> duration, bool loops)
{
    if (!duration || passed < *duration) {
        return passed;
    }
    return loops && *duration > Seconds(0) ? Seconds(std::fmod(passed.count(), duration->count()))
                                           : *duration;
}

EZVSourceState Player::State() const
{
    if (LacksProgramme() || (HasEnded() && m_input->IsArriving() && !m_input->Counters().error.empty())) {
        return ZV_SOURCE_STATE_ERROR;
    }
    return m_state == ZV_SOURCE_STATE_PLAYING && m_input->IsStalled() ? ZV_SOURCE_STATE_STARTING : m_state;
}

std::optional<std::chrono::milliseconds> Player::Advance()
{
    if (m_demux->IsLive()) {
        return AdvanceLive();
    }
    if (m_state == ZV_SOURCE_STATE_STARTING) {
        Begin();
    } else if (m_state == ZV_SOURCE_STATE_PLAYING && !m_next && Fetch() && m_pacer.IsDue(m_next->at.time)) {
        m_pacer.Start(m_next->at.time); // it continues after waiting for more data
    }
    auto const turnEnds = Pacer::Clock::now() + LongestTurn; // slow machines fall behind
    while (m_state == ZV_SOURCE_STATE_PLAYING && m_next && m_pacer.IsDue(m_next->at.time) &&
           Pacer::Clock::now() < turnEnds) {
        m_lastTime = m_next->at.time;
        Deliver(*m_next);
        Fetch();
    }
    if (m_state != ZV_SOURCE_STATE_PLAYING || !m_next) {
        return std::nullopt;
    }
    auto const wait = m_clock.Until(m_pacer.DueAt(m_next->at.time));
    return wait ? std::optional(std::chrono::ceil<std::chrono::milliseconds>(*wait)) : std::nullopt;
}

/// Everything that has arrived is due.
std::optional<std::chrono::milliseconds> Player::AdvanceLive()
{
    auto const turnEnds = Pacer::Clock::now() + LongestTurn;
    while (!HasEnded() && Pacer::Clock::now() < turnEnds) {
        auto event = m_demux->Next();
        if (!event) {
            if (m_demux->HasEnded()) {
                End();
            }
            return std::nullopt;
        }
        event->at.time = m_lastTime = m_pacer.StreamNow();
        m_state = ZV_SOURCE_STATE_PLAYING;
        Deliver(*event);
    }
    return HasEnded() ? std::nullopt : std::optional(std::chrono::milliseconds(0));
}

void Player::Begin()
{
    if (!Fetch()) {
        return;
    }
    m_pacer.Start(m_next->at.time);
    m_pacer.Follow(m_next->at);
    m_state = ZV_SOURCE_STATE_PLAYING;
}

/// Reads the next event; at the end of a looping stream, from its start again. A pass without packets is the
/// end: the file was truncated. The last event of a pass determines when the next pass begins. Returns false
/// at the end, and if nothing has arrived yet.
bool Player::Fetch()
{
    m_next = m_demux->Next();
    if (!m_next && !m_input->IsArriving() && m_demux->Packets() > m_passBegan) {
        m_duration = m_lastTime - m_passTime;
        if (m_loop) {
            m_passBegan = m_demux->Packets();
            m_passTime = m_lastTime;
            m_demux->Rewind();
            m_next = m_demux->Next();
        }
    }
    if (!m_next && m_demux->HasEnded()) {
        End();
    }
    return m_next.has_value();
}

/// The clock stops at the last event.
void Player::End()
{
    if (m_state == ZV_SOURCE_STATE_PLAYING) {
        m_lastStc = m_demux->IsLive() ? m_pacer.StcNow() : m_pacer.LastStc();
    }
    m_state = ZV_SOURCE_STATE_ENDED;
}

void Player::Deliver(Event const& event)
{
    m_pacer.Follow(event.at);
    if (event.type == EventType::Pes) {
        InspectVideo(event.pes);
        ListenToAudio(event.pes);
        ReadText(event.pes);
        if (m_onPes) {
            m_onPes(event.pes, event.at.time < m_skipUntil);
        }
        if (event.at.time >= m_skipUntil) {
            m_listener(event.pes);
        }
    } else if (event.programme != nullptr) {
        Change(event.programme);
    }
}

/// Discards time stamps of another programme, or of an earlier use of a PID.
void Player::Change(std::shared_ptr<Programme const> const& next)
{
    if (m_onProgramme) {
        m_onProgramme(*next);
    }
    if (next->number != m_programme->number || FirstPtsStream(*next) != FirstPtsStream(*m_programme)) {
        m_demux->ForgetFirstPts();
    }
    m_programme = next;
    m_format.reset();
    m_sounds.clear();
    m_textLanguages.clear();
}

void Player::InspectVideo(PesPacket const& pes)
{
    if (!m_format && !m_programme->video.empty() && m_programme->video.front().pid == pes.pid) {
        m_format = ParseVideoFormat(m_programme->video.front().codec, {pes.bytes.data(), pes.bytes.size()});
    }
}

void Player::ListenToAudio(PesPacket const& pes)
{
    for (AudioTrack const& track : m_programme->audio) {
        if (track.pid != pes.pid) {
            continue;
        }
        if (auto const format = ParseAudioFormat(track.codec, {pes.bytes.data(), pes.bytes.size()})) {
            m_sounds[track.pid] = *format;
        }
        return;
    }
}

void Player::ReadText(PesPacket const& pes)
{
    if (pes.kind == StreamKind::AribCaption || pes.kind == StreamKind::AribSuperimpose) {
        if (auto languages = ParseAribLanguages({pes.bytes.data(), pes.bytes.size()})) {
            m_textLanguages[pes.pid] = std::move(*languages);
        }
    }
}

std::optional<std::uint64_t> Player::Stc() const
{
    if (!m_demux->HasClock()) {
        return std::nullopt;
    }
    return m_state == ZV_SOURCE_STATE_PLAYING ? std::optional<std::uint64_t>(m_pacer.StcNow()) : m_lastStc;
}

std::optional<std::uint64_t> Player::FirstPts() const
{
    std::optional<std::uint16_t> const pid = FirstPtsStream(*m_programme);
    return pid ? m_demux->FirstPts(*pid) : std::nullopt;
}

} // namespace zviptv::sim
