// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include "stream/BitReader.h"
#include "stream/VideoFormat.h"

#include <gtest/gtest.h>

using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

/// Heads as encoders wrote them, in hexadecimal.
Bytes FromHex(std::string const& text)
{
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::optional<VideoFormat> Parse(VideoCodec codec, std::string const& hex)
{
    return ParseVideoFormat(codec, MakePes(90000, FromHex(hex), true, {}, 0xE0));
}

void ExpectFormat(std::optional<VideoFormat> const& format, std::uint32_t width, std::uint32_t height,
                  Ratio rate, Ratio aspect, bool interlaced)
{
    ASSERT_TRUE(format);
    EXPECT_EQ(format->width, width);
    EXPECT_EQ(format->height, height);
    EXPECT_EQ(format->frameRate.numerator, rate.numerator);
    EXPECT_EQ(format->frameRate.denominator, rate.denominator);
    EXPECT_EQ(format->displayAspect.numerator, aspect.numerator);
    EXPECT_EQ(format->displayAspect.denominator, aspect.denominator);
    EXPECT_EQ(format->interlaced, interlaced);
}

/// Writes the codes of a parameter set.
class BitWriter
{
public:
    BitWriter& Bits(std::uint64_t value, unsigned count)
    {
        for (unsigned i = count; i > 0; --i) {
            m_bits += (value >> (i - 1)) & 1 ? '1' : '0';
        }
        return *this;
    }

    BitWriter& Ue(std::uint64_t value)
    {
        unsigned length = 0;
        while ((value + 1) >> (length + 1)) {
            ++length;
        }
        return Bits(0, length).Bits(value + 1, length + 1);
    }

    Bytes Take() const
    {
        Bytes bytes;
        std::string const padded = m_bits + "1" + std::string(7, '0');
        for (std::size_t i = 0; i + 8 <= padded.size(); i += 8) {
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(padded.substr(i, 8), nullptr, 2)));
        }
        return bytes;
    }

private:
    std::string m_bits;
};

/// An H.264 parameter set in a PES packet, its emulation prevention left out (the codes here need none).
Bytes H264Pes(BitWriter const& parameters)
{
    return MakePes(1, Bytes{0, 0, 1, 0x67} + parameters.Take(), true, {}, 0xE0);
}

} // namespace

TEST(VideoFormat, H264InterlacedWithCropping)
{
    ExpectFormat(Parse(VideoCodec::H264, "0000000167640028acd94078044fde022000007d20001d4c03e2c5b2c0"), 1920,
                 1080, {30000, 1001}, {16, 9}, true);
}

TEST(VideoFormat, H264WithPixelsThatAreNotSquareAndEscapedZeros)
{
    ExpectFormat(Parse(VideoCodec::H264, "00000001674d401eeca05a09360820000003002000000641e2c5b2c0"), 720,
                 576, {25, 1}, {20, 11}, false);
}

TEST(VideoFormat, H264WithFullChroma)
{
    ExpectFormat(Parse(VideoCodec::H264, "0000000167f4002090d9b280a00b760220000003002000000c81e30632c0"),
                 1280, 720, {50, 1}, {16, 9}, false);
}

TEST(VideoFormat, H264WithScalingListsAndPictureOrderOne)
{
    BitWriter set;
    set.Bits(100, 8).Bits(0, 16).Ue(0);
    set.Ue(1).Ue(0).Ue(0).Bits(0, 1).Bits(1, 1); // 4:2:0, 8 bits, a scaling matrix:
    set.Bits(1, 1);                              // the first list is sent: 16 equal steps of 0
    for (int i = 0; i < 16; ++i) {
        set.Ue(0);
    }
    set.Bits(0, 7);                                           // the other seven are not
    set.Ue(4).Ue(1).Bits(0, 1).Ue(0).Ue(0).Ue(2).Ue(1).Ue(2); // picture order 1, a cycle of two
    set.Ue(4).Bits(0, 1).Ue(19).Ue(14).Bits(1, 1).Bits(1, 1); // 20 x 15 macroblocks
    set.Bits(1, 1).Ue(1).Ue(2).Ue(3).Ue(4).Bits(0, 1);        // crop 2+4 columns, 6+8 rows
    ExpectFormat(ParseVideoFormat(VideoCodec::H264, H264Pes(set)), 314, 226, {0, 0}, {157, 113}, false);
}

