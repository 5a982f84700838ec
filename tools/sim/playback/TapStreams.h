// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/TsWriter.h"
#include "stream/Event.h"

#include <zviptv/IPTVTypes.h>

#include <cstdint>
#include <optional>

namespace zviptv::sim {

// The streams of a programme as a decoder shall be told of them.

/// As the PMT announces it.
TsWriter::Stream StreamOf(Programme const& programme, std::uint16_t pid);

/// With this DVB subtitle as its only one.
TsWriter::Stream StreamOf(ZVHybridSBT const& subtitle);

/// Sees whether the time of a stream jumps, so that a decoder would not take it for continuous. Not
/// thread-safe.
class JumpWatch
{
public:
    /// `pes` is the next packet of the stream.
    bool JumpsAt(PesPacket const& pes);

private:
    std::optional<std::uint64_t> m_last;
};

/// Whether a video packet has the head of a sequence, so that decoding can begin with it.
bool BeginsPicture(VideoCodec codec, PesPacket const& pes);

} // namespace zviptv::sim
