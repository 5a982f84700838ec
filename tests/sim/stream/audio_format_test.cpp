// SPDX-License-Identifier: MIT
#include "StreamBuilder.h"

#include "stream/AudioFormat.h"

#include <gtest/gtest.h>

using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

/// A frame of `size` bytes that begins with `head`.
Bytes Frame(Bytes head, std::size_t size)
{
    head.resize(size, 0x55);
    return head;
}

Bytes Join(Bytes first, Bytes const& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::optional<AudioFormat> FormatIn(AudioCodec codec, Bytes const& payload)
{
    return ParseAudioFormat(codec, MakePes(1, payload));
}

void ExpectFormat(std::optional<AudioFormat> const& format, std::uint32_t sampleRate, std::uint32_t bitRate,
                  unsigned channels, std::optional<bool> dualMono)
{
    ASSERT_TRUE(format);
    EXPECT_EQ(format->sampleRate, sampleRate);
    EXPECT_EQ(format->bitRate, bitRate);
    EXPECT_EQ(format->channels, channels);
    EXPECT_EQ(format->dualMono, dualMono);
}

// MPEG-1, layer II, 192 kbit/s, 48 kHz: 576 bytes; the last byte's upper two bits are the mode.
Bytes const LayerTwo = Frame({0xFF, 0xFD, 0xA4, 0x00}, 576);
Bytes const DualChannel = Frame({0xFF, 0xFD, 0xA4, 0x80}, 576);

} // namespace

TEST(AudioFormat, ReadsMpegAudio)
{
    ExpectFormat(FormatIn(AudioCodec::Mpeg, LayerTwo), 48000, 192000, 2, false);
    ExpectFormat(FormatIn(AudioCodec::Mpeg, DualChannel), 48000, 192000, 2, true);
    // MPEG-2, layer II, 64 kbit/s, 24 kHz, mono
    ExpectFormat(FormatIn(AudioCodec::Mpeg, Frame({0xFF, 0xF5, 0x84, 0xC0}, 384)), 24000, 64000, 1, false);
    // MPEG-1, layer III, 128 kbit/s, 44.1 kHz, padded, joint stereo
    ExpectFormat(FormatIn(AudioCodec::Mpeg, Frame({0xFF, 0xFB, 0x92, 0x40}, 418)), 44100, 128000, 2, false);
    // MPEG-1, layer I, 384 kbit/s, 32 kHz
    ExpectFormat(FormatIn(AudioCodec::Mpeg, Frame({0xFF, 0xFF, 0xC8, 0x00}, 576)), 32000, 384000, 2, false);
    // MPEG-2.5, layer III, 8 kbit/s, 8 kHz, mono
    ExpectFormat(FormatIn(AudioCodec::Mpeg, Frame({0xFF, 0xE3, 0x18, 0xC0}, 72)), 8000, 8000, 1, false);
}

TEST(AudioFormat, RecognisesAFrameByTheNextOne)
{
    Bytes const rest(100, 0x11);
    ExpectFormat(FormatIn(AudioCodec::Mpeg, Join(rest, LayerTwo)), 48000, 192000, 2, false);
    ExpectFormat(FormatIn(AudioCodec::Mpeg, Join(DualChannel, {0xFF, 0xFD, 0xA4, 0x00})), 48000, 192000, 2,
                 true);
    EXPECT_FALSE(FormatIn(AudioCodec::Mpeg, Join(LayerTwo, rest))) << "no other frame behind it";
    EXPECT_FALSE(FormatIn(AudioCodec::Mpeg, Frame({0xFF, 0xFD, 0xA4, 0x00}, 575))) << "cut off";
}

TEST(AudioFormat, ReadsAnything)
{
    for (AudioCodec const codec :
         {AudioCodec::Mpeg, AudioCodec::AacAdts, AudioCodec::AacLatm, AudioCodec::Aac, AudioCodec::Ac3,
          AudioCodec::EnhancedAc3, AudioCodec::Dts}) {
        for (std::size_t size = 0; size < 3000; size += size < 20 ? 1 : 97) {
            auto const format = FormatIn(codec, Noise(size));
            EXPECT_TRUE(!format || format->sampleRate != 0);
        }
    }
}