TEST(VideoFormat, H264OfImpossibleSizeIsRefused)
{
    auto const sized = [](std::uint64_t width, std::uint64_t height, std::uint64_t crop) {
        BitWriter set;
        set.Bits(66, 8).Bits(0, 16).Ue(0).Ue(0).Ue(2).Ue(1).Bits(0, 1).Ue(width).Ue(height).Bits(1, 1).Bits(
            1, 1);
        set.Bits(1, 1).Ue(crop).Ue(0).Ue(0).Ue(0).Bits(0, 1);
        return ParseVideoFormat(VideoCodec::H264, H264Pes(set)).has_value();
    };
    EXPECT_TRUE(sized(1023, 1023, 0));
    EXPECT_FALSE(sized(1024, 10, 0));
    EXPECT_FALSE(sized(10, 1024, 0));
    EXPECT_FALSE(sized(0xFFFFFFFE, 0xFFFFFFFE, 0)) << "the largest code";
    EXPECT_TRUE(sized(0, 0, 7)) << "2 columns are left";
    EXPECT_FALSE(sized(0, 0, 8)) << "nothing is left";
    EXPECT_FALSE(sized(0, 0, 0xFFFFFFFE));
}

TEST(VideoFormat, Mpeg2)
{
    ExpectFormat(Parse(VideoCodec::Mpeg2, "000001b32d024033ffffe018000001b5148200010000000001b800080040"),
                 720, 576, {25, 1}, {16, 9}, true);
    ExpectFormat(Parse(VideoCodec::Mpeg2, "000001b32c01e024ffffe018000001b5148a00010000000001b800080040"),
                 704, 480, {30000, 1001}, {4, 3}, false);
}

TEST(VideoFormat, Mpeg2ExtensionOfSizeAndRate)
{
    // Size 0x100 x 0x0C0 with upper bits 1 and 2; 25 frames/s times 2/3.
    ExpectFormat(Parse(VideoCodec::Mpeg2, "000001b31000c013ffffe018000001b5148" // ...
                                          "0c0010022000001b8"),
                 0x1100, 0x20C0, {50, 3}, {68, 131}, true);
}

TEST(VideoFormat, Mpeg1)
{
    ExpectFormat(Parse(VideoCodec::Mpeg1, "000001b316012012ffffe018000001b80008004000000100000ffff8000001"),
                 352, 288, {24, 1}, {11, 9}, false);
}

TEST(VideoFormat, Hevc)
{
    ExpectFormat(Parse(VideoCodec::Hevc,
                       "0000000142010101600000030090000003000003007ba003c08010e596566924caf016808000"
                       "0003008000001904"),
                 1920, 1080, {50, 1}, {16, 9}, false);
    ExpectFormat(Parse(VideoCodec::Hevc,
                       "000000014201010408000003009d0800000300005ab006b201e1d796566924caf01680800000"
                       "03008000000c84"),
                 854, 480, {25, 1}, {427, 240}, false);
}

