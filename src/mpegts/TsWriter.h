// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <cstdint>
#include <map>
#include <vector>

namespace zviptv {

/// Writes the transport packets of one programme. Each function appends to `out`. Not thread-safe.
class TsWriter
{
public:
    using Bytes = std::vector<std::uint8_t>;

    static constexpr std::uint16_t PmtPid = 0x1FFD;

    /// An entry of the PMT.
    struct Stream
    {
        std::uint16_t pid = 0;
        std::uint8_t streamType = 0;
        Bytes descriptors; ///< tags and lengths included
    };

    /// A PAT, and a PMT of this version, 0 to 31.
    void AddTables(Bytes& out, std::vector<Stream> const& streams, std::uint16_t pcrPid,
                   std::uint8_t version = 0);

    /// Writes a complete PES packet.
    void AddPes(Bytes& out, std::uint16_t pid, ByteView pes);

    /// One transport packet with the bytes of a PES packet from `begin` on. Returns how many bytes it holds.
    std::size_t AddPart(Bytes& out, std::uint16_t pid, ByteView pes, std::size_t begin);

    /// Writes a packet without a payload, which the continuity counter does not count. `clock` has units of
    /// 1/90000 s and 33 bits.
    static void AddClock(Bytes& out, std::uint16_t pid, std::uint64_t clock, bool isDiscontinuous);

private:
    void AddSection(Bytes& out, std::uint16_t pid, std::uint8_t table, std::uint8_t version,
                    Bytes const& body);

    std::map<std::uint16_t, std::uint8_t> m_counters; ///< continuity, by PID
};

} // namespace zviptv
