// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>

namespace zviptv::sim {

/// Interarrival jitter of RTP packets with a clock of 90 kHz (RFC 3550, 6.4.1 and A.8).
class RtpJitter
{
public:
    /// `arrival`: microseconds of any clock.
    void Add(std::int64_t arrival, std::uint32_t timestamp)
    {
        double const ticks = static_cast<double>(arrival) * 0.09;
        if (m_arrival) {
            double const way = (ticks - *m_arrival) - static_cast<std::int32_t>(timestamp - m_timestamp);
            m_jitter += (std::abs(way) - m_jitter) / 16;
        }
        m_arrival = ticks;
        m_timestamp = timestamp;
    }

    /// Starts again: the next packet is independent of the previous ones.
    void Restart() { m_arrival.reset(); }

    std::uint32_t Microseconds() const { return static_cast<std::uint32_t>(std::lround(m_jitter / 0.09)); }

private:
    std::optional<double> m_arrival; ///< arrival of the previous packet, in ticks
    std::uint32_t m_timestamp = 0;
    double m_jitter = 0; ///< ticks
};

} // namespace zviptv::sim
