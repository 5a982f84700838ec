// SPDX-License-Identifier: MIT
#include "MediaStream.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::chrono::milliseconds AtOnce{1};
constexpr std::chrono::milliseconds Soon{250};
constexpr std::chrono::milliseconds Later{3000};

constexpr std::chrono::milliseconds CheckPeriod{500};
constexpr std::chrono::milliseconds NoticedAfter{2000};
constexpr std::chrono::milliseconds KilledAfter{5000};
constexpr double PlayedMeanwhile = 1; // seconds of the stream
constexpr unsigned MaxDoubling = 5;   // Soon becomes 8 s
constexpr unsigned MaxPatience = 3;   // KilledAfter becomes 40 s

/// Time after which a page without an answer does not count: its browser hangs, or its machine sleeps.
constexpr std::chrono::seconds AsleepAfter{10};

/// More output than the largest message.
constexpr std::size_t TooMuch = std::size_t{8} * 1024 * 1024;

/// Doubles the time after each failure, at most `most` times.
std::chrono::milliseconds Doubled(std::chrono::milliseconds time, unsigned failures, unsigned most)
{
    return time * (1 << std::min(failures, most));
}

} // namespace

MediaStream::MediaStream(Kind kind, Watch watch, std::function<void(Json::Value const& content)> onState)
    : m_kind(std::move(kind)), m_watch(std::move(watch)), m_onState(std::move(onState))
{
    SetState("off");
}

void MediaStream::Add(SoupWebsocketConnection* connection)
{
    m_viewers.emplace_back(
        connection, [this](PageSocket&) { m_state["state"] == "off" ? Start() : Send(); },
        [this](PageSocket& socket) {
            m_viewers.remove_if([&socket](Viewer const& viewer) { return &viewer == &socket; });
            if (m_viewers.empty()) {
                Rest();
            }
        });
    if (m_viewers.size() == 1) {
        Start();
    } else {
        Send();
    }
}

void MediaStream::Refresh()
{
    std::string const state = m_state["state"].asString();
    if (state == "still" || state == "playing" || state == "stalled") {
        StartAfter(AtOnce);
    }
}

void MediaStream::StartAfter(std::chrono::milliseconds delay)
{
    m_next = LoopSource::Every(delay, [this] {
        m_next.Stop();
        Start();
    });
}

/// Whether a page shows the messages.
bool MediaStream::IsWatched() const
{
    auto const now = Clock::now();
    return std::any_of(m_viewers.begin(), m_viewers.end(), [&](Viewer const& viewer) {
        return viewer.Unanswered() < m_kind.depth || now - viewer.sentAt < AsleepAfter;
    });
}

/// Decodes nothing until a page comes or answers.
void MediaStream::Rest()
{
    m_decoder.reset();
    m_next.Stop();
    m_checking.Stop();
    m_newest.reset();
    m_failures = 0;
    SetState("off");
}

void MediaStream::Start()
try {
    m_decoder.reset();
    m_checking.Stop();
    if (!IsWatched()) {
        Rest();
        return;
    }
    if (m_isAsking) {
        return;
    }
    auto [input, output] = MakeLargePipe();
    auto const shared = std::make_shared<FileHandle>(std::move(input));
    m_isAsking = true;
    m_watch(m_kind.what, output,
            [shared, weak = std::weak_ptr<MediaStream*>(m_self)](Json::Value const& content) {
                if (auto const self = weak.lock()) {
                    (*self)->m_isAsking = false;
                    (*self)->Decode(content, std::move(*shared));
                }
            });
} catch (std::system_error const&) { // there is no free descriptor
    SetState("failed");
    StartAfter(Later);
}

void MediaStream::Decode(Json::Value const& content, FileHandle input)
{
    if (!IsWatched()) {
        Rest();
        return;
    }
    std::string const state = content.isNull() ? "waiting" : content["state"].asString();
    if (state != "playing" && state != "still") {
        SetState(state.c_str());
        StartAfter(Soon);
        return;
    }
    try {
        m_written.clear();
        m_numberAtStart = m_number;
        m_content = content;
        m_startedAt = m_lastSign = Clock::now();
        m_played = 0;
        m_decoder = std::make_unique<Decoder>(
            m_kind.arguments(content), std::move(input), [this](std::string const& bytes) { Take(bytes); },
            [this] { OnEnd(); });
        m_checking = LoopSource::Every(CheckPeriod, [this] { Check(); });
        if (m_failures == 0) { // otherwise wait for output first
            SetState(content);
        }
    } catch (std::system_error const& failure) {
        SetState(failure.code().value() == ENOENT ? "no ffmpeg" : "failed");
        StartAfter(Later);
    }
}

/// Runs after a jump of the stream, a still picture, or a failure of ffmpeg.
void MediaStream::OnEnd()
{
    m_checking.Stop();
    bool const hasShown = m_number != m_numberAtStart;
    if (m_content["state"] == "still" && hasShown) {
        if (m_next.IsRunning()) {
            return; // Refresh() has planned a restart
        }
        m_next = LoopSource::Every(AtOnce, [this] {
            m_next.Stop();
            m_decoder.reset();
        });
    } else if (hasShown) {
        auto const age = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_startedAt);
        StartAfter(std::max(AtOnce, Soon - age));
    } else {
        Fail();
    }
}

/// Ends the decoder, which may be calling this, and starts another one later.
void MediaStream::Fail()
{
    SetState("failed");
    m_next = LoopSource::Every(AtOnce, [this] {
        m_next.Stop();
        m_checking.Stop();
        m_decoder.reset();
        StartAfter(Doubled(Soon, m_failures++, MaxDoubling));
    });
}

/// A decoder that was stopped or hangs writes nothing although it received data.
void MediaStream::Check()
{
    if (!IsWatched()) {
        Rest();
        return;
    }
    auto const silence = Clock::now() - m_lastSign;
    bool const isStill = m_content["state"] == "still";
    bool const isDue = isStill ? m_number == m_numberAtStart : m_played >= PlayedMeanwhile;
    if (isDue && silence >= Doubled(KilledAfter, m_failures, MaxPatience)) {
        ++m_failures;
        StartAfter(AtOnce);
    } else if (isDue && silence >= NoticedAfter) {
        SetState("stalled");
    }
}

void MediaStream::Take(std::string const& bytes)
{
    if (m_written.size() >= TooMuch) {
        return; // until the restart
    }
    m_written += bytes;
    m_lastSign = Clock::now();
    m_played = 0;
    for (std::string next = m_kind.take(m_written); !next.empty(); next = m_kind.take(m_written)) {
        m_newest.reset(g_bytes_new(next.data(), next.size()));
        ++m_number;
        m_failures = 0;
        SetState(m_content);
        Send();
    }
    if (m_written.size() >= TooMuch) {
        Fail();
    }
}

void MediaStream::Send()
{
    for (Viewer& viewer : m_viewers) {
        if (m_newest && viewer.sent < m_number && viewer.Unanswered() < m_kind.depth) {
            viewer.sent = m_number;
            viewer.sentAt = Clock::now();
            viewer.Send(m_newest.get());
        }
    }
}

void MediaStream::SetState(Json::Value const& content)
{
    if (m_state != content) {
        m_state = content;
        m_onState(m_state);
    }
}

void MediaStream::SetState(char const* state)
{
    Json::Value content(Json::objectValue);
    content["state"] = state;
    SetState(content);
}

} // namespace zviptv::sim
