// SPDX-License-Identifier: MIT
#pragma once

#include "playback/SimulatedClock.h"

#include <optional>

namespace zviptv::sim {

/// The time of a scenario: seconds on the simulated clock since the service was ready. It runs at the clock's
/// speed, stands while the clock is paused, and follows a seek; but not when the scenario itself pauses or
/// seeks, so that a later step can end that. It runs on while the service is dead. Not thread-safe.
class ScenarioClock
{
public:
    using State = SimulatedClock::State;

    explicit ScenarioClock(SimulatedClock::Now now = &SimulatedClock::Real::now);

    /// It is second 0 now.
    void Start(State const& state);

    /// The service's clock has changed. `isSought`: by a seek that the scenario follows.
    void Follow(State const& state, bool isSought);

    /// The scenario itself is about to pause the clock.
    void NotePause() { m_isOwnPause = !m_told.paused; }

    double Seconds() const;

    /// How long it takes until that second; nothing while the time stands.
    std::optional<std::chrono::nanoseconds> Until(double second) const;

private:
    SimulatedClock m_clock;
    State m_told;
    SimulatedClock::Time m_zero;
    bool m_isOwnPause = false;
};

} // namespace zviptv::sim
