// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <array>
#include <optional>

namespace zviptv {

constexpr std::size_t TsPacketSize = 188;
constexpr std::size_t TsHeadSize = 4; ///< up to the adaptation field
constexpr std::uint8_t TsSyncByte = 0x47;
constexpr std::uint16_t NullPid = 0x1FFF;

/// The bytes of one transport packet.
using TsBytes = std::array<std::uint8_t, TsPacketSize>;

/// The header of a transport packet. `payload` points into the packet's bytes.
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

/// Returns nullopt if the header is invalid: no sync byte, a reserved adaptation field control, or an
/// adaptation field that is longer than the packet.
std::optional<TsPacket> ParseTsPacket(TsBytes const& bytes);

} // namespace zviptv
