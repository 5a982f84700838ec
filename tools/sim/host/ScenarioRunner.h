// SPDX-License-Identifier: MIT
#pragma once

#include "Control.h"
#include "ScenarioClock.h"
#include "Signals.h"
#include "process/FileHandle.h"
#include "scenario/Play.h"
#include "verbs/Verbs.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zviptv::sim {

/// The scenario to run, and the place of the report.
struct ScenarioOptions
{
    std::optional<Scenario> scenario;
    FileHandle junit; ///< open for writing, if a report was requested
    std::string junitName;
    bool showsSteps = false;                 ///< whether steps are shown on standard error
    std::function<void(Play const&)> onOver; ///< gets the report, which is otherwise printed
};

/// Runs a scenario, if there is one, and writes the report. Everything happens on the thread of `control`.
class ScenarioRunner
{
public:
    ScenarioRunner(ScenarioOptions options, Control& control);
    ~ScenarioRunner();
    ScenarioRunner(ScenarioRunner const&) = delete;
    ScenarioRunner& operator=(ScenarioRunner const&) = delete;

    /// Call it when the service is ready: it is second 0.
    void Start();

    /// Advance() is due at Change(), and after everything that was dispatched.
    Signals::Clock::time_point Change() const;
    void Advance();

    /// Ends the scenario for this reason: waits until the service has reported all requests, and writes the
    /// report. Returns the exit status of the simulator, which would be `status` without the scenario.
    int Finish(int status, std::string const& why, Signals const& signals);

    /// The same without waiting and without an exit status.
    void End(std::string const& why);

    /// Everything was reported.
    bool IsOver() const { return m_hasReported; }

private:
    void Follow(bool isSought);
    void PerformQueued();
    void Perform(std::size_t step, verbs::Command const& command);
    void OnAnswered(std::size_t step, GError const* error);
    void Fail(std::size_t step, char const* why);
    void AwaitRequests(Signals const& signals);
    void Report();

    ScenarioOptions m_options;
    Control& m_control;
    ScenarioClock m_clock;
    std::optional<Play> m_play;
    std::deque<std::size_t> m_queue; ///< steps whose verbs are due
    std::size_t m_unanswered = 0;    ///< unanswered calls for verbs
    bool m_hasStarted = false;
    bool m_hasReported = false;
    bool m_isWritten = true; ///< whether the report was written completely
    std::shared_ptr<ScenarioRunner> m_self{this, [](ScenarioRunner*) {}}; ///< ends with this, unlike calls
};

} // namespace zviptv::sim
