// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"

namespace zviptv::sim {

/// A quotient in lowest terms; 0/0 where the stream does not tell.
struct Ratio
{
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 0;
};

/// What the head of a video sequence says about its pictures.
struct VideoFormat
{
    std::uint32_t width = 0;  ///< of the picture shown, after cropping
    std::uint32_t height = 0; ///< of a whole frame, both fields
    Ratio frameRate;          ///< frames per second
    Ratio displayAspect;      ///< 16/9, 4/3, …
    bool interlaced = false;  ///< fields may be coded one by one
};

/// No picture is wider or higher.
constexpr std::uint32_t LargestVideoSide = 16384;

/// Looks for a sequence head in a PES packet; a picture without one, or an unknown format, gives nothing.
/// HEVC whose fields are pictures of their own counts them as pictures.
std::optional<VideoFormat> ParseVideoFormat(VideoCodec codec, ByteView pes);

/// n/d in lowest terms; 0/0 if either is 0 or does not fit.
Ratio Reduce(std::uint64_t numerator, std::uint64_t denominator);

} // namespace zviptv::sim
