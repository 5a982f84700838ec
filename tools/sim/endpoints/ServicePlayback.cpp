// SPDX-License-Identifier: MIT
#include "Service.h"

#include <utility>

// The playback of the service.

namespace zviptv::sim {

namespace {

constexpr std::chrono::milliseconds MeasurePause{5};

} // namespace

void Service::Start()
{
    m_isStarted = true;
    if (m_player.HasEnded()) {
        m_log.WriteLine(m_player.Counters().error +
                        "; the service continues to answer"); // it cannot be opened
    }
    PlayWhenAwaited();
    FollowInput();
    if (m_log.WantsStatus()) {
        m_statusAt = std::chrono::steady_clock::now();
        m_loop.After(StatusPeriod, [this] { ShowStatus(); });
    }
}

bool Service::AwaitsApplications() const
{
    return !m_isPlaying && m_subscribers.Count().subscribers.size() < m_awaited;
}

/// Begins after all awaited applications have subscribed.
void Service::PlayWhenAwaited()
{
    if (m_isStarted && !m_isPlaying && !AwaitsApplications()) {
        m_isPlaying = true;
        Wake();
    }
}

void Service::Wake()
{
    if (m_isPlaying) {
        PlayAfter(std::chrono::milliseconds(0));
    }
}

/// Replaces the previous plan.
void Service::PlayAfter(std::chrono::milliseconds delay)
{
    m_loop.After(delay, [this, plan = ++m_plan] {
        if (plan == m_plan) {
            Play();
        }
    });
}

/// Advances the player, and runs again when the player has more to do or wakes it.
void Service::Play()
{
    m_isWoken = false;
    EZVSourceState const before = m_player.State();
    bool const hadEnded = m_player.HasEnded();
    if (std::optional<std::chrono::milliseconds> const wait = m_player.Advance()) {
        PlayAfter(*wait);
    } else if (m_player.HasEnded() && !hadEnded) {
        m_subscribers.Release();
        std::string const error = m_player.Counters().error;
        m_log.WriteLine(error.empty()
                            ? "the stream has ended; the service continues to answer"
                            : m_player.Counters().url + ": " + error + "; the service continues to answer");
    }
    if (m_player.State() != before) {
        m_onChange();
    }
}

bool Service::PlaysFirst() const
{
    return m_player.Input() == m_options.playback.input.url &&
           m_player.Choice() == m_options.playback.programme;
}

void Service::FollowInput()
{
    m_durationScan.reset();
    ++m_scans;
    if (!m_player.Duration() && !m_player.IsArriving()) {
        MeasureDuration(m_scans);
    }
}

/// Runs in steps between other work. An input that cannot be read has no duration.
void Service::MeasureDuration(unsigned scan)
try {
    if (scan != m_scans) {
        return;
    }
    if (!m_durationScan) {
        m_durationScan.emplace(m_player.Input(), m_player.Current().number);
    }
    if (auto const duration = m_durationScan->Advance()) {
        m_player.SetDuration(*duration);
        m_durationScan.reset();
        if (PlaysFirst()) {
            m_firstDuration = duration;
        }
        m_onChange();
    } else {
        m_loop.After(MeasurePause, [this, scan] { MeasureDuration(scan); });
    }
} catch (StreamError const&) {
    m_durationScan.reset();
}

Television Service::Parts()
{
    return {m_clock,          m_player,      m_selection,    m_lock, m_faults,
            m_programmeGuide, m_subscribers, m_applications, m_tap};
}

void Service::SetListeners(RequestListener onRequest, std::function<void()> onChange)
{
    m_onRequest = std::move(onRequest);
    m_onChange = std::move(onChange);
}

void Service::Reset()
{
    m_player.OpenAndWait(m_options.playback.input, m_options.playback.programme);
    if (m_firstDuration) {
        m_player.SetDuration(*m_firstDuration);
    }
    m_clock = SimulatedClock(m_options.playback.speed, m_options.now);
    m_selection = Selection();
    m_lock = ParentalLock(m_options.ratingLimit, m_options.serviceLocked);
    AddFaultsOfOptions();
    m_subscribers.Reset();
    if (m_replay) {
        m_pushReplay->StopAll();
        m_replay->Begin(0);
    }
    m_packets = 0;
    m_programmeGuide.Reset();
    m_awaited = m_options.awaitedSubscribers;
    m_isPlaying = false;
    m_isWoken = false;
    ++m_plan;
    PlayWhenAwaited();
    FollowInput();
}

} // namespace zviptv::sim
