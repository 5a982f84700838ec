#include "stream/BitReader.h"
#include "stream/NalUnit.h"
#include "stream/SequenceHeads.h"

namespace zviptv::sim {

namespace {

constexpr std::uint32_t LargestSide = 16384;

/// Profile, tier and level of the stream and of its temporal layers.
void SkipProfiles(BitReader& bits, std::uint32_t subLayers)
{
    constexpr std::size_t ProfileBits = 88;
    constexpr std::size_t LevelBits = 8;
    bits.Skip(ProfileBits + LevelBits);
    if (subLayers == 0)
        return;
    std::size_t rest = 0;
    for (std::uint32_t i = 0; i < subLayers; ++i) {
        rest += bits.Flag() ? ProfileBits : 0;
        rest += bits.Flag() ? LevelBits : 0;
    }
    bits.Skip((8 - subLayers) * 2); // the list of flags is padded to eight pairs
    bits.Skip(rest);
}

} // namespace

std::optional<VideoFormat> ParseHevcSps(ByteView bytes)
{
    constexpr std::uint8_t SequenceParameters = 33;
    auto const unit =
        FindUnit(bytes, [](std::uint8_t head) { return ((head >> 1) & 0x3F) == SequenceParameters; });
    if (!unit)
        return std::nullopt;
    auto const plain = Unescape(unit->Part(2));
    BitReader bits(plain);
    bits.Skip(4); // video parameter set
    std::uint32_t const subLayers = bits.Bits(3);
    bits.Skip(1);
    SkipProfiles(bits, subLayers);
    bits.Ue(); // id
    std::uint32_t const chroma = bits.Ue();
    bool const separate = chroma == 3 && bits.Flag();
    std::uint64_t const width = bits.Ue();
    std::uint64_t const height = bits.Ue();
    std::uint64_t window[4] = {}; // left, right, top, bottom
    if (bits.Flag())
        for (std::uint64_t& side : window)
            side = bits.Ue();

    std::uint64_t const unitX = !separate && (chroma == 1 || chroma == 2) ? 2 : 1;
    std::uint64_t const unitY = !separate && chroma == 1 ? 2 : 1;
    std::uint64_t const cropX = (window[0] + window[1]) * unitX;
    std::uint64_t const cropY = (window[2] + window[3]) * unitY;
    if (!bits.Ok() || chroma > 3 || width > LargestSide || height > LargestSide || cropX >= width ||
        cropY >= height)
        return std::nullopt;
    VideoFormat format;
    format.width = static_cast<std::uint32_t>(width - cropX);
    format.height = static_cast<std::uint32_t>(height - cropY);
    return format;
}

} // namespace zviptv::sim
