// SPDX-License-Identifier: MIT
#pragma once

#include "stream/VideoFormat.h"

namespace zviptv::sim {

/// The format that an MPEG-1 or MPEG-2 sequence head tells. `bytes` are those of a PES packet after its head.
std::optional<VideoFormat> ParseMpegSequence(ByteView bytes);

} // namespace zviptv::sim
