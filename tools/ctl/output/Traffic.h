// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zviptv::ctl {

/// Counts arriving packets and bytes.
class Traffic
{
public:
    using Clock = std::chrono::steady_clock;

    explicit Traffic(Clock::time_point start = Clock::now());

    void Add(std::size_t bytes);

    /// Sets the rate from the data that arrived since the last call.
    void Measure(Clock::time_point now = Clock::now());

    std::uint64_t Packets() const { return m_packets; }
    std::uint64_t Bytes() const { return m_bytes; }
    double BytesPerSecond() const { return m_rate; }

    /// "12 packets, 24576 bytes, 8.2 kB/s"
    std::string Now() const;

    /// "12 packets, 24576 bytes in 3.0 s (8.2 kB/s)"
    std::string Summary(Clock::time_point now = Clock::now()) const;

private:
    Clock::time_point m_start;
    Clock::time_point m_measured;
    std::uint64_t m_packets = 0;
    std::uint64_t m_bytes = 0;
    std::uint64_t m_bytesAtMeasure = 0;
    double m_rate = 0;
};

/// "8.2 kB/s"
std::string RateText(double bytesPerSecond);

} // namespace zviptv::ctl
