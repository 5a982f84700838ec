// SPDX-License-Identifier: MIT
#include "stream/VideoUsability.h"

namespace zviptv::sim {

namespace {

Ratio PixelAspectOf(BitReader& bits)
{
    constexpr Ratio Aspects[] = {{0, 0},   {1, 1},    {12, 11}, {10, 11}, {16, 11}, {40, 33},
                                 {24, 11}, {20, 11},  {32, 11}, {80, 33}, {18, 11}, {15, 11},
                                 {64, 33}, {160, 99}, {4, 3},   {3, 2},   {2, 1}};
    constexpr std::uint32_t Extended = 255;
    std::uint32_t const code = bits.Bits(8);
    if (code == Extended) {
        std::uint32_t const horizontal = bits.Bits(16);
        return {horizontal, bits.Bits(16)};
    }
    return code < std::size(Aspects) ? Aspects[code] : Ratio{};
}

} // namespace

void ReadDisplay(BitReader& bits, VideoFormat& format)
{
    if (bits.Flag()) {
        Ratio const pixel = PixelAspectOf(bits);
        if (bits.Ok() && pixel.numerator != 0) {
            format.displayAspect = Reduce(std::uint64_t{format.width} * pixel.numerator,
                                          std::uint64_t{format.height} * pixel.denominator);
        }
    }
    if (bits.Flag()) { // overscan
        bits.Skip(1);
    }
    if (bits.Flag()) { // video signal
        bits.Skip(4);
        bits.Skip(bits.Flag() ? 24 : 0);
    }
    if (bits.Flag()) { // chroma location
        bits.Ue();
        bits.Ue();
    }
}

void ReadTiming(BitReader& bits, unsigned ticks, VideoFormat& format)
{
    if (!bits.Flag()) {
        return;
    }
    std::uint64_t const unitsInTick = bits.Bits(32);
    std::uint32_t const scale = bits.Bits(32);
    if (bits.Ok()) {
        format.frameRate = Reduce(scale, unitsInTick * ticks);
    }
}

} // namespace zviptv::sim
