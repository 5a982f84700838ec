// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/ByteView.h"

#include <array>
#include <optional>

namespace zviptv {

constexpr std::size_t TsPacketSize = 188;
constexpr std::uint8_t TsSyncByte = 0x47;
constexpr std::uint16_t NullPid = 0x1FFF;

/// The bytes of one transport packet.
using TsBytes = std::array<std::uint8_t, TsPacketSize>;

/// What the head of a transport packet says. `payload` points into the packet's own bytes.
struct TsPacket
{
    std::uint16_t pid = NullPid;
    std::uint8_t continuity = 0;
    bool transportError = false;
    bool unitStart = false;
    bool scrambled = false;
    bool discontinuity = false;
    bool hasPayload = false;
    std::optional<std::uint64_t> pcr; ///< 27 MHz, below PcrModulus
    ByteView payload;
};

/// Nothing when the head contradicts itself: no sync byte, a reserved adaptation field control, an
/// adaptation field longer than the packet.
std::optional<TsPacket> ParseTsPacket(TsBytes const& bytes);

} // namespace zviptv
