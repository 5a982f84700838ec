// SPDX-License-Identifier: MIT
#pragma once

#include "Traffic.h"

#include <json/value.h>

#include <map>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// Traffic of every PID and in total.
class PidTraffic
{
public:
    using Clock = Traffic::Clock;

    explicit PidTraffic(Clock::time_point start = Clock::now());

    void Add(std::uint16_t pid, std::size_t bytes);

    /// Sets all rates from the data that arrived since the last call; they add up to the total.
    void Measure(Clock::time_point now = Clock::now());

    /// "12 packets, 24576 bytes, 8.2 kB/s; 0x0100: 12 packets, 8.2 kB/s"
    std::string Text() const;

    /// "12 packets, 8.2 kB/s"
    std::string Total() const;

    /// The rates in kB/s, for use after the total: ": 0x0100 6.1", ", 0x0101 2.1"
    std::vector<std::string> Rates() const;

    /// Adds "packets", "bytes", "bytesPerSecond" and the same for every entry of "pids".
    void AddTo(Json::Value& object) const;

private:
    Clock::time_point m_measured;
    Traffic m_all;
    std::map<std::uint16_t, Traffic> m_pids;
};

} // namespace zviptv::ctl
