// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/ByteView.h"

#include <optional>

namespace zviptv {

/// What the head of a PES packet says.
struct PesHeader
{
    std::uint8_t streamId = 0;
    std::uint16_t length = 0;         ///< PES_packet_length; 0 for a packet of open length
    std::optional<std::uint64_t> pts; ///< 90 kHz, 33 bits
    std::optional<std::uint64_t> dts; ///< 90 kHz, 33 bits; only where it differs from the PTS
    bool isWhole = false;             ///< the head has the form of MPEG-2 and ends within the packet
    ByteView payload;                 ///< the bytes from the end of the head to the end of the packet

    std::optional<std::uint64_t> DecodingTime() const { return dts ? dts : pts; }
};

/// Nothing when the bytes do not begin with a start code and six bytes. A time stamp whose marker bits are
/// wrong or that does not fit into the head is left out. The payload points into `pes`.
std::optional<PesHeader> ParsePesHeader(ByteView pes);

} // namespace zviptv
