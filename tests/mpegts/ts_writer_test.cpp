// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include "mpegts/TsWriter.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

class TsWriterTest : public testing::Test
{
protected:
    Bytes m_out;
    TsWriter m_writer;
};

TEST_F(TsWriterTest, WritesReadableTables)
{
    m_writer.AddTables(m_out, {{0x100, 0x1B, {}}, {0x103, 0x06, {0x59, 8, 'e', 'n', 'g', 0x10, 0, 1, 0, 2}}},
                       0x100);
    ASSERT_EQ(m_out.size(), 2 * 188U);
    Demux demux(InMemory(m_out));
    ASSERT_EQ(demux.Programmes().size(), 1U);
    Programme const& programme = demux.Programmes().front();
    EXPECT_EQ(programme.pcrPid, 0x100);
    ASSERT_EQ(programme.video.size(), 1U);
    EXPECT_EQ(programme.video.front().codec, VideoCodec::H264);
    ASSERT_EQ(programme.subtitles.size(), 1U);
    EXPECT_EQ(programme.subtitles.front().page.language, "eng");
    EXPECT_EQ(programme.subtitles.front().page.ancillaryPage, 2);
    EXPECT_EQ(demux.DamagedSections(), 0U);
}

/// Checks every possible number of bytes in the last packet.
TEST_F(TsWriterTest, WritesPesPacketsOfAllSizes)
{
    m_writer.AddTables(m_out, {{0x100, 0x1B, {}}}, 0x100);
    std::vector<Bytes> written;
    for (std::size_t size = 20; size < 420; ++size) {
        written.push_back(MakePes(size * 3600, Noise(size, static_cast<unsigned>(size))));
        m_writer.AddPes(m_out, 0x100, written.back());
    }
    EXPECT_EQ(m_out.size() % 188, 0U);
    Demux demux(InMemory(m_out));
    std::vector<Bytes> read;
    for (auto event = demux.Next(); event; event = demux.Next()) {
        if (event->type == EventType::Pes) {
            read.push_back(event->pes.bytes);
        }
    }
    EXPECT_EQ(read, written);
}

TEST_F(TsWriterTest, CountsThePacketsOfEachPid)
{
    for (int i = 0; i < 20; ++i) {
        m_writer.AddPes(m_out, 0x100, MakePes(1, Noise(10)));
        m_writer.AddPes(m_out, 0x101, MakePes(1, Noise(10)));
    }
    std::map<std::uint16_t, unsigned> next;
    ForEachPacket(m_out, [&next](TsPacket const& packet) {
        EXPECT_EQ(packet.continuity, next[packet.pid]++ & 0xF);
        EXPECT_TRUE(packet.unitStart);
    });
    EXPECT_EQ(next[0x100], 20U);
    EXPECT_EQ(next[0x101], 20U);
}

TEST_F(TsWriterTest, WritesClocksByteByByte)
{
    TsWriter::AddClock(m_out, 0x1FFE, 0x123456789, true);
    Bytes const head = {0x47, 0x1F, 0xFE, 0x20, 183, 0x90, 0x91, 0xA2, 0xB3, 0xC4, 0xFE, 0};
    EXPECT_EQ(m_out, head + Bytes(176, 0xFF));
}

} // namespace
