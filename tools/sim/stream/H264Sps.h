// SPDX-License-Identifier: MIT
#pragma once

#include "stream/VideoFormat.h"

namespace zviptv::sim {

/// The format that an H.264 sequence parameter set tells. `bytes` are those of a PES packet after its head.
std::optional<VideoFormat> ParseH264Sps(ByteView bytes);

} // namespace zviptv::sim
