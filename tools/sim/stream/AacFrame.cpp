// SPDX-License-Identifier: MIT
#include "stream/AacFrame.h"

#include "stream/BitReader.h"

namespace zviptv::sim {

namespace {

constexpr std::uint32_t RateFollows = 15;

std::uint32_t SampleRateOf(std::uint32_t code)
{
    constexpr std::uint32_t Rates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                       22050, 16000, 12000, 11025, 8000,  7350};
    return code < std::size(Rates) ? Rates[code] : 0;
}

std::uint32_t ReadSampleRate(BitReader& bits)
{
    std::uint32_t const code = bits.Bits(4);
    return code == RateFollows ? bits.Bits(24) : SampleRateOf(code);
}

/// The header does not show whether two channels are one stereo sound; neither does a custom channel
/// arrangement.
AudioFormat FormatOf(std::uint32_t sampleRate, std::uint32_t channels)
{
    AudioFormat format;
    format.sampleRate = sampleRate;
    format.channels = static_cast<std::uint8_t>(channels < 7 ? channels : channels == 7 ? 8 : 0);
    if (channels != 0) {
        format.dualMono = false;
    }
    return format;
}

std::uint32_t ReadObjectType(BitReader& bits)
{
    constexpr std::uint32_t Escape = 31;
    std::uint32_t const type = bits.Bits(5);
    return type == Escape ? 32 + bits.Bits(6) : type;
}

AudioFormat ReadSpecificConfig(BitReader& bits)
{
    constexpr std::uint32_t BandReplication = 5;
    constexpr std::uint32_t ParametricStereo = 29;
    std::uint32_t const type = ReadObjectType(bits);
    std::uint32_t sampleRate = ReadSampleRate(bits);
    std::uint32_t const channels = bits.Bits(4);
    if (type == BandReplication || type == ParametricStereo) {
        sampleRate = ReadSampleRate(bits);
    }
    return FormatOf(sampleRate, type == ParametricStereo ? 2 : channels);
}

/// The format of the simple form with one programme of one layer; other forms and impossible sampling rates
/// have none.
std::optional<AudioFormat> ReadStreamMuxConfig(BitReader& bits)
{
    constexpr std::uint32_t HighestRate = 192000;
    bool const version = bits.Flag();
    bool const sameTiming = bits.Flag();
    bits.Skip(6); // frames in an element
    std::uint32_t const programmes = bits.Bits(4);
    std::uint32_t const layers = bits.Bits(3);
    if (version || !sameTiming || programmes != 0 || layers != 0) {
        return std::nullopt;
    }
    AudioFormat const format = ReadSpecificConfig(bits);
    bool const isSound = bits.Ok() && format.sampleRate != 0 && format.sampleRate <= HighestRate;
    return isSound ? std::optional<AudioFormat>(format) : std::nullopt;
}

} // namespace

std::optional<AudioFrame> ParseAdtsFrame(ByteView bytes)
{
    constexpr std::uint32_t Sync = 0xFFF;
    constexpr std::size_t HeadSize = 7;
    BitReader bits(bytes);
    if (bits.Bits(12) != Sync) {
        return std::nullopt;
    }
    bits.Skip(1); // MPEG-2 or MPEG-4
    bool const isLayer = bits.Bits(2) == 0;
    bits.Skip(1 + 2); // no checksum, profile
    std::uint32_t const sampleRate = SampleRateOf(bits.Bits(4));
    bits.Skip(1);
    std::uint32_t const channels = bits.Bits(3);
    bits.Skip(4);
    std::size_t const size = bits.Bits(13);
    if (!bits.Ok() || !isLayer || sampleRate == 0 || size < HeadSize) {
        return std::nullopt;
    }
    return AudioFrame{size, FormatOf(sampleRate, channels)};
}

std::optional<AudioFrame> ParseLatmFrame(ByteView bytes)
{
    constexpr std::uint32_t Sync = 0x2B7;
    constexpr std::size_t HeadSize = 3;
    BitReader bits(bytes);
    if (bits.Bits(11) != Sync) {
        return std::nullopt;
    }
    std::size_t const size = HeadSize + bits.Bits(13);
    if (!bits.Ok()) {
        return std::nullopt;
    }
    bool const sameAsBefore = bits.Flag();
    return AudioFrame{size, sameAsBefore ? std::nullopt : ReadStreamMuxConfig(bits)};
}

} // namespace zviptv::sim
