// SPDX-License-Identifier: MIT
#include "mpegts/TsPacket.h"
#include "output/TransportStream.h"

#include <zviptv/IPTVTypes.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace zviptv::ctl;

namespace {

using Bytes = TransportStream::Bytes;

std::uint8_t Low(std::uint64_t number)
{
    return static_cast<std::uint8_t>(number & 0xFFU);
}

/// Five bytes of a time stamp.
Bytes Stamp(unsigned marker, std::uint64_t time)
{
    return {Low(marker << 4U | (time >> 30U & 7U) << 1U | 1U), Low(time >> 22U),
            Low((time >> 15U & 0x7FU) << 1U | 1U), Low(time >> 7U), Low((time & 0x7FU) << 1U | 1U)};
}

/// A packet of MPEG-1 audio with a PTS.
Bytes AudioPacket(std::uint64_t pts, std::size_t size = 500)
{
    Bytes packet = {0, 0, 1, 0xC0, Low((size + 8) >> 8U), Low(size + 8), 0x80, 0x80, 5};
    Bytes const stamp = Stamp(2, pts);
    packet.insert(packet.end(), stamp.begin(), stamp.end());
    Bytes payload(size, 0x55);
    payload[0] = 0xFF;
    payload[1] = 0xFD;
    payload[2] = 0x84;
    packet.insert(packet.end(), payload.begin(), payload.end());
    return packet;
}

struct Clock
{
    std::uint64_t time;
    bool isDiscontinuous;
};

/// The contents of a transport stream, read again.
struct Content
{
    std::map<unsigned, Bytes> payloads;
    std::vector<Clock> clocks;
    int wrongCounters = 0;
};

Content Read(Bytes const& stream)
{
    Content content;
    std::map<unsigned, unsigned> counters;
    zviptv::TsBytes bytes{};
    EXPECT_EQ(stream.size() % bytes.size(), 0U);
    for (auto at = stream.begin(); at != stream.end(); at += bytes.size()) {
        std::copy_n(at, bytes.size(), bytes.begin());
        auto const packet = zviptv::ParseTsPacket(bytes).value();
        if (packet.pcr) {
            EXPECT_EQ(*packet.pcr % 300, 0U);
            content.clocks.push_back({*packet.pcr / 300, packet.discontinuity});
        }
        if (packet.hasPayload) {
            auto const counter = counters.try_emplace(packet.pid, packet.continuity).first;
            content.wrongCounters += counter->second == packet.continuity ? 0 : 1;
            counter->second = (packet.continuity + 1U) & 0xFU;
            Bytes& payload = content.payloads[packet.pid];
            payload.insert(payload.end(), packet.payload.begin(), packet.payload.end());
        }
    }
    return content;
}

void Add(TransportStream& stream, Bytes& out, std::uint16_t pid, Bytes const& packet,
         std::int32_t type = ZV_PES_AUDIO)
{
    Bytes const packets = stream.Pack(pid, type, *zviptv::ParsePesHeader(packet), packet);
    out.insert(out.end(), packets.begin(), packets.end());
}

TEST(TransportStreamTest, CarriesPacketsOfAnySizeUnchanged)
{
    for (std::size_t size = 4; size < 600; ++size) {
        TransportStream stream;
        Bytes out;
        Bytes const packet = AudioPacket(90000, size);
        Add(stream, out, 0x101, packet);
        EXPECT_EQ(Read(out).payloads[0x101], packet) << size;
    }
}

TEST(TransportStreamTest, NumbersAndClocksPackets)
{
    TransportStream stream;
    Bytes out;
    std::uint64_t const start = 300000;
    for (std::uint64_t i = 0; i < 100; ++i) {
        Add(stream, out, 0x101, AudioPacket(start + i * 32400, 2000));
        Add(stream, out, 0x102, AudioPacket(start + i * 32400 - 9000, 2000));
    }
    Content const content = Read(out);
    EXPECT_EQ(content.wrongCounters, 0);
    ASSERT_GT(content.clocks.size(), 300U);
    EXPECT_EQ(content.clocks.front().time, start - 90000);
    for (std::size_t i = 1; i < content.clocks.size(); ++i) {
        EXPECT_GT(content.clocks[i].time, content.clocks[i - 1].time);
        EXPECT_LE(content.clocks[i].time - content.clocks[i - 1].time, 9000U); // 100 ms
        EXPECT_FALSE(content.clocks[i].isDiscontinuous);
    }
}

/// 33 bits of 90 kHz are 26.5 hours.
TEST(TransportStreamTest, TheClockWrapsWithTheTimeStamps)
{
    TransportStream stream;
    Bytes out;
    std::uint64_t const wrap = std::uint64_t{1} << 33U;
    for (std::uint64_t i = 0; i < 10; ++i) {
        Add(stream, out, 0x101, AudioPacket((wrap - 90000 + i * 32400) % wrap, 2000));
    }
    std::vector<Clock> const clocks = Read(out).clocks;
    EXPECT_EQ(clocks.front().time, wrap - 180000);
    for (std::size_t i = 1; i < clocks.size(); ++i) {
        EXPECT_LE((clocks[i].time - clocks[i - 1].time) % wrap, 9000U);
        EXPECT_FALSE(clocks[i].isDiscontinuous);
    }
}

TEST(TransportStreamTest, MarksAJumpOfTheClock)
{
    TransportStream stream;
    Bytes out;
    Add(stream, out, 0x101, AudioPacket(900000));
    Add(stream, out, 0x101, AudioPacket(180000));
    std::vector<Clock> const clocks = Read(out).clocks;
    ASSERT_EQ(clocks.size(), 2U);
    EXPECT_FALSE(clocks[0].isDiscontinuous);
    EXPECT_TRUE(clocks[1].isDiscontinuous);
    EXPECT_EQ(clocks[1].time, 90000U);
}

TEST(TransportStreamTest, OmitsTracksOfUnknownCoding)
{
    TransportStream stream;
    Bytes out;
    Bytes packet = AudioPacket(90000);
    packet[14] = 0; // no frame any more
    Add(stream, out, 0x101, packet);
    EXPECT_TRUE(out.empty());
    EXPECT_THAT(stream.LeftOut(), testing::ElementsAre(0x101));
    Add(stream, out, 0x101, AudioPacket(90000));
    EXPECT_THAT(stream.LeftOut(), testing::IsEmpty());
    Add(stream, out, 0x1FFE, AudioPacket(90000)); // which is the clock's
    EXPECT_THAT(stream.LeftOut(), testing::ElementsAre(0x1FFE));
}

/// In MPEG-2 a slice may have the number that begins the parameters of H.264.
TEST(TransportStreamTest, APictureWithoutASequenceHeaderDoesNotShowItsCoding)
{
    Bytes const packet = {0, 0, 1, 0xE0, 0, 0, 0x80, 0, 0, 0, 0, 1, 0x00, 0, 0, 0, 1, 0x67, 1, 2, 3};
    EXPECT_FALSE(CodingOf(ZV_PES_VIDEO, *zviptv::ParsePesHeader(packet)));
}

} // namespace
