// SPDX-License-Identifier: MIT
#pragma once

#include "Replay.h"

#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace zviptv::sim {

/// Sends the recorded pushes to the applications that subscribe, each at its recorded time after the answer
/// to the subscription. For the thread of the main loop.
class PushReplay
{
public:
    /// Sends a push to an application; `function` is the one that subscribes. Returns false
    /// if the application has unsubscribed.
    using Send =
        std::function<bool(std::string const& function, std::string const& application, CMessageBuffer push)>;

    PushReplay(Replay& replay, MainLoop& loop, Send send)
        : m_replay(replay), m_loop(loop), m_send(std::move(send))
    {
    }
    PushReplay(PushReplay const&) = delete;
    PushReplay& operator=(PushReplay const&) = delete;

    /// Starts the pushes to an application that has subscribed and gets its answer after `delay`.
    void Start(std::string const& function, std::string const& application, std::chrono::milliseconds delay);
    void Stop(std::string const& function, std::string const& application);
    void StopAll() { m_lines.clear(); }

private:
    using Clock = std::chrono::steady_clock;
    using Key = std::pair<std::string, std::string>;

    struct Line
    {
        RecordedPushes const& recorded;
        Clock::time_point begin;
        std::uint64_t number;
        std::size_t next = 0;
    };

    Clock::time_point DueAt(Line const& line) const;
    void Advance(Key const& key, std::uint64_t number);
    CMessageBuffer Load(Spool::Piece piece);

    Replay& m_replay;
    MainLoop& m_loop;
    Send m_send;
    std::uint64_t m_count = 0; ///< number of lines that were made
    std::map<Key, Line> m_lines;
};

} // namespace zviptv::sim
