// SPDX-License-Identifier: MIT
#pragma once

#include "StreamCoding.h"

#include "mpegts/TsWriter.h"

#include <map>
#include <set>
#include <vector>

namespace zviptv::ctl {

/// Packs PES packets into a transport stream with one programme. A stream begins with the first packet that
/// shows its coding; PAT and PMT come before it, and again every 100 ms. The PCR has a separate PID and is 1
/// s before the latest DTS of video or audio.
class TransportStream
{
public:
    using Bytes = TsWriter::Bytes;

    static constexpr std::uint16_t PcrPid = 0x1FFE;

    /// The transport packets for a PES packet whose header this is; `type` is an EZVPESType.
    Bytes Pack(std::uint16_t pid, std::int32_t type, PesHeader const& header, Bytes const& packet);

    /// PIDs whose coding no packet has shown, and those that PAT, PMT, PCR and null packets use.
    std::set<std::uint16_t> const& LeftOut() const { return m_leftOut; }

private:
    bool AcceptStream(std::uint16_t pid, std::int32_t type, PesHeader const& header);
    void AddTables(Bytes& out);
    void AddUnit(std::uint16_t pid, Bytes const& unit, Bytes& out, std::optional<std::uint64_t> clock);
    void AddClock(std::uint64_t clock, bool isDiscontinuous, Bytes& out);

    TsWriter m_writer;
    std::map<std::uint16_t, StreamCoding> m_streams;
    std::set<std::uint16_t> m_leftOut;
    std::uint8_t m_version = 0;
    bool m_hasClockedStream = false;         ///< whether there is video or audio
    std::optional<std::uint64_t> m_reached;  ///< latest DTS of video or audio, minus 1 s
    std::uint64_t m_clock = 0;               ///< the last PCR
    std::optional<std::uint64_t> m_tablesAt; ///< clock when the tables were last written
};

} // namespace zviptv::ctl
