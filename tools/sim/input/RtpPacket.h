// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <optional>

namespace zviptv::sim {

/// A packet of RTP (RFC 3550). `payload` points into the datagram.
struct RtpPacket
{
    std::uint16_t sequence = 0;
    std::uint32_t timestamp = 0; ///< 90 kHz for a transport stream
    std::uint32_t source = 0;    ///< SSRC
    ByteView payload;            ///< without list of sources (CSRC), header extension and padding
};

/// Returns nullopt if the datagram is not a complete RTP packet of version 2.
std::optional<RtpPacket> ParseRtpPacket(ByteView datagram);

} // namespace zviptv::sim
