// SPDX-License-Identifier: MIT
#include "MediaStream.h"

#include <cerrno>
#include <system_error>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::chrono::milliseconds AtOnce{1};
constexpr std::chrono::milliseconds Soon{250};
constexpr std::chrono::milliseconds Later{3000};

} // namespace

MediaStream::MediaStream(Kind kind, Watch watch, std::function<void(Json::Value const& content)> onState)
    : m_kind(std::move(kind)), m_watch(std::move(watch)), m_onState(std::move(onState))
{
    SetState("off");
}

void MediaStream::Add(SoupWebsocketConnection* connection)
{
    m_viewers.emplace_back(
        connection, [this](PageSocket&) { Send(); },
        [this](PageSocket& socket) {
            m_viewers.remove_if([&socket](Viewer const& viewer) { return &viewer == &socket; });
            if (m_viewers.empty()) {
                m_decoder.reset();
                m_next.Stop();
                m_newest.reset();
                SetState("off");
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
    if (state == "still" || state == "playing") {
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

void MediaStream::Start()
try {
    m_decoder.reset();
    if (m_viewers.empty() || m_isAsking) {
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
    if (m_viewers.empty()) {
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
        m_decoder = std::make_unique<Decoder>(
            m_kind.arguments(content), std::move(input), [this](std::string const& bytes) { Take(bytes); },
            [this] { OnEnd(); });
        SetState(content);
    } catch (std::system_error const& failure) {
        SetState(failure.code().value() == ENOENT ? "no ffmpeg" : "failed");
        StartAfter(Later);
    }
}

/// The stream has jumped, or this was a still picture.
void MediaStream::OnEnd()
{
    bool const hasShown = m_number != m_numberAtStart;
    if (m_state["state"] == "still" && hasShown) {
        m_next = LoopSource::Every(AtOnce, [this] {
            m_next.Stop();
            m_decoder.reset();
        });
        return;
    }
    if (!hasShown) {
        SetState("failed");
    }
    StartAfter(hasShown ? AtOnce : Soon);
}

void MediaStream::Take(std::string const& bytes)
{
    m_written += bytes;
    for (std::string next = m_kind.take(m_written); !next.empty(); next = m_kind.take(m_written)) {
        m_newest.reset(g_bytes_new(next.data(), next.size()));
        ++m_number;
        Send();
    }
}

void MediaStream::Send()
{
    for (Viewer& viewer : m_viewers) {
        if (m_newest && viewer.sent < m_number && viewer.Unanswered() < m_kind.depth) {
            viewer.sent = m_number;
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
