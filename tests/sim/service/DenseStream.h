// SPDX-License-Identifier: MIT
#pragma once

#include "../stream/StreamBuilder.h"

#include <string>

namespace zviptv::test {

/// Ten packets a second and stream of video, audio and teletext subtitles, or as many as wanted; every packet
/// differs from all others.
struct DensePlan
{
    std::size_t perSecond = 10;
    std::size_t videoBytes = 1500;
    std::size_t seconds = 4;
};

constexpr std::uint16_t DenseVideo = 0x100;
constexpr std::uint16_t DenseAudio = 0x101;
constexpr std::uint16_t DenseTeletext = 0x102;

/// Writes it to a file; returns its bytes.
Bytes WriteDenseStream(std::string const& path, DensePlan const& plan);

} // namespace zviptv::test
