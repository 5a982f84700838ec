// SPDX-License-Identifier: MIT
#pragma once

#include "playback/SimulatedClock.h"

#include <optional>

namespace zviptv::sim {

/// The time of a scenario: seconds on the simulated clock since the service was ready. It runs at the clock's
/// speed, stops while the clock is paused, and follows a seek. It ignores pauses and seeks of the scenario
/// itself, so that a later step can end a pause. It continues while the service is dead. Not thread-safe.
class ScenarioClock
{
public:
    using State = SimulatedClock::State;

    explicit ScenarioClock(SimulatedClock::Now now = &SimulatedClock::Real::now);

    /// Starts the time: it is now second 0.
    void Start(State const& state);

    /// Call it after the service's clock has changed; `isSought` if it was a seek that the scenario follows.
    void Follow(State const& state, bool isSought);

    /// Call it before the scenario itself pauses the clock.
    void NotePause() { m_isOwnPause = !m_told.paused; }

    double Seconds() const;

    /// The time until that second; nullopt while the time is stopped.
    std::optional<std::chrono::nanoseconds> Until(double second) const;

private:
    SimulatedClock m_clock;
    State m_told;
    SimulatedClock::Time m_zero;
    bool m_isOwnPause = false;
};

} // namespace zviptv::sim
