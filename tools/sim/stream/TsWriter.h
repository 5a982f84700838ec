// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ByteView.h"

#include <cstdint>
#include <map>
#include <vector>

namespace zviptv::sim {

/// Puts one programme into transport packets. Not thread-safe.
class TsWriter
{
public:
    /// An entry of the PMT.
    struct Stream
    {
        std::uint16_t pid = 0;
        std::uint8_t streamType = 0;
        std::vector<std::uint8_t> descriptors; ///< tags and lengths included
    };

    /// Appends a PAT, and a PMT with these streams, of which the first one names the clock.
    void AddTables(std::vector<std::uint8_t>& out, std::vector<Stream> const& streams);

    /// Appends a whole PES packet.
    void AddPes(std::vector<std::uint8_t>& out, std::uint16_t pid, ByteView pes);

private:
    void AddUnit(std::vector<std::uint8_t>& out, std::uint16_t pid, ByteView unit);
    void AddSection(std::vector<std::uint8_t>& out, std::uint16_t pid, std::uint8_t table,
                    std::vector<std::uint8_t> const& body);

    std::map<std::uint16_t, std::uint8_t> m_counters; ///< continuity, by PID
};

} // namespace zviptv::sim