TEST(AudioFormat, RefusesForbiddenValues)
{
    for (Bytes const& head : {Bytes{0xFF, 0xED, 0xA4, 0x00}, Bytes{0xFF, 0xF9, 0xA4, 0x00}, // version, layer
                              Bytes{0xFF, 0xFD, 0xF4, 0x00}, Bytes{0xFF, 0xFD, 0x04, 0x00}, // rates
                              Bytes{0xFF, 0xFD, 0xAC, 0x00}, Bytes{0xFF, 0xFD}, Bytes{}}) {
        EXPECT_FALSE(FormatIn(AudioCodec::Mpeg, head));
    }
    EXPECT_FALSE(FormatIn(AudioCodec::Dts, LayerTwo));
    EXPECT_FALSE(ParseAudioFormat(AudioCodec::Mpeg, LayerTwo)) << "no PES packet";
}

TEST(AudioFormat, ReadsAdts)
{
    // 48 kHz, two channels, 20 bytes
    Bytes const stereo = Frame({0xFF, 0xF1, 0x4C, 0x80, 0x02, 0x9F, 0xFC}, 20);
    ExpectFormat(FormatIn(AudioCodec::AacAdts, stereo), 48000, 0, 2, false);
    ExpectFormat(FormatIn(AudioCodec::Aac, stereo), 48000, 0, 2, false);
    // 24 kHz, its own arrangement of channels
    ExpectFormat(FormatIn(AudioCodec::AacAdts, Frame({0xFF, 0xF1, 0x58, 0x00, 0x02, 0x9F, 0xFC}, 20)), 24000,
                 0, 0, std::nullopt);
    // eight channels
    ExpectFormat(FormatIn(AudioCodec::AacAdts, Frame({0xFF, 0xF1, 0x4D, 0xC0, 0x02, 0x9F, 0xFC}, 20)), 48000,
                 0, 8, false);
    EXPECT_FALSE(FormatIn(AudioCodec::AacAdts, Frame({0xFF, 0xF1, 0x74, 0x80, 0x02, 0x9F, 0xFC}, 20)))
        << "rate 13";
    EXPECT_FALSE(FormatIn(AudioCodec::AacAdts, Bytes{0xFF, 0xF1, 0x4C, 0x80, 0x00, 0x1F, 0xFC})) << "size 0";
}

TEST(AudioFormat, ReadsLatm)
{
    // configuration: version 0, same timing, one frame, programme and layer; AAC LC, 48 kHz, two channels
    Bytes const configured = Frame({0x56, 0xE0, 0x11, 0x20, 0x00, 0x11, 0x90}, 20);
    Bytes const asBefore = Frame({0x56, 0xE0, 0x0B, 0x80}, 14);
    ExpectFormat(FormatIn(AudioCodec::AacLatm, configured), 48000, 0, 2, false);
    ExpectFormat(FormatIn(AudioCodec::AacLatm, Join(asBefore, configured)), 48000, 0, 2, false);
    ExpectFormat(FormatIn(AudioCodec::Aac, configured), 48000, 0, 2, false);
    EXPECT_FALSE(FormatIn(AudioCodec::AacLatm, asBefore)) << "refers to what was not seen";
    // the same with band replication (type 5): core 24 kHz, heard at 48 kHz; and parametric stereo (29), core
    // mono
    ExpectFormat(FormatIn(AudioCodec::AacLatm, Frame({0x56, 0xE0, 0x11, 0x20, 0x00, 0x2B, 0x11, 0x80}, 20)),
                 48000, 0, 2, false);
    ExpectFormat(FormatIn(AudioCodec::AacLatm, Frame({0x56, 0xE0, 0x11, 0x20, 0x00, 0xEB, 0x09, 0x80}, 20)),
                 48000, 0, 2, false);
}

