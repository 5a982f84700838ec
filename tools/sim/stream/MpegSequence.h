// SPDX-License-Identifier: MIT
#pragma once

#include "stream/VideoFormat.h"

namespace zviptv::sim {

/// The format in an MPEG-1 or MPEG-2 sequence header. `bytes` are those of a PES packet after its header.
std::optional<VideoFormat> ParseMpegSequence(ByteView bytes);

} // namespace zviptv::sim
