// SPDX-License-Identifier: MIT
#include "SimulatedClock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zviptv::sim {

namespace {

using std::chrono::nanoseconds;

constexpr std::int64_t Second = 1'000'000'000;
constexpr double Longest = 3.15e17; // ten years, so that no conversion overflows

std::int64_t Scaled(std::int64_t duration, double factor)
{
    return std::llround(std::clamp(static_cast<double>(duration) * factor, -Longest, Longest));
}

std::int64_t Count(SimulatedClock::Time time)
{
    return nanoseconds(time.time_since_epoch()).count();
}

std::int64_t FloorSeconds(std::int64_t time)
{
    return time >= 0 ? time / Second : -((Second - 1 - time) / Second);
}

std::int64_t RealUnixTime()
{
    return nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

} // namespace

SimulatedClock::SimulatedClock(double speed, std::optional<std::int64_t> unixTime, Now realNow)
    : m_realNow(std::move(realNow))
{
    m_state.real = m_state.simulated = Count(m_realNow());
    m_state.unixOffset = (unixTime ? *unixTime * Second : RealUnixTime()) - m_state.simulated;
    m_state.speed = speed;
}

SimulatedClock::Time SimulatedClock::Shows() const
{
    std::int64_t const passed = m_state.paused ? 0 : Scaled(Count(m_realNow()) - m_state.real, m_state.speed);
    return Time(std::chrono::duration_cast<Real::duration>(nanoseconds(m_state.simulated + passed)));
}

std::int64_t SimulatedClock::UnixTime() const
{
    return FloorSeconds(Count(Shows()) + m_state.unixOffset);
}

double SimulatedClock::UnixTimeAt(Time time) const
{
    return static_cast<double>(Count(time) + m_state.unixOffset) / static_cast<double>(Second);
}

void SimulatedClock::SetUnixTime(std::int64_t seconds)
{
    m_state.unixOffset = seconds * Second - Count(Shows());
}

/// Starts a new segment of the clock at the present time.
void SimulatedClock::StartSegment()
{
    m_state.simulated = Count(Shows());
    m_state.real = Count(m_realNow());
}

void SimulatedClock::SetSpeed(double speed)
{
    StartSegment();
    m_state.speed = speed;
}

void SimulatedClock::Pause(bool on)
{
    StartSegment();
    m_state.paused = on;
}

void SimulatedClock::Jump(nanoseconds distance)
{
    StartSegment();
    m_state.simulated += distance.count();
}

std::optional<nanoseconds> SimulatedClock::Until(Time time) const
{
    nanoseconds const left = time - Shows();
    if (left.count() <= 0) {
        return nanoseconds(0);
    }
    if (m_state.paused) {
        return std::nullopt;
    }
    return nanoseconds(Scaled(left.count(), 1 / m_state.speed));
}

} // namespace zviptv::sim
