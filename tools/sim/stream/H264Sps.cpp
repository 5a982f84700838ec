// SPDX-License-Identifier: MIT
#include "stream/H264Sps.h"

#include "stream/NalUnit.h"
#include "stream/VideoUsability.h"

namespace zviptv::sim {

namespace {

bool HasChromaFormat(std::uint32_t profile)
{
    constexpr std::uint32_t Profiles[] = {44, 83, 86, 100, 110, 118, 122, 128, 134, 135, 138, 139, 244};
    return std::find(std::begin(Profiles), std::end(Profiles), profile) != std::end(Profiles);
}

void SkipScalingList(BitReader& bits, unsigned size)
{
    std::int64_t last = 8;
    std::int64_t next = 8;
    for (unsigned i = 0; i < size && bits.Ok(); ++i) {
        if (next != 0) {
            next = (last + bits.Se() + 256) % 256;
        }
        last = next == 0 ? last : next;
    }
}

/// Reads to the end of the scaling matrix. @return ChromaArrayType
std::uint32_t ReadChroma(BitReader& bits)
{
    std::uint32_t const chroma = bits.Ue();
    bool const separate = chroma == 3 && bits.Flag();
    bits.Ue(); // bit depths
    bits.Ue();
    bits.Skip(1); // transform bypass
    if (bits.Flag()) {
        unsigned const lists = chroma == 3 ? 12 : 8;
        for (unsigned i = 0; i < lists; ++i) {
            if (bits.Flag()) {
                SkipScalingList(bits, i < 6 ? 16 : 64);
            }
        }
    }
    return separate ? 0 : chroma;
}

void SkipPictureOrder(BitReader& bits)
{
    std::uint32_t const type = bits.Ue();
    if (type == 0) {
        bits.Ue();
    }
    if (type != 1) {
        return;
    }
    bits.Skip(1);
    bits.Se();
    bits.Se();
    std::uint32_t const cycle = bits.Ue();
    for (std::uint32_t i = 0; i < cycle && bits.Ok(); ++i) {
        bits.Se();
    }
}

/// Reads the cropped picture size in pixels; returns false if it is invalid.
bool ReadSize(BitReader& bits, std::uint32_t chroma, VideoFormat& format)
{
    std::uint64_t const width = (std::uint64_t{bits.Ue()} + 1) * 16;
    std::uint64_t const mapHeight = (std::uint64_t{bits.Ue()} + 1) * 16;
    bool const framesOnly = bits.Flag();
    if (!framesOnly) {
        bits.Skip(1);
    }
    bits.Skip(1);
    std::uint64_t const height = framesOnly ? mapHeight : mapHeight * 2;

    std::uint64_t crop[4] = {}; // left, right, top, bottom
    if (bits.Flag()) {
        for (std::uint64_t& side : crop) {
            side = bits.Ue();
        }
    }
    std::uint64_t const unitX = chroma == 1 || chroma == 2 ? 2 : 1;
    std::uint64_t const unitY = (chroma == 1 ? 2u : 1u) * (framesOnly ? 1u : 2u);
    std::uint64_t const cropX = (crop[0] + crop[1]) * unitX;
    std::uint64_t const cropY = (crop[2] + crop[3]) * unitY;
    if (!bits.Ok() || width > LargestVideoSide || height > LargestVideoSide || cropX >= width ||
        cropY >= height) {
        return false;
    }
    format.width = static_cast<std::uint32_t>(width - cropX);
    format.height = static_cast<std::uint32_t>(height - cropY);
    format.interlaced = !framesOnly;
    return true;
}

} // namespace

std::optional<VideoFormat> ParseH264Sps(ByteView bytes)
{
    constexpr std::uint8_t SequenceParameters = 7;
    auto const unit = FindUnit(bytes, [](std::uint8_t head) { return (head & 0x1F) == SequenceParameters; });
    if (!unit) {
        return std::nullopt;
    }
    auto const plain = Unescape(unit->Part(1));
    BitReader bits(plain);
    std::uint32_t const profile = bits.Bits(8);
    bits.Skip(16); // constraints and level
    bits.Ue();     // id
    std::uint32_t const chroma = HasChromaFormat(profile) ? ReadChroma(bits) : 1;
    bits.Ue(); // frame number size
    SkipPictureOrder(bits);
    bits.Ue();    // reference frames
    bits.Skip(1); // gaps
    VideoFormat format;
    if (chroma > 3 || !ReadSize(bits, chroma, format)) {
        return std::nullopt;
    }
    format.displayAspect = Reduce(format.width, format.height); // square pixels unless specified otherwise
    if (bits.Flag()) {
        ReadDisplay(bits, format);
        ReadTiming(bits, 2, format); // fields have a tick each
    }
    return format;
}

} // namespace zviptv::sim
