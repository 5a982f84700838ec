// SPDX-License-Identifier: MIT
#include "stream/Demux.h"

#include "DemuxStreams.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

/// A stream in memory whose packets arrive when the test releases them.
class LiveMemory : public MemorySource
{
public:
    LiveMemory(Bytes stream, std::shared_ptr<std::size_t> come)
        : MemorySource(std::move(stream)), m_come(std::move(come))
    {
    }

    bool Read(TsBytes& packet) override
    {
        if (*m_come == 0) {
            return false;
        }
        --*m_come;
        return MemorySource::Read(packet);
    }

    bool HasEnded() const override { return false; }
    bool IsLive() const override { return true; }

private:
    std::shared_ptr<std::size_t> m_come;
};

class LiveDemux : public testing::Test
{
protected:
    void Open(StreamBuilder const& builder)
    {
        m_demux = std::make_unique<sim::Demux>(std::make_unique<LiveMemory>(builder.Stream(), m_come));
    }

    /// The result of reading the given number of packets.
    std::vector<sim::Event> Come(std::size_t packets)
    {
        *m_come = packets;
        std::vector<sim::Event> events;
        while (auto event = m_demux->Next()) {
            events.push_back(std::move(*event));
        }
        EXPECT_FALSE(m_demux->HasEnded());
        return events;
    }

    std::shared_ptr<std::size_t> m_come = std::make_shared<std::size_t>(0);
    std::unique_ptr<sim::Demux> m_demux;
};

TEST_F(LiveDemux, LearnsTheProgrammeFromItsTables)
{
    StreamBuilder builder;
    AddTables(builder);
    Open(builder);
    EXPECT_TRUE(m_demux->IsLive());
    EXPECT_EQ(m_demux->Current(), nullptr);
    EXPECT_TRUE(Come(1).empty());
    auto const events = Come(1);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].type, sim::EventType::ProgrammeChanged);
    EXPECT_EQ(events[0].programme->number, 1);
}

TEST_F(LiveDemux, DeliversACompletePacketWithoutWaitingForAPcr)
{
    StreamBuilder builder;
    AddTables(builder).Pes(Audio, MakePes(900, Noise(50)));
    Open(builder);
    EXPECT_EQ(Come(2).size(), 1U);
    auto const events = Come(1);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].pes.bytes, MakePes(900, Noise(50)));
    EXPECT_FALSE(m_demux->HasClock());
}

TEST_F(LiveDemux, ReportsTheLatestPcr)
{
    StreamBuilder builder;
    AddTables(builder).Pcr(Video, 1000).Pcr(Video, 5).Pes(Audio, MakePes(900, Noise(50)));
    Open(builder);
    Come(2);
    EXPECT_EQ(Come(1).at(0).at.stc, 1000U);
    EXPECT_EQ(Come(1).at(0).at.stc, 5U); // a jump is the sender's business
    EXPECT_EQ(Come(1).at(0).at.stc, 5U);
    EXPECT_TRUE(m_demux->HasClock());
}

/// The PMT of the second programme comes first.
TEST_F(LiveDemux, PlaysTheFirstProgrammeOfThePat)
{
    StreamBuilder builder;
    builder.Section(0, MakePat({{1, Pmt}, {2, Pmt + 1}}))
        .Section(Pmt + 1, MakePmt(2, Video, {{0x1B, 0x200, {}}}))
        .Section(Pmt, MakePmt(1, Video, Streams()));
    Open(builder);
    EXPECT_TRUE(Come(2).empty());
    EXPECT_FALSE(m_demux->HasAllTables());
    auto const events = Come(1);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].programme->number, 1);
    EXPECT_TRUE(m_demux->HasAllTables());
}

TEST_F(LiveDemux, WaitsForTheRequestedProgramme)
{
    StreamBuilder builder;
    builder.Section(0, MakePat({{1, Pmt}, {2, Pmt + 1}}))
        .Section(Pmt, MakePmt(1, Video, Streams()))
        .Section(Pmt + 1, MakePmt(2, Video, {{0x1B, 0x200, {}}}));
    Open(builder);
    m_demux->Await(2);
    EXPECT_TRUE(Come(2).empty());
    auto const events = Come(1);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].programme->number, 2);
}

TEST_F(LiveDemux, ForgetsTheClockWithTheProgramme)
{
    StreamBuilder builder;
    builder.Section(0, MakePat({{1, Pmt}, {2, Pmt + 1}}))
        .Section(Pmt, MakePmt(1, Video, Streams()))
        .Section(Pmt + 1, MakePmt(2, 0x200, {{0x1B, 0x200, {}}}))
        .Pcr(Video, 1000)
        .Pcr(Video, 2000)
        .Pcr(0x200, 7);
    Open(builder);
    Come(4);
    EXPECT_TRUE(m_demux->HasClock());
    EXPECT_TRUE(m_demux->Select(2));
    EXPECT_FALSE(m_demux->HasClock());
    EXPECT_TRUE(Come(1).empty());
    EXPECT_EQ(Come(1).at(0).at.stc, 7U);
}

} // namespace
} // namespace zviptv::test
