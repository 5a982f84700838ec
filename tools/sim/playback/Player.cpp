// SPDX-License-Identifier: MIT
#include "Player.h"

#include <utility>

namespace zviptv::sim {

namespace {

/// Others have their turn after it.
constexpr std::chrono::milliseconds LongestTurn{20};

/// The PID whose first time stamp is the programme's.
std::optional<std::uint16_t> FirstPtsStream(Programme const& programme)
{
    if (!programme.video.empty()) {
        return programme.video.front().pid;
    }
    return programme.audio.empty() ? std::nullopt : std::optional<std::uint16_t>(programme.audio.front().pid);
}

std::string KnownProgrammes(Demux const& demux)
{
    std::string numbers;
    for (Programme const& programme : demux.Programmes()) {
        numbers += (numbers.empty() ? "" : ", ") + std::to_string(programme.number);
    }
    return numbers;
}

std::string AdviceOn(Demux const& demux)
{
    std::uint64_t const damaged = demux.DamagedSections();
    return damaged == 0 ? "; play a stream that has a PAT and a PMT"
                        : ", but " + std::to_string(damaged) +
                              (damaged == 1 ? " damaged section" : " damaged sections") +
                              " of PAT, PMT or SDT; record the stream again";
}

} // namespace

Player::Player(PlayerOptions const& options, Listener listener)
    : m_loop(options.loop), m_listener(std::move(listener)), m_demux(options.path), m_pacer(options.speed)
{
    if (m_demux.Programmes().empty()) {
        throw StreamError(options.path + " holds no programme: no PMT found" + AdviceOn(m_demux));
    }
    if (options.programme && !m_demux.Select(*options.programme)) {
        throw StreamError(options.path + " has no programme " + std::to_string(*options.programme) +
                          ": it has " + KnownProgrammes(m_demux));
    }
    m_programme = m_demux.Current();
}

std::optional<std::chrono::milliseconds> Player::Advance()
{
    if (m_state == ZV_SOURCE_STATE_STARTING) {
        Begin();
    }
    auto const turnEnds = Pacer::Clock::now() + LongestTurn; // a machine too slow for the speed is late
    while (m_state == ZV_SOURCE_STATE_PLAYING && m_pacer.IsDue(m_next->at.time) &&
           Pacer::Clock::now() < turnEnds) {
        ClockPoint const last = m_next->at;
        Deliver(*m_next);
        if (!Fetch()) {
            m_lastStc = last.stc / 300;
            m_state = ZV_SOURCE_STATE_ENDED;
        }
    }
    if (m_state != ZV_SOURCE_STATE_PLAYING) {
        return std::nullopt;
    }
    auto const wait = m_pacer.DueAt(m_next->at.time) - Pacer::Clock::now();
    return std::max(std::chrono::ceil<std::chrono::milliseconds>(wait), std::chrono::milliseconds(0));
}

void Player::Begin()
{
    if (!Fetch()) {
        m_state = ZV_SOURCE_STATE_ENDED;
        return;
    }
    m_pacer.Start(m_next->at.time);
    m_pacer.Follow(m_next->at);
    m_state = ZV_SOURCE_STATE_PLAYING;
}

/// The next event; from the start again at the end of a stream that loops. A pass without any packet is the
/// end: the file has been cut.
bool Player::Fetch()
{
    m_next = m_demux.Next();
    if (!m_next && m_loop && m_demux.Packets() > m_passBegan) {
        m_passBegan = m_demux.Packets();
        m_demux.Rewind();
        m_next = m_demux.Next();
    }
    return m_next.has_value();
}

void Player::Deliver(Event const& event)
{
    m_pacer.Follow(event.at);
    if (event.type == EventType::Pes) {
        LookAtVideo(event.pes);
        ListenToAudio(event.pes);
        ReadText(event.pes);
        m_listener(event.pes);
    } else if (event.programme != nullptr) {
        Change(event.programme);
    }
}

/// Time stamps of another programme, or of what else a PID carried before, say nothing of this one.
void Player::Change(std::shared_ptr<Programme const> const& next)
{
    if (m_onProgramme) {
        m_onProgramme(*next);
    }
    if (next->number != m_programme->number || FirstPtsStream(*next) != FirstPtsStream(*m_programme)) {
        m_demux.ForgetFirstPts();
    }
    m_programme = next;
    m_format.reset();
    m_sounds.clear();
    m_textLanguages.clear();
}

void Player::LookAtVideo(PesPacket const& pes)
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
    if (!m_demux.HasClock()) {
        return std::nullopt;
    }
    return m_state == ZV_SOURCE_STATE_PLAYING ? std::optional<std::uint64_t>(m_pacer.StcNow()) : m_lastStc;
}

std::optional<std::uint64_t> Player::FirstPts() const
{
    std::optional<std::uint16_t> const pid = FirstPtsStream(*m_programme);
    return pid ? m_demux.FirstPts(*pid) : std::nullopt;
}

} // namespace zviptv::sim
