// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/TsPacket.h"

#include <stdexcept>

namespace zviptv::sim {

/// A stream cannot be opened, read or played; what() is one line for the user, with the file name.
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

    /// Returns false at the end and, while HasEnded() is false, if no packet has arrived yet.
    /// @throws StreamError if reading fails
    virtual bool Read(TsBytes& packet) = 0;

    /// Whether no more packets will arrive. Only valid after Read() has returned false.
    virtual bool HasEnded() const { return true; }

    /// Whether the sender sets the pace and data cannot be read again.
    virtual bool IsLive() const { return false; }

    /// Goes back to the first packet. @throws StreamError if that is impossible.
    virtual void Rewind() = 0;
};

} // namespace zviptv::sim
