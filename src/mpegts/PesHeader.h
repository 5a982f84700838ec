// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <optional>

namespace zviptv {

/// The header of a PES packet.
struct PesHeader
{
    std::uint8_t streamId = 0;
    std::uint16_t length = 0;         ///< PES_packet_length; 0 for a packet of unspecified length
    std::optional<std::uint64_t> pts; ///< 90 kHz, 33 bits
    std::optional<std::uint64_t> dts; ///< 90 kHz, 33 bits; only if it differs from the PTS
    bool isWhole = false;             ///< the header has the format of MPEG-2 and ends within the packet
    ByteView payload;                 ///< the bytes from the end of the header to the end of the packet

    std::optional<std::uint64_t> DecodingTime() const { return dts ? dts : pts; }
};

/// Returns nullopt if the bytes do not begin with a start code and six bytes. A time stamp is left out if its
/// marker bits are wrong or it does not fit into the header. The payload points into `pes`.
std::optional<PesHeader> ParsePesHeader(ByteView pes);

} // namespace zviptv
