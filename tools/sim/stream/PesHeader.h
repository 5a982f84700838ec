// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ByteView.h"

#include <optional>

namespace zviptv::sim {

/// What the head of a PES packet says.
struct PesHeader
{
    std::uint8_t streamId = 0;
    std::uint16_t length = 0;         ///< PES_packet_length; 0 for a packet of open length
    std::optional<std::uint64_t> pts; ///< 90 kHz, 33 bits
    std::optional<std::uint64_t> dts; ///< 90 kHz, 33 bits; only where it differs from the PTS
    std::size_t payloadOffset = 6;    ///< never past the end of the bytes given
};

/// Nothing when the bytes do not begin with a start code and six bytes. A time stamp whose marker bits are
/// wrong or that does not fit into the head is left out.
std::optional<PesHeader> ParsePesHeader(ByteView pes);

} // namespace zviptv::sim
