// SPDX-License-Identifier: MIT
#include "ScenarioClock.h"

#include <utility>

namespace zviptv::sim {

ScenarioClock::ScenarioClock(SimulatedClock::Now now) : m_clock(1.0, 0, std::move(now)) {}

void ScenarioClock::Start(State const& state)
{
    m_told = state;
    m_clock.Continue(state);
    m_zero = m_clock.Shows();
}

/// Other jumps come from a reset, or from a new service that starts with a new clock.
void ScenarioClock::Follow(State const& state, bool isSought)
{
    m_isOwnPause = m_isOwnPause && (state.paused || !m_told.paused);
    m_told = state;
    SimulatedClock::Time const before = m_clock.Shows();
    State followed = state;
    followed.paused = state.paused && !m_isOwnPause;
    m_clock.Continue(followed);
    if (!isSought) {
        m_zero += m_clock.Shows() - before;
    }
}

double ScenarioClock::Seconds() const
{
    return std::chrono::duration<double>(m_clock.Shows() - m_zero).count();
}

std::optional<std::chrono::nanoseconds> ScenarioClock::Until(double second) const
{
    return m_clock.Until(
        m_zero + std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(second)));
}

} // namespace zviptv::sim
