// SPDX-License-Identifier: MIT
#pragma once

#include "stream/VideoFormat.h"

namespace zviptv::sim {

/// The format in an HEVC sequence parameter set. `bytes` are those of a PES packet after its header.
std::optional<VideoFormat> ParseHevcSps(ByteView bytes);

} // namespace zviptv::sim
