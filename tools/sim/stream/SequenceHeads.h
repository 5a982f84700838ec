#pragma once

#include "stream/VideoFormat.h"

namespace zviptv::sim {

/// Each takes the elementary stream bytes of a PES packet, as they follow its head.
std::optional<VideoFormat> ParseMpegSequence(ByteView bytes);
std::optional<VideoFormat> ParseH264Sps(ByteView bytes);
std::optional<VideoFormat> ParseHevcSps(ByteView bytes);

} // namespace zviptv::sim
