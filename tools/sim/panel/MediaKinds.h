// SPDX-License-Identifier: MIT
#pragma once

#include "MediaStream.h"

namespace zviptv::sim {

/// JPEG pictures with square pixels, 960 wide at most, 12.5 a second; with the selected DVB or teletext
/// subtitle in them.
MediaStream::Kind PictureKind();

/// Sound as pairs of 16-bit samples, left and right, little endian, 48000 a second.
MediaStream::Kind SoundKind();

/// Takes the first whole JPEG picture from the bytes, and what comes before it; empty if there is none yet.
std::string TakeJpeg(std::string& bytes);

} // namespace zviptv::sim
