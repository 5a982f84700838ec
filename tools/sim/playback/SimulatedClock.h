// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace zviptv::sim {

/// The one clock of the simulator: the stream's position, the guide's clock and the time in GetFirstPTS
/// follow it. It runs at a speed, can be paused, and jumps with a seek. At normal speed it shows the steady
/// clock. Not thread-safe.
class SimulatedClock
{
public:
    using Real = std::chrono::steady_clock;
    using Time = Real::time_point;
    using Now = std::function<Time()>;

    /// What is needed to go on with the clock in another process: the steady clock is the machine's.
    struct State
    {
        std::int64_t real = 0;       ///< nanoseconds on the steady clock
        std::int64_t simulated = 0;  ///< nanoseconds on this clock at that time
        std::int64_t unixOffset = 0; ///< nanoseconds from this clock to the guide's
        double speed = 1;
        bool paused = false;
    };

    /// `unixTime`: what the guide's clock shows now, seconds since 1970; the real time when empty.
    SimulatedClock(double speed, std::optional<std::int64_t> unixTime, Now realNow = &Real::now);

    Time Shows() const;
    /// The guide's clock, seconds since 1970.
    std::int64_t UnixTime() const;
    /// What the guide's clock shows when this one shows `time`.
    double UnixTimeAt(Time time) const;
    void SetUnixTime(std::int64_t seconds);

    double Speed() const { return m_state.speed; }
    void SetSpeed(double speed);
    bool IsPaused() const { return m_state.paused; }
    void Pause(bool on);
    /// A seek: forwards, or backwards when negative.
    void Jump(std::chrono::nanoseconds distance);

    /// How long it takes until the clock shows `time`: zero or less when it does; nothing while it is paused.
    std::optional<std::chrono::nanoseconds> Until(Time time) const;

    State const& Keep() const { return m_state; }
    void GoOn(State const& state) { m_state = state; }

private:
    void Settle();

    Now m_realNow;
    State m_state;
};

} // namespace zviptv::sim
