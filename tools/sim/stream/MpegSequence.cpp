// SPDX-License-Identifier: MIT
#include "stream/MpegSequence.h"

#include "stream/BitReader.h"
#include "stream/NalUnit.h"

namespace zviptv::sim {

namespace {

constexpr std::uint8_t SequenceHead = 0xB3;
constexpr std::uint8_t Extension = 0xB5;
constexpr std::uint32_t SequenceExtension = 1;

Ratio FrameRateOf(std::uint32_t code)
{
    constexpr Ratio Rates[] = {{0, 0},  {24000, 1001}, {24, 1},       {25, 1}, {30000, 1001},
                               {30, 1}, {50, 1},       {60000, 1001}, {60, 1}};
    return code < std::size(Rates) ? Rates[code] : Ratio{};
}

Ratio DisplayAspectOf(std::uint32_t code, VideoFormat const& format)
{
    switch (code) {
    case 1:
        return Reduce(format.width, format.height);
    case 2:
        return {4, 3};
    case 3:
        return {16, 9};
    case 4:
        return {221, 100};
    default:
        return {};
    }
}

/// Whether the sequence header has an extension, which makes the sequence MPEG-2.
bool ApplyExtension(ByteView bytes, VideoFormat& format)
{
    BitReader bits(bytes.Part(1));
    if (bits.Bits(4) != SequenceExtension) {
        return false;
    }
    bits.Skip(8); // profile and level
    format.interlaced = !bits.Flag();
    bits.Skip(2); // chroma format
    format.width |= bits.Bits(2) << 12;
    format.height |= bits.Bits(2) << 12;
    bits.Skip(12 + 1 + 8 + 1); // bit rate, marker, buffer size, low delay
    std::uint32_t const numerator = bits.Bits(2) + 1;
    std::uint32_t const denominator = bits.Bits(5) + 1;
    format.frameRate = Reduce(std::uint64_t{format.frameRate.numerator} * numerator,
                              std::uint64_t{format.frameRate.denominator} * denominator);
    return bits.Ok();
}

} // namespace

std::optional<VideoFormat> ParseMpegSequence(ByteView bytes)
{
    auto const head = FindUnit(bytes, [](std::uint8_t code) { return code == SequenceHead; });
    if (!head) {
        return std::nullopt;
    }
    BitReader bits(head->Part(1));
    VideoFormat format;
    format.width = bits.Bits(12);
    format.height = bits.Bits(12);
    std::uint32_t const aspect = bits.Bits(4);
    format.frameRate = FrameRateOf(bits.Bits(4));
    bits.Skip(18 + 1 + 10 + 1 + 1); // bit rate, marker, buffer size, constrained, first matrix flag
    if (!bits.Ok()) {
        return std::nullopt;
    }

    auto const behind = static_cast<std::size_t>(head->end() - bytes.begin());
    auto const next = FindUnit(bytes.Part(behind), [](std::uint8_t) { return true; });
    bool const isMpeg2 = next && (*next)[0] == Extension && ApplyExtension(*next, format);
    if (format.width == 0 || format.height == 0) {
        return std::nullopt;
    }
    if (isMpeg2 || aspect == 1) { // MPEG-1 has different aspect ratios, except the first
        format.displayAspect = DisplayAspectOf(aspect, format);
    }
    return format;
}

} // namespace zviptv::sim
