// SPDX-License-Identifier: MIT
#pragma once

#include "stream/VideoFormat.h"

namespace zviptv::sim {

/// The format that an HEVC sequence parameter set tells. `bytes` are those of a PES packet after its head.
std::optional<VideoFormat> ParseHevcSps(ByteView bytes);

} // namespace zviptv::sim
