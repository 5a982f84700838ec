// SPDX-License-Identifier: MIT
#include "stream/MpegAudioFrame.h"

#include "stream/BitReader.h"

namespace zviptv::sim {

namespace {

constexpr std::uint32_t Mpeg1 = 3; // 2 is MPEG-2, 0 its extension to lower sampling rates, 1 reserved
constexpr std::uint32_t LayerOne = 3;
constexpr std::uint32_t LayerThree = 1;

/// Kilobits per second; 0 for a free or forbidden rate.
std::uint32_t BitRateOf(std::uint32_t version, std::uint32_t layer, std::uint32_t code)
{
    constexpr std::uint16_t One[] = {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0};
    constexpr std::uint16_t Two[] = {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0};
    constexpr std::uint16_t Three[] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0};
    constexpr std::uint16_t LowOne[] = {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0};
    constexpr std::uint16_t Low[] = {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0};
    if (version != Mpeg1) {
        return layer == LayerOne ? LowOne[code] : Low[code];
    }
    return layer == LayerOne ? One[code] : layer == LayerThree ? Three[code] : Two[code];
}

std::uint32_t SampleRateOf(std::uint32_t version, std::uint32_t code)
{
    constexpr std::uint32_t Rates[] = {44100, 48000, 32000, 0};
    constexpr std::uint32_t Divisors[] = {4, 1, 2, 1};
    return Rates[code] / Divisors[version];
}

std::size_t SizeOf(std::uint32_t version, std::uint32_t layer, AudioFormat const& format, bool padded)
{
    std::size_t const padding = padded ? 1 : 0;
    if (layer == LayerOne) {
        return (std::size_t{12} * format.bitRate / format.sampleRate + padding) * 4;
    }
    std::size_t const samples = layer == LayerThree && version != Mpeg1 ? 576 : 1152;
    return samples / 8 * format.bitRate / format.sampleRate + padding;
}

} // namespace

std::optional<AudioFrame> ParseMpegAudioFrame(ByteView bytes)
{
    constexpr std::uint32_t Sync = 0x7FF;
    BitReader bits(bytes);
    if (bits.Bits(11) != Sync) {
        return std::nullopt;
    }
    std::uint32_t const version = bits.Bits(2);
    std::uint32_t const layer = bits.Bits(2);
    bits.Skip(1); // no checksum
    std::uint32_t const bitRate = bits.Bits(4);
    std::uint32_t const sampleRate = bits.Bits(2);
    bool const padded = bits.Flag();
    bits.Skip(1);
    std::uint32_t const mode = bits.Bits(2);
    if (!bits.Ok() || version == 1 || layer == 0) {
        return std::nullopt;
    }
    constexpr std::uint32_t DualChannel = 2;
    constexpr std::uint32_t SingleChannel = 3;
    AudioFormat format;
    format.sampleRate = SampleRateOf(version, sampleRate);
    format.bitRate = BitRateOf(version, layer, bitRate) * 1000;
    format.channels = mode == SingleChannel ? 1 : 2;
    format.dualMono = mode == DualChannel;
    if (format.sampleRate == 0 || format.bitRate == 0) {
        return std::nullopt;
    }
    return AudioFrame{SizeOf(version, layer, format, padded), format};
}

} // namespace zviptv::sim
