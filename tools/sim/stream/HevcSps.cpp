// SPDX-License-Identifier: MIT
#include "stream/HevcSps.h"

#include "stream/NalUnit.h"
#include "stream/VideoUsability.h"

namespace zviptv::sim {

namespace {

/// Profile, tier and level of the stream and of its temporal layers.
void SkipProfiles(BitReader& bits, std::uint32_t subLayers)
{
    constexpr std::size_t ProfileBits = 88;
    constexpr std::size_t LevelBits = 8;
    bits.Skip(ProfileBits + LevelBits);
    if (subLayers == 0) {
        return;
    }
    std::size_t rest = 0;
    for (std::uint32_t i = 0; i < subLayers; ++i) {
        rest += bits.Flag() ? ProfileBits : 0;
        rest += bits.Flag() ? LevelBits : 0;
    }
    bits.Skip((8 - subLayers) * 2); // the list of flags is padded to eight pairs
    bits.Skip(rest);
}

/// Reads the picture size in pixels, without the conformance window; returns false if it is invalid.
bool ReadSize(BitReader& bits, VideoFormat& format)
{
    std::uint32_t const chroma = bits.Ue();
    bool const separate = chroma == 3 && bits.Flag();
    std::uint64_t const width = bits.Ue();
    std::uint64_t const height = bits.Ue();
    std::uint64_t window[4] = {}; // left, right, top, bottom
    if (bits.Flag()) {
        for (std::uint64_t& side : window) {
            side = bits.Ue();
        }
    }
    std::uint64_t const unitX = !separate && (chroma == 1 || chroma == 2) ? 2 : 1;
    std::uint64_t const unitY = !separate && chroma == 1 ? 2 : 1;
    std::uint64_t const cropX = (window[0] + window[1]) * unitX;
    std::uint64_t const cropY = (window[2] + window[3]) * unitY;
    if (!bits.Ok() || chroma > 3 || width > LargestVideoSide || height > LargestVideoSide || cropX >= width ||
        cropY >= height) {
        return false;
    }
    format.width = static_cast<std::uint32_t>(width - cropX);
    format.height = static_cast<std::uint32_t>(height - cropY);
    return true;
}

void SkipCodes(BitReader& bits, std::uint32_t count)
{
    for (std::uint32_t i = 0; i < count && bits.Ok(); ++i) {
        bits.Ue();
    }
}

/// Lists of 4x4, 8x8, 16x16 and 32x32 factors; there are two of the last kind, not six.
void SkipScalingLists(BitReader& bits)
{
    constexpr unsigned Largest = 3;
    for (unsigned size = 0; size <= Largest; ++size) {
        for (unsigned list = 0; list < (size == Largest ? 2 : 6); ++list) {
            std::uint32_t const factors = size == 0 ? 16 : 64;
            bool const isCopy = !bits.Flag();
            SkipCodes(bits, isCopy ? 1 : factors + (size >= 2 ? 1 : 0)); // signed codes have the same length
        }
    }
}

/// Each set either lists its pictures, or selects pictures of the previous set.
void SkipReferenceSets(BitReader& bits)
{
    constexpr std::uint32_t MostSets = 64;
    constexpr std::uint32_t MostPictures = 16;
    std::uint32_t const sets = bits.Ue();
    std::uint32_t pictures = 0;
    for (std::uint32_t set = 0; set < sets && set < MostSets && bits.Ok(); ++set) {
        if (set != 0 && bits.Flag()) {
            bits.Skip(1);
            bits.Ue();
            std::uint32_t taken = 0;
            for (std::uint32_t i = 0; i <= pictures; ++i) {
                bool const isUsed = bits.Flag();
                taken += isUsed || bits.Flag() ? 1u : 0u;
            }
            pictures = taken;
        } else {
            std::uint32_t const before = std::min(bits.Ue(), MostPictures);
            pictures = before + std::min(bits.Ue(), MostPictures);
            for (std::uint32_t i = 0; i < pictures; ++i) {
                bits.Ue();
                bits.Skip(1);
            }
        }
    }
}

/// Skips the data between the picture size and the usability information.
void SkipCodingTools(BitReader& bits, std::uint32_t subLayers)
{
    SkipCodes(bits, 2); // bit depths
    std::uint32_t const orderBits = bits.Ue() + 4;
    bool const isForEachLayer = bits.Flag();
    SkipCodes(bits, 3 * (isForEachLayer ? subLayers + 1 : 1)); // buffering
    SkipCodes(bits, 6);                                        // block sizes
    if (bits.Flag() && bits.Flag()) {
        SkipScalingLists(bits);
    }
    bits.Skip(2);      // asymmetric partitions, sample offsets
    if (bits.Flag()) { // uncoded blocks
        bits.Skip(8);
        SkipCodes(bits, 2);
        bits.Skip(1);
    }
    SkipReferenceSets(bits);
    if (bits.Flag()) { // long-term pictures
        std::uint32_t const pictures = bits.Ue();
        bits.Skip(std::size_t{pictures} * (orderBits + 1));
    }
    bits.Skip(2); // temporal motion vectors, strong smoothing
}

} // namespace

std::optional<VideoFormat> ParseHevcSps(ByteView bytes)
{
    constexpr std::uint8_t SequenceParameters = 33;
    auto const unit =
        FindUnit(bytes, [](std::uint8_t head) { return ((head >> 1) & 0x3F) == SequenceParameters; });
    if (!unit) {
        return std::nullopt;
    }
    auto const plain = Unescape(unit->Part(2));
    BitReader bits(plain);
    bits.Skip(4); // video parameter set
    std::uint32_t const subLayers = bits.Bits(3);
    bits.Skip(1);
    SkipProfiles(bits, subLayers);
    bits.Ue(); // id
    VideoFormat format;
    if (!ReadSize(bits, format)) {
        return std::nullopt;
    }
    format.displayAspect = Reduce(format.width, format.height); // square pixels unless specified otherwise
    SkipCodingTools(bits, subLayers);
    if (bits.Flag()) {
        ReadDisplay(bits, format);
        bits.Skip(3);      // neutral chroma, fields
        if (bits.Flag()) { // display window
            SkipCodes(bits, 4);
        }
        ReadTiming(bits, 1, format);
    }
    return format;
}

} // namespace zviptv::sim
