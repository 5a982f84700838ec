// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// What has become of a step.
struct Outcome
{
    enum class State
    {
        Waiting, ///< its time or its request has not come
        Open,    ///< an expectation whose time runs
        Met,     ///< an expectation that came true, or a verb that ran
        Unmet,   ///< an expectation that did not come true
        Failed   ///< a verb that the television refused
    };

    State state = State::Waiting;
    double begin = 0; ///< scenario time when it ran
    double took = 0;  ///< seconds until it was decided
    std::string seen; ///< in words
};

/// A scenario that runs: says which verb is due, and judges what applications send. It knows no clock: every
/// call has the scenario time, in seconds. Not thread-safe.
class Play
{
public:
    using Perform = std::function<void(std::size_t step)>;

    /// `perform` is called with the number of each step whose verb is due.
    Play(Scenario const& scenario, Perform perform);

    /// Runs what is due, and closes the expectations whose time is over.
    void Advance(double now);

    void OnRequest(SeenRequest const& request, double now);

    /// The verb of a step has been refused.
    void Fail(std::size_t step, std::string const& why);

    /// Nothing more will come. `why`: "the command ended". `now` is negative when the scenario never began.
    void End(double now, std::string const& why);

    /// When Advance() is due; nothing while only requests can go on.
    std::optional<double> Next() const;

    /// Every step has run, and every expectation is decided.
    bool IsOver() const;

    Scenario const& Steps() const { return m_scenario; }
    Outcome const& Of(std::size_t step) const { return m_outcomes[step]; }

    /// An expectation did not come true, or a verb was refused.
    bool HasFailed() const;

private:
    struct Window
    {
        double end = 0;
        std::vector<std::string> similar; ///< requests with the same function, and when
        std::size_t others = 0;           ///< other requests
    };

    void Run(std::size_t step, double now);
    void Decide(std::size_t step, Outcome::State state, double now, std::string const& seen);
    void Close(std::size_t step);
    void Judge(std::size_t step, SeenRequest const& request, double now);
    std::string WhatCame(std::size_t step) const;

    Scenario const& m_scenario;
    Perform m_perform;
    std::vector<Outcome> m_outcomes; ///< one for each step, as m_windows
    std::vector<Window> m_windows;
    std::vector<std::size_t> m_timetable; ///< the steps without a trigger, by their times
    std::size_t m_next = 0;               ///< the first one of these that has not run
};

} // namespace zviptv::sim