TEST(VideoFormat, HevcWithEverythingBeforeTheTiming)
{
    BitWriter set;
    auto const codes = [&set](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            set.Ue(1);
        }
    };
    auto const profile = [&set] { set.Bits(UINT64_MAX, 64).Bits(UINT64_MAX, 32); };
    set.Bits(0, 4).Bits(1, 3).Bits(1, 1); // two temporal layers
    profile();
    set.Bits(3, 2).Bits(0x3FFF, 14);
    profile();
    set.Ue(0).Ue(3).Bits(1, 1).Ue(320).Ue(240); // planes coded one by one
    set.Bits(1, 1).Ue(1).Ue(2).Ue(3).Ue(4);     // crop 3 columns, 7 rows
    set.Ue(2).Ue(2).Ue(4).Bits(1, 1);           // picture order has 8 bits
    codes(6 + 6);                               // buffers of both layers, block sizes
    set.Bits(3, 2);                             // scaling lists:
    for (unsigned size = 0; size < 4; ++size) { // the first of every size is a copy
        set.Bits(0, 1).Ue(1);
        for (unsigned list = 1; list < (size == 3 ? 2 : 6); ++list) {
            set.Bits(1, 1);
            codes((size == 0 ? 16u : 64u) + (size >= 2 ? 1u : 0u));
        }
    }
    set.Bits(3, 2).Bits(1, 1).Bits(0x77, 8).Ue(0).Ue(1).Bits(1, 1); // uncoded blocks
    set.Ue(3).Ue(2).Ue(1);                                          // three sets of reference pictures: three
    set.Ue(0).Bits(1, 1).Ue(0).Bits(1, 1).Ue(0).Bits(1, 1);         // pictures,
    set.Bits(1, 1).Bits(1, 1).Ue(0).Bits(0b1'01'00'1, 6);           // three of these four,
    set.Bits(1, 1).Bits(0, 1).Ue(0).Bits(0b1111, 4);                // and those and one more
    set.Bits(1, 1).Ue(2).Bits(0x5A, 8).Bits(1, 1).Bits(0x5A, 8).Bits(0, 1); // long-term pictures
    set.Bits(3, 2).Bits(1, 1);
    set.Bits(1, 1).Bits(255, 8).Bits(4, 16).Bits(3, 16).Bits(3, 2); // pixels are 4:3
    set.Bits(1, 1).Bits(0b0101'1, 5).Bits(0x010101, 24).Bits(1, 1).Ue(1).Ue(1);
    set.Bits(0, 3).Bits(1, 1);
    codes(4); // a display window
    set.Bits(1, 1).Bits(0x01010101, 32).Bits(0x19191919, 32);
    Bytes const pes = MakePes(1, Bytes{0, 0, 1, 0x42, 0x01} + set.Take(), true, {}, 0xE0);
    ExpectFormat(ParseVideoFormat(VideoCodec::Hevc, pes), 317, 233, {25, 1}, {1268, 699}, false);
}

TEST(VideoFormat, NothingWithoutASequenceHeader)
{
    EXPECT_FALSE(Parse(VideoCodec::H264, "00000001419a0011223344"));
    EXPECT_FALSE(Parse(VideoCodec::Hevc, "000000014001"));
    EXPECT_FALSE(Parse(VideoCodec::Mpeg2, "00000100000ffff8"));
    EXPECT_FALSE(Parse(VideoCodec::Mpeg4, "000001b32d024033ffffe018"));
    EXPECT_FALSE(ParseVideoFormat(VideoCodec::H264, FromHex("0000000167640028acd9")));
    EXPECT_FALSE(ParseVideoFormat(VideoCodec::H264, Bytes{}));
}

TEST(VideoFormat, IncompleteHeadersGiveNoWrongFormat)
{
    std::string const whole = "0000000167640028acd94078044fde022000007d20001d4c03e2c5b2c0";
    for (std::size_t size = 0; size <= whole.size(); size += 2) {
        auto const format = Parse(VideoCodec::H264, whole.substr(0, size));
        if (format) {
            EXPECT_EQ(format->width, 1920u) << size;
            EXPECT_EQ(format->height, 1080u) << size;
        }
    }
    EXPECT_FALSE(Parse(VideoCodec::H264, whole.substr(0, 22)));
    EXPECT_FALSE(Parse(VideoCodec::Mpeg2, "000001b32d0240"));
    EXPECT_FALSE(Parse(VideoCodec::Hevc, "000000014201010160000003009000000300"));
}

TEST(VideoFormat, ReducesFractions)
{
    EXPECT_EQ(Reduce(1920, 1080).numerator, 16u);
    EXPECT_EQ(Reduce(1920, 1080).denominator, 9u);
    EXPECT_EQ(Reduce(5, 0).denominator, 0u);
    EXPECT_EQ(Reduce(0, 5).denominator, 0u);
    EXPECT_EQ(Reduce(1, 1ull << 40).denominator, 0u) << "does not fit";
}

TEST(BitReader, ReadsExpGolombCodes)
{
    Bytes const bytes{0b10100110, 0b01000010, 0b10000000}; // 1 010 011 00100 00101 ...
    BitReader bits(bytes);
    EXPECT_EQ(bits.Ue(), 0u);
    EXPECT_EQ(bits.Ue(), 1u);
    EXPECT_EQ(bits.Ue(), 2u);
    EXPECT_EQ(bits.Ue(), 3u);
    EXPECT_EQ(bits.Se(), -2);
    EXPECT_TRUE(bits.Ok());
}

TEST(BitReader, TheLargestCode)
{
    Bytes const largest{0x00, 0x00, 0x00, 0x01, 0xFF, 0xFF, 0xFF, 0xFE}; // 31 zeros, 32 ones
    EXPECT_EQ(BitReader(largest).Ue(), 0xFFFFFFFEu);
    Bytes const tooLong{0x00, 0x00, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    BitReader bits(tooLong);
    EXPECT_EQ(bits.Ue(), 0u);
    EXPECT_FALSE(bits.Ok());
}

TEST(BitReader, StopsAtTheEnd)
{
    Bytes const bytes{0xFF, 0x00};
    BitReader bits(bytes);
    EXPECT_EQ(bits.Bits(8), 0xFFu);
    EXPECT_EQ(bits.Ue(), 0u);
    EXPECT_FALSE(bits.Ok());
    EXPECT_EQ(bits.Bits(32), 0u);
    bits.Skip(SIZE_MAX);
    EXPECT_FALSE(bits.Ok());
}
