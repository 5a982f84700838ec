// SPDX-License-Identifier: MIT
#include "stream/Ac3Frame.h"

#include "stream/BitReader.h"

namespace zviptv::sim {

namespace {

constexpr std::uint32_t Sync = 0x0B77;
constexpr std::uint32_t Reserved = 3;
constexpr std::uint32_t SampleRates[] = {48000, 44100, 32000};

AudioFormat FormatOf(std::uint32_t sampleRate, std::uint32_t bitRate, std::uint32_t mode, bool effects)
{
    constexpr std::uint8_t Channels[] = {2, 1, 2, 3, 3, 4, 4, 5};
    AudioFormat format;
    format.sampleRate = sampleRate;
    format.bitRate = bitRate;
    format.channels = static_cast<std::uint8_t>(Channels[mode] + (effects ? 1 : 0));
    format.dualMono = mode == 0;
    return format;
}

/// Skips the mix levels between channel mode and effects flag.
void SkipMixLevels(BitReader& bits, std::uint32_t mode)
{
    constexpr std::uint32_t Stereo = 2;
    if ((mode & 1) != 0 && mode != 1) {
        bits.Skip(2);
    }
    if ((mode & 4) != 0) {
        bits.Skip(2);
    }
    if (mode == Stereo) {
        bits.Skip(2);
    }
}

std::size_t Ac3Size(std::uint32_t kilobits, std::uint32_t rateCode, std::uint32_t sizeCode)
{
    constexpr std::uint32_t Samples = 1536;
    std::size_t const words = std::size_t{kilobits} * 1000 * Samples / 16 / SampleRates[rateCode];
    bool const isOdd = SampleRates[rateCode] == 44100 && (sizeCode & 1) != 0;
    return 2 * (words + (isOdd ? 1 : 0));
}

std::optional<AudioFrame> ParsePlain(ByteView bytes, std::uint32_t identification)
{
    constexpr std::uint16_t Kilobits[] = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                          192, 224, 256, 320, 384, 448, 512, 576, 640};
    BitReader bits(bytes.Part(4)); // sync and checksum
    std::uint32_t const rateCode = bits.Bits(2);
    std::uint32_t const sizeCode = bits.Bits(6);
    bits.Skip(8); // identification, service
    std::uint32_t const mode = bits.Bits(3);
    SkipMixLevels(bits, mode);
    bool const effects = bits.Flag();
    if (!bits.Ok() || rateCode == Reserved || sizeCode / 2 >= std::size(Kilobits)) {
        return std::nullopt;
    }
    std::uint32_t const kilobits = Kilobits[sizeCode / 2];
    unsigned const halvings = identification > 8 ? identification - 8 : 0; // 9: half the rates, 10: a quarter
    return AudioFrame{
        Ac3Size(kilobits, rateCode, sizeCode),
        FormatOf(SampleRates[rateCode] >> halvings, (kilobits * 1000) >> halvings, mode, effects)};
}

std::optional<AudioFrame> ParseEnhanced(ByteView bytes)
{
    constexpr std::uint32_t BlocksOf[] = {1, 2, 3, 6};
    constexpr std::uint32_t SamplesPerBlock = 256;
    BitReader bits(bytes.Part(2));
    std::uint32_t const type = bits.Bits(2);
    bits.Skip(3); // substream
    std::size_t const size = (bits.Bits(11) + 1) * std::size_t{2};
    std::uint32_t const rateCode = bits.Bits(2);
    std::uint32_t const secondCode = bits.Bits(2); // number of blocks, or half the sampling rate
    std::uint32_t const mode = bits.Bits(3);
    bool const effects = bits.Flag();
    bool const isHalf = rateCode == Reserved;
    if (!bits.Ok() || type == Reserved || (isHalf && secondCode == Reserved)) {
        return std::nullopt;
    }
    std::uint32_t const sampleRate = isHalf ? SampleRates[secondCode] / 2 : SampleRates[rateCode];
    std::uint32_t const samples = SamplesPerBlock * (isHalf ? 6 : BlocksOf[secondCode]);
    auto const bitRate = static_cast<std::uint32_t>(size * 8 * sampleRate / samples);
    return AudioFrame{size, FormatOf(sampleRate, bitRate, mode, effects)};
}

} // namespace

std::optional<AudioFrame> ParseAc3Frame(ByteView bytes)
{
    constexpr std::uint32_t LastPlain = 10;
    constexpr std::uint32_t LastEnhanced = 16;
    std::uint32_t const identification = bytes[5] >> 3;
    if (bytes.U16(0) != Sync || identification > LastEnhanced) {
        return std::nullopt;
    }
    return identification <= LastPlain ? ParsePlain(bytes, identification) : ParseEnhanced(bytes);
}

} // namespace zviptv::sim
