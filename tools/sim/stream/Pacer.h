// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ClockPoint.h"

#include <functional>

namespace zviptv::sim {

/// Calculates when an event of a stream is due on the steady clock, and the present STC. It never sleeps. Not
/// thread-safe.
class Pacer
{
public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;

    /// @param speed stream seconds per second: 1 is real time, above 0
    /// @throws std::invalid_argument if speed is not a finite number above 0
    explicit Pacer(double speed = 1.0, Now now = &Clock::now);

    /// Sets the stream time of the present moment to `at`. Before the first call, stream time 0 is the moment
    /// of construction.
    void Start(StreamTime at);

    Clock::time_point DueAt(StreamTime time) const;
    bool IsDue(StreamTime time) const { return DueAt(time) <= m_now(); }

    StreamTime StreamNow() const;

    /// Sets the STC from an event that was just delivered.
    void Follow(ClockPoint const& delivered) { m_followed = delivered; }

    /// STC of the last delivered event, in 90 kHz, 33 bits.
    std::uint64_t LastStc() const { return m_followed.stc / 300; }

    /// Present STC, in 90 kHz, 33 bits. Between events it continues at the stream's speed.
    std::uint64_t StcNow() const;

private:
    double m_speed;
    Now m_now;
    Clock::time_point m_origin;
    StreamTime m_start{};
    ClockPoint m_followed;
};

} // namespace zviptv::sim
