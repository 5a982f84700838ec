// SPDX-License-Identifier: MIT
#pragma once

#include "stream/VideoFormat.h"

namespace zviptv::sim {

/// The format in an H.264 sequence parameter set. `bytes` are those of a PES packet after its header.
std::optional<VideoFormat> ParseH264Sps(ByteView bytes);

} // namespace zviptv::sim
