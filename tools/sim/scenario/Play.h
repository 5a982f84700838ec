// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// The outcome of a step.
struct Outcome
{
    enum class State
    {
        Waiting, ///< its time or its request has not arrived
        Open,    ///< an expectation whose time is running
        Met,     ///< an expectation that was met, or a verb that ran
        Unmet,   ///< an expectation that was not met
        Failed   ///< a verb that was refused
    };

    State state = State::Waiting;
    double begin = 0; ///< scenario time when it ran
    double took = 0;  ///< seconds until it was decided
    std::string seen; ///< in words
};

/// A running scenario: determines which verbs are due, and checks the requests of applications. It has no
/// clock: every call passes the scenario time, in seconds. Not thread-safe.
class Play
{
public:
    using Perform = std::function<void(std::size_t step)>;

    /// `perform` is called with the number of each step whose verb is due.
    Play(Scenario const& scenario, Perform perform);

    /// Runs the steps that are due, and closes the expectations whose time is over.
    void Advance(double now);

    void OnRequest(SeenRequest const& request, double now);

    /// Call it when the verb of a step was refused.
    void Fail(std::size_t step, std::string const& why);

    /// Ends the scenario. `why`: "the command ended". `now` is negative if the scenario never began.
    void End(double now, std::string const& why);

    /// The time at which Advance() is due; nullopt while only requests can continue the scenario.
    std::optional<double> Next() const;

    /// Whether every step has run and every expectation is decided.
    bool IsOver() const;

    Scenario const& Steps() const { return m_scenario; }
    Outcome const& Of(std::size_t step) const { return m_outcomes[step]; }

    /// Whether an expectation was not met, or a verb was refused.
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
    std::string SeenRequests(std::size_t step) const;

    Scenario const& m_scenario;
    Perform m_perform;
    std::vector<Outcome> m_outcomes; ///< one for each step, like m_windows
    std::vector<Window> m_windows;
    std::vector<std::size_t> m_timetable; ///< the steps without a trigger, by their times
    std::size_t m_next = 0;               ///< the first one of these that has not run
};

} // namespace zviptv::sim
