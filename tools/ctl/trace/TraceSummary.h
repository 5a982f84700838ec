// SPDX-License-Identifier: MIT
#pragma once

#include "Latencies.h"
#include "trace/Conversation.h"

#include <json/value.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zviptv::ctl {

/// Adds events up: calls by function, pushes by PID, pauses of pushes, slow calls. Its memory grows with the
/// number of functions, applications and PIDs, not with that of events.
class TraceSummary
{
public:
    void Add(trace::Event const& event);

    /// Tables for people.
    std::string Text(trace::Counts const& counts) const;

    /// The same as an object.
    Json::Value ToJson(trace::Counts const& counts) const;

private:
    struct Calls
    {
        std::uint64_t requests = 0;
        std::uint64_t refused = 0;
        std::uint64_t errors = 0;
        Latencies latencies;

        std::uint64_t Open() const; ///< requests without a reply
    };

    struct Pushes
    {
        std::uint64_t packets = 0;
        std::uint64_t bytes = 0;
        std::int64_t first = 0; ///< times, as those of events
        std::int64_t last = 0;

        double PerSecond(std::uint64_t number) const;
    };

    /// Something that took long.
    struct Wait
    {
        std::int64_t time; ///< of its beginning
        std::int64_t length;
        std::string application;
        std::string subject;
    };

    using Waits = std::pair<std::uint64_t, std::vector<Wait>>; ///< number of all, and the longest

    static void Keep(Waits& waits, Wait wait);
    static std::string TextOf(Waits const& waits, char const* title);
    static Json::Value JsonOf(Waits const& waits);
    void AddCall(trace::Event const& event);
    void AddPush(trace::Event const& event);
    std::string CallsText() const;
    std::string PushesText() const;

    std::map<std::pair<std::string, std::string>, Calls> m_calls;   ///< by endpoint and function
    std::map<std::pair<std::string, std::string>, Pushes> m_pushes; ///< by application and PID
    Waits m_slow;
    Waits m_gaps;
    std::uint64_t m_events = 0;
    std::uint64_t m_problems = 0;
    std::string m_firstProblem;
    std::uint64_t m_losses = 0;
    std::int64_t m_first = 0;
    std::int64_t m_last = 0;
};

} // namespace zviptv::ctl
