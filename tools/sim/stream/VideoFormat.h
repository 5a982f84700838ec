// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"

namespace zviptv::sim {

/// A quotient in lowest terms; 0/0 if it is unknown.
struct Ratio
{
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 0;
};

/// The picture format in the header of a video sequence.
struct VideoFormat
{
    std::uint32_t width = 0;  ///< of the visible picture, after cropping
    std::uint32_t height = 0; ///< of a whole frame, both fields
    Ratio frameRate;          ///< frames per second
    Ratio displayAspect;      ///< 16/9, 4/3, …
    bool interlaced = false;  ///< fields may be coded one by one
};

/// The largest width and height of a picture.
constexpr std::uint32_t LargestVideoSide = 16384;

/// Finds a sequence header in a PES packet; returns nullopt for a picture without one, or an unknown format.
/// HEVC fields that are separate pictures count as pictures.
std::optional<VideoFormat> ParseVideoFormat(VideoCodec codec, ByteView pes);

/// n/d in lowest terms; 0/0 if either is 0 or does not fit.
Ratio Reduce(std::uint64_t numerator, std::uint64_t denominator);

} // namespace zviptv::sim
