// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace zviptv::sim {

/// The only clock of the simulator: the stream's position, the guide's clock and the time in GetFirstPTS
/// follow it. It runs at a speed, can be paused, and jumps with a seek. At normal speed it shows the steady
/// clock. Not thread-safe.
class SimulatedClock
{
public:
    using Real = std::chrono::steady_clock;
    using Time = Real::time_point;
    using Now = std::function<Time()>;

    /// The state with which another process can continue the clock: processes of a machine have the same
    /// steady clock.
    struct State
    {
        std::int64_t real = 0;       ///< nanoseconds on the steady clock
        std::int64_t simulated = 0;  ///< nanoseconds on this clock at that time
        std::int64_t unixOffset = 0; ///< nanoseconds from this clock to the guide's
        double speed = 1;
        bool paused = false;
    };

    /// `unixTime`: the present time of the guide's clock, seconds since 1970; the real time if empty.
    SimulatedClock(double speed, std::optional<std::int64_t> unixTime, Now realNow = &Real::now);

    Time Shows() const;
    /// The guide's clock, seconds since 1970.
    std::int64_t UnixTime() const;
    /// The time of the guide's clock when this clock shows `time`.
    double UnixTimeAt(Time time) const;
    void SetUnixTime(std::int64_t seconds);

    double Speed() const { return m_state.speed; }
    void SetSpeed(double speed);
    bool IsPaused() const { return m_state.paused; }
    void Pause(bool on);
    /// Jumps with a seek: forwards, or backwards if negative.
    void Jump(std::chrono::nanoseconds distance);

    /// The real time until the clock shows `time`: zero or less if it already does; nullopt while the clock
    /// is paused.
    std::optional<std::chrono::nanoseconds> Until(Time time) const;

    State const& Keep() const { return m_state; }
    void Continue(State const& state) { m_state = state; }

private:
    void StartSegment();

    Now m_realNow;
    State m_state;
};

} // namespace zviptv::sim
