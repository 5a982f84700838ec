// SPDX-License-Identifier: MIT
#pragma once

#include "stream/BitReader.h"
#include "stream/VideoFormat.h"

namespace zviptv::sim {

// The parts of the video usability information that H.264 and HEVC have in common. What is cut off stays
// untold.

/// Reads its beginning, up to the chroma location, and sets the display aspect.
void ReadDisplay(BitReader& bits, VideoFormat& format);

/// Reads its timing and sets the frame rate; a frame takes `ticks`.
void ReadTiming(BitReader& bits, unsigned ticks, VideoFormat& format);

} // namespace zviptv::sim
