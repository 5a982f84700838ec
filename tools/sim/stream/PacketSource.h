// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/TsPacket.h"

#include <stdexcept>

namespace zviptv::sim {

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
