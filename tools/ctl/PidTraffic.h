#pragma once

#include "Traffic.h"

#include <json/value.h>

#include <map>
#include <string>

namespace zviptv::ctl {

/// Traffic of every PID and of all together.
class PidTraffic
{
public:
    void Add(std::uint16_t pid, std::size_t bytes);
    void Measure();

    /// "12 packets, 24576 bytes, 8.2 kB/s; 0x0100: 12 packets, 8.2 kB/s"
    std::string Text() const;

    /// Adds "packets", "bytes", "bytesPerSecond" and the same for every entry of "pids".
    void AddTo(Json::Value& object) const;

private:
    Traffic m_all;
    std::map<std::uint16_t, Traffic> m_pids;
};

} // namespace zviptv::ctl
