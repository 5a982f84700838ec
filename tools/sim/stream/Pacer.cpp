// SPDX-License-Identifier: MIT
#include "stream/Pacer.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace zviptv::sim {

namespace {

using Seconds = std::chrono::duration<double>;

/// Limited to ten years in both directions, so that no conversion overflows.
template <typename Duration>
Duration ToDuration(double seconds)
{
    constexpr double Longest = 3.15e8;
    return std::chrono::duration_cast<Duration>(Seconds(std::clamp(seconds, -Longest, Longest)));
}

} // namespace

Pacer::Pacer(double speed, Now now) : m_speed(speed), m_now(std::move(now)), m_origin(m_now())
{
    if (!std::isfinite(speed) || speed <= 0) {
        throw std::invalid_argument("the speed must be a number above 0");
    }
}

void Pacer::Start(StreamTime at)
{
    m_origin = m_now();
    m_start = at;
}

Pacer::Clock::time_point Pacer::DueAt(StreamTime time) const
{
    return m_origin + ToDuration<Clock::duration>(Seconds(time - m_start).count() / m_speed);
}

StreamTime Pacer::StreamNow() const
{
    return m_start + ToDuration<StreamTime>(Seconds(m_now() - m_origin).count() * m_speed);
}

std::uint64_t Pacer::StcNow() const
{
    return MoveStc(m_followed.stc, (StreamNow() - m_followed.time).count()) / 300;
}

} // namespace zviptv::sim
