// SPDX-License-Identifier: MIT
#include "PushReplay.h"

#include "RecordedMessage.h"

#include <algorithm>

namespace zviptv::sim {

namespace {

/// Longest time of sending before other work gets its turn.
constexpr std::chrono::milliseconds LongestTurn{20};

/// Limit for timers of the main loop, which hold at most 49 days.
constexpr std::chrono::milliseconds LongestWait = std::chrono::hours(1);

/// Latest time of a push; later times, from a damaged file, are reduced to it.
constexpr std::chrono::duration<double> Longest = std::chrono::hours(24 * 365 * 100);

} // namespace

void PushReplay::Start(std::string const& function, std::string const& application,
                       std::chrono::milliseconds delay)
{
    Stop(function, application);
    auto const recorded = m_replay.Recorded().pushes.find(function);
    if (recorded == m_replay.Recorded().pushes.end()) {
        return;
    }
    Key const key(function, application);
    std::uint64_t const number = ++m_count;
    m_lines.emplace(key, Line{recorded->second.Take(m_replay.Life()), Clock::now() + delay, number});
    m_loop.After(delay, [this, key, number] { Advance(key, number); });
}

void PushReplay::Stop(std::string const& function, std::string const& application)
{
    m_lines.erase({function, application});
}

PushReplay::Clock::time_point PushReplay::DueAt(Line const& line) const
{
    std::chrono::duration<double> const after = line.recorded.pushes[line.next].after;
    return line.begin +
           std::chrono::duration_cast<Clock::duration>(std::min(after / m_replay.Speed(), Longest));
}

void PushReplay::Advance(Key const& key, std::uint64_t number)
{
    auto const turnEnds = Clock::now() + LongestTurn;
    for (;;) {
        auto const found = m_lines.find(key);
        if (found == m_lines.end() || found->second.number != number) {
            return;
        }
        Line& line = found->second;
        if (line.next == line.recorded.pushes.size()) {
            return; // the subscription stays, but gets no more pushes
        }
        auto const now = Clock::now();
        if (now < DueAt(line) || now >= turnEnds) {
            auto const wait = std::chrono::ceil<std::chrono::milliseconds>(DueAt(line) - now);
            m_loop.After(std::clamp(wait, std::chrono::milliseconds(0), LongestWait),
                         [this, key, number] { Advance(key, number); });
            return;
        }
        if (!m_send(key.first, key.second, Load(line.recorded.pushes[line.next++].message))) {
            m_lines.erase(key);
            return;
        }
    }
}

CMessageBuffer PushReplay::Load(Spool::Piece piece)
{
    std::string const bytes = m_replay.Recorded().spool.Read(piece);
    return ToMessageBuffer(trace::ParseMessage(bytes));
}

} // namespace zviptv::sim
