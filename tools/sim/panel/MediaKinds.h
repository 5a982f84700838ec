// SPDX-License-Identifier: MIT
#pragma once

#include "MediaStream.h"

namespace zviptv::sim {

/// JPEG pictures with square pixels, at most 960 pixels wide, 12.5 a second, with the selected DVB or
/// teletext subtitle.
MediaStream::Kind PictureKind();

/// Sound as pairs of 16-bit samples, left and right, little endian, 48000 a second.
MediaStream::Kind SoundKind();

/// Takes the first complete JPEG picture and the bytes before it; empty if there is none yet.
std::string TakeJpeg(std::string& bytes);

} // namespace zviptv::sim