TEST(AudioFormat, ReadsAnExplicitRateInLatm)
{
    // rate code 15, and behind it the rate itself in 24 bits
    auto const spelledOut = [](Bytes const& rate) {
        return FormatIn(AudioCodec::AacLatm, Frame(Join({0x56, 0xE0, 0x11, 0x20, 0x00, 0x17}, rate), 20));
    };
    ExpectFormat(spelledOut({0x80, 0x5D, 0xC0, 0x10}), 48000, 0, 2, false);
    ExpectFormat(spelledOut({0x81, 0x77, 0x00, 0x10}), 192000, 0, 2, false);
    EXPECT_FALSE(spelledOut({0x81, 0x77, 0x00, 0x90})) << "192001 Hz, which no sound has";
    EXPECT_FALSE(spelledOut({0xFF, 0xFF, 0xFF, 0x90}));
    EXPECT_FALSE(spelledOut({0x80, 0x00, 0x00, 0x10})) << "0 Hz";
}

TEST(AudioFormat, ReadsAc3)
{
    // 48 kHz, 384 kbit/s: 1536 bytes; bsid 8; three and two channels, effects
    Bytes const surround = Frame({0x0B, 0x77, 0, 0, 0x1C, 0x40, 0xE1, 0x00}, 1536);
    ExpectFormat(FormatIn(AudioCodec::Ac3, surround), 48000, 384000, 6, false);
    // 44.1 kHz, 192 kbit/s, odd: 836 bytes; two mono sounds
    ExpectFormat(FormatIn(AudioCodec::Ac3, Frame({0x0B, 0x77, 0, 0, 0x55, 0x40, 0x00, 0x00}, 836)), 44100,
                 192000, 2, true);
    // 24 kHz by bsid 9: half of 48 kHz and of 128 kbit/s; stereo
    ExpectFormat(FormatIn(AudioCodec::Ac3, Frame({0x0B, 0x77, 0, 0, 0x10, 0x48, 0x40, 0x00}, 512)), 24000,
                 64000, 2, false);
    EXPECT_FALSE(FormatIn(AudioCodec::Ac3, Frame({0x0B, 0x77, 0, 0, 0xDC, 0x40, 0xE1, 0x00}, 1536)))
        << "rate 3";
    EXPECT_FALSE(FormatIn(AudioCodec::Ac3, Frame({0x0B, 0x77, 0, 0, 0x26, 0x40, 0xE1, 0x00}, 1536)))
        << "size 38";
}

TEST(AudioFormat, ReadsEnhancedAc3)
{
    // 512 bytes of six blocks at 48 kHz: 128 kbit/s; stereo; bsid 16
    ExpectFormat(FormatIn(AudioCodec::EnhancedAc3, Frame({0x0B, 0x77, 0x00, 0xFF, 0x34, 0x80}, 512)), 48000,
                 128000, 2, false);
    // 24 kHz, half a rate: six blocks
    ExpectFormat(FormatIn(AudioCodec::EnhancedAc3, Frame({0x0B, 0x77, 0x00, 0xFF, 0xC2, 0x80}, 512)), 24000,
                 64000, 1, false);
    // one block, three and two channels with effects
    ExpectFormat(FormatIn(AudioCodec::EnhancedAc3, Frame({0x0B, 0x77, 0x00, 0x7F, 0x0F, 0x80}, 256)), 48000,
                 384000, 6, false);
    EXPECT_FALSE(FormatIn(AudioCodec::EnhancedAc3, Frame({0x0B, 0x77, 0xC0, 0xFF, 0x34, 0x80}, 512)))
        << "type 3";
    EXPECT_FALSE(FormatIn(AudioCodec::EnhancedAc3, Frame({0x0B, 0x77, 0x00, 0xFF, 0x34, 0x88}, 512)))
        << "bsid 17";
}
