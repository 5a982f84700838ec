#pragma once

#include "stream/AudioFormat.h"

namespace zviptv::sim {

/// One frame of audio.
struct AudioFrame
{
    std::size_t size = 0;              ///< in bytes, head included; never 0
    std::optional<AudioFormat> format; ///< nothing where the frame refers to one before it
};

// Each reads the frame that begins with the first byte; nothing when none does. It may end past the bytes
// given.

std::optional<AudioFrame> ParseMpegAudioFrame(ByteView bytes);
std::optional<AudioFrame> ParseAdtsFrame(ByteView bytes);
std::optional<AudioFrame> ParseLatmFrame(ByteView bytes);

/// AC-3 and E-AC-3, told apart by the frame itself.
std::optional<AudioFrame> ParseAc3Frame(ByteView bytes);

} // namespace zviptv::sim
