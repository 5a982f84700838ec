// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include "mpegts/PesHeader.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::test;

TEST(PesHeader, ReadsAPts)
{
    // As a broadcaster sent it: 000001 BD 016A 84 80 24, PTS 27 97 7D 57 D3.
    Bytes const pes =
        Bytes{0x00, 0x00, 0x01, 0xBD, 0x01, 0x6A, 0x84, 0x80, 0x24, 0x27, 0x97, 0x7D, 0x57, 0xD3} +
        Bytes(400, 0xFF);
    auto const header = ParsePesHeader(pes);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->streamId, 0xBD);
    EXPECT_EQ(header->length, 0x016A);
    // 27 -> 011 ('0010' and a marker around it), 977D -> 100101110111110, 57D3 -> 010101111101001
    EXPECT_EQ(header->pts, (std::uint64_t{3} << 30) | (std::uint64_t{0x4BBE} << 15) | 0x2BE9u);
    EXPECT_FALSE(header->dts);
    EXPECT_TRUE(header->isWhole);
    EXPECT_EQ(header->payload.Size(), 0x016Au - 3u - 0x24u);
    EXPECT_EQ(header->DecodingTime(), header->pts);
}

TEST(PesHeader, ReadsPtsAndDtsUpToTheirLargestValues)
{
    std::uint64_t const largest = (std::uint64_t{1} << 33) - 1;
    auto const header = ParsePesHeader(MakePes(largest, {1}, false, largest - 1));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->pts, largest);
    EXPECT_EQ(header->dts, largest - 1);
    EXPECT_EQ(header->DecodingTime(), largest - 1);
    EXPECT_EQ(ParsePesHeader(MakePes(0, {1}))->pts, 0u);
}

TEST(PesHeader, IgnoresAPtsWithWrongMarkers)
{
    Bytes const good = MakePes(90000, {1});
    for (std::size_t const at : {9u, 11u, 13u}) {
        Bytes bad = good;
        bad[at] &= 0xFE;
        ASSERT_TRUE(ParsePesHeader(bad));
        EXPECT_FALSE(ParsePesHeader(bad)->pts) << "marker in byte " << at;
    }
    Bytes wrongMark = good;
    wrongMark[9] = static_cast<std::uint8_t>((wrongMark[9] & 0x0F) | 0x30);
    EXPECT_FALSE(ParsePesHeader(wrongMark)->pts) << "the mark of a PTS before a DTS";
}

TEST(PesHeader, KeepsThePtsWhenOnlyTheDtsIsWrong)
{
    Bytes pes = MakePes(180000, {1}, false, 90000);
    pes[14] |= 0x80;
    auto const header = ParsePesHeader(pes);
    EXPECT_EQ(header->pts, 180000u);
    EXPECT_FALSE(header->dts);
}

TEST(PesHeader, ReadsNoUnannouncedTimeStamp)
{
    Bytes pes = MakePes(90000, {1});
    pes[7] = 0x00;
    EXPECT_FALSE(ParsePesHeader(pes)->pts);
    pes[7] = 0x40; // forbidden
    EXPECT_FALSE(ParsePesHeader(pes)->pts);
    EXPECT_FALSE(ParsePesHeader(pes)->dts);
}

TEST(PesHeader, DoesNotReadPastTheHeaderOrTheEnd)
{
    Bytes pes = MakePes(90000, {});
    pes[8] = 4; // the header ends within the PTS
    EXPECT_FALSE(ParsePesHeader(pes)->pts);
    pes[8] = 200; // the header ends past the packet
    EXPECT_TRUE(ParsePesHeader(pes)->payload.Empty());
    EXPECT_FALSE(ParsePesHeader(pes)->isWhole);

    Bytes const whole = MakePes(90000, {}, false, 80000);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Bytes const cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        auto const header = ParsePesHeader(cut);
        EXPECT_EQ(header.has_value(), size >= 6) << size;
        EXPECT_EQ(header && header->isWhole, size == whole.size()) << size;
        EXPECT_EQ(header && header->pts, size >= 14) << size;
        EXPECT_FALSE(header && header->dts) << size;
    }
}

TEST(PesHeader, ReadsStreamsWithoutALongHeader)
{
    for (std::uint8_t const id : Bytes{0xBC, 0xBE, 0xBF, 0xF0, 0xF1, 0xF2, 0xF8, 0xFF}) {
        Bytes const pes = MakePes(90000, {}, false, {}, id);
        auto const header = ParsePesHeader(pes);
        ASSERT_TRUE(header);
        EXPECT_FALSE(header->pts) << int{id};
        EXPECT_TRUE(header->isWhole);
        EXPECT_EQ(header->payload.Size() + 6, pes.size());
    }
}

TEST(PesHeader, RequiresTheStartCodeAndTheMarker)
{
    EXPECT_FALSE(ParsePesHeader(Bytes{0, 0, 2, 0xBD, 0, 0, 0x80, 0x80, 5}));
    EXPECT_FALSE(ParsePesHeader(Bytes{0, 1, 1, 0xBD, 0, 0, 0x80, 0x80, 5}));
    Bytes pes = MakePes(90000, {1});
    pes[6] = 0x40; // not '10'
    EXPECT_FALSE(ParsePesHeader(pes)->pts);
    EXPECT_FALSE(ParsePesHeader(pes)->isWhole);
}

TEST(PesHeader, EndsThePayloadAtTheGivenLength)
{
    Bytes const pes = {0, 0, 1, 0xC0, 0, 5, 0x80, 0, 0, 1, 2, 99, 99};
    auto const header = ParsePesHeader(pes);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->isWhole);
    EXPECT_EQ(header->payload.Copy(), (Bytes{1, 2}));
}
