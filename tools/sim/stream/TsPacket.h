// SPDX-License-Identifier: MIT
#pragma once

#include "stream/ByteView.h"

#include <array>
#include <optional>
#include <stdexcept>

namespace zviptv::sim {

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

/// A stream cannot be opened, read or played; what() is one line for the user, file name included.
class StreamError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads packet after packet.
class PacketSource
{
public:
    virtual ~PacketSource() = default;

    /// False at the end and, as long as HasEnded() is false, when no packet has come yet.
    /// @throws StreamError when reading fails
    virtual bool Read(TsBytes& packet) = 0;

    /// No packet will come any more. Meaningful after Read() has returned false.
    virtual bool HasEnded() const { return true; }

    /// The sender sets the pace, and nothing can be read twice.
    virtual bool IsLive() const { return false; }

    /// Back to the first packet. @throws StreamError when that is impossible.
    virtual void Rewind() = 0;
};

} // namespace zviptv::sim
