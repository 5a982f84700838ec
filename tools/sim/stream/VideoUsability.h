// SPDX-License-Identifier: MIT
#pragma once

#include "stream/BitReader.h"
#include "stream/VideoFormat.h"

namespace zviptv::sim {

// The parts of the video usability information that H.264 and HEVC have in common. Truncated values are not
// set.

/// Reads the beginning, up to the chroma location, and sets the display aspect ratio.
void ReadDisplay(BitReader& bits, VideoFormat& format);

/// Reads the timing and sets the frame rate; a frame has `ticks`.
void ReadTiming(BitReader& bits, unsigned ticks, VideoFormat& format);

} // namespace zviptv::sim
