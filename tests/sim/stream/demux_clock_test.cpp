// SPDX-License-Identifier: MIT
#include "DemuxStreams.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

constexpr std::int64_t Second = 27'000'000;

void ExpectTimesNeverDecrease(std::vector<Event> const& events)
{
    for (std::size_t i = 1; i < events.size(); ++i) {
        EXPECT_LE(events[i - 1].at.time, events[i].at.time) << "event " << i;
    }
}

/// Reads the given number of events from an endless stream. Returns the time of the last one.
StreamTime TimeAfter(Demux& demux, int events)
{
    StreamTime last{};
    for (int i = 0; i < events; ++i) {
        auto const event = demux.Next();
        if (!event || event->at.time < last) {
            ADD_FAILURE() << "event " << i << (event ? " goes back in time" : " is missing");
            break;
        }
        last = event->at.time;
    }
    return last;
}

/// After the head, makes audio packets for ever.
class EndlessSource : public PacketSource
{
public:
    EndlessSource(StreamBuilder const& head, std::optional<std::uint64_t> pts)
        : m_head(head.Stream()),
          m_packet(ToTsBytes(MakePacket({Audio, 0, true, MakePes(pts, Noise(100)), false, false, false, {}})))
    {
    }

    bool Read(TsBytes& packet) override
    {
        ++m_reads;
        if (m_head.Read(packet)) {
            return true;
        }
        packet = m_packet;
        packet[3] = static_cast<std::uint8_t>((packet[3] & 0xF0) | (m_counter++ & 0x0F));
        return true;
    }

    void Rewind() override { m_head.Rewind(); }

    std::uint64_t Reads() const { return m_reads; }

private:
    MemorySource m_head;
    TsBytes m_packet;
    std::uint8_t m_counter = 0;
    std::uint64_t m_reads = 0;
};

} // namespace

TEST(DemuxClock, TimesAreInterpolatedBetweenPcrs)
{
    Bytes const audio = MakePes({}, Noise(100));
    StreamBuilder builder;
    AddTables(builder);                      // packets 0, 1
    builder.Pcr(Video, 50 * Second);         // 2
    builder.Null(3).Pes(Audio, audio);       // 6
    builder.Null(5).Pcr(Video, 51 * Second); // 12: ten packets a second
    builder.Pes(Audio, audio);               // 13
    builder.Null(8).Pcr(Video, 52 * Second); // 22
    builder.Null(4).Pes(Audio, audio);       // 27, past the last PCR
    Demux demux(InMemory(builder.Stream()));
    auto const events = Drain(demux);
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0].at.time.count(), Second * 6 / 10);
    EXPECT_EQ(events[1].at.time.count(), Second * 13 / 10);
    EXPECT_EQ(events[2].at.time.count(), Second * 27 / 10);
    EXPECT_EQ(events[0].at.stc, 50 * Second + Second * 4 / 10u);
    EXPECT_EQ(events[2].at.stc, 52 * Second + Second * 5 / 10u);
}

TEST(DemuxClock, TimeContinuesThroughWrapJumpAndLoop)
{
    Bytes const audio = MakePes({}, Noise(100));
    StreamBuilder builder;
    AddTables(builder); // packets 0, 1
    auto const step = static_cast<std::uint64_t>(Second);
    std::uint64_t const wrapping = PcrModulus - step;
    builder.Pcr(Video, wrapping).Null(8).Pes(Audio, audio);          // 2 to 11
    builder.Pcr(Video, 0).Null(8).Pes(Audio, audio);                 // 12 to 21: the PCR has wrapped
    builder.Pcr(Video, step * 7000, true).Null(8).Pes(Audio, audio); // 22 to 31: it jumps
    builder.Pcr(Video, step * 7001).Null(8).Pes(Audio, audio);       // 32 to 41
    Demux demux(InMemory(builder.Stream()));
    std::int64_t pass = 0;
    for (int loop = 0; loop < 3; ++loop) {
        auto const events = Drain(demux);
        ASSERT_EQ(events.size(), 4u);
        EXPECT_EQ(events[0].at.time.count(), pass + Second * 11 / 10);
        EXPECT_EQ(events[1].at.time.count(), pass + Second * 21 / 10);
        EXPECT_EQ(events[2].at.time.count(), pass + Second * 31 / 10);
        EXPECT_EQ(events[3].at.time.count(), pass + Second * 41 / 10);
        EXPECT_EQ(events[0].at.stc, PcrModulus - step / 10);
        EXPECT_EQ(events[1].at.stc, step * 9 / 10);
        EXPECT_EQ(events[3].at.stc, step * 7001 + step * 9 / 10);
        pass += Second * 42 / 10;
        demux.Rewind();
    }
    EXPECT_EQ(demux.Packets(), 3u * 42u);
}

TEST(DemuxClock, TimeStampsReplaceAMissingPcr)
{
    StreamBuilder builder;
    AddTables(builder, 0x1FFF);
    for (unsigned i = 0; i < 50; ++i) // a picture every 40 ms, its PTS ahead of its DTS
    {
        builder.Pes(Audio, MakePes(500'000 + i * 3600, Noise(200))); // 2 packets; its PTS tells another time
        builder.Pes(Video, MakePes(100'000 + i * 3600, Noise(100), false, 90'000 + i * 3600)); // 1 packet
    }
    Demux demux(InMemory(builder.Stream()));
    auto const events = Drain(demux);
    ASSERT_EQ(events.size(), 100u);
    ExpectTimesNeverDecrease(events);
    std::int64_t const picture = Second / 25;
    EXPECT_EQ((events[99].at.time - events[1].at.time).count(), 49 * picture);
    EXPECT_EQ(events[1].at.stc, 90'000u * 300);
    EXPECT_EQ(events[99].at.stc, (90'000u + 49 * 3600) * 300);
}

TEST(DemuxClock, LoopsOfAStreamWithoutPcrContinueInTime)
{
    StreamBuilder builder;
    AddTables(builder, 0x1FFF);
    for (unsigned i = 0; i < 10; ++i) {
        builder.Pes(Audio, MakePes(1000 + i * 9000, Noise(100))); // a packet every 100 ms
    }
    Demux demux(InMemory(builder.Stream()));
    std::vector<StreamTime> starts;
    for (int loop = 0; loop < 3; ++loop) {
        auto const events = Drain(demux);
        ASSERT_EQ(events.size(), 10u);
        ExpectTimesNeverDecrease(events);
        starts.push_back(events.front().at.time);
        EXPECT_EQ((events.back().at.time - events.front().at.time).count(), Second * 9 / 10);
        EXPECT_EQ(events.front().at.stc, 300'000u);
        demux.Rewind();
    }
    EXPECT_EQ(starts[2] - starts[1], starts[1] - starts[0]);
    EXPECT_EQ((starts[1] - starts[0]).count(), Second * 12 / 10) << "ten packets and those of the tables";
}

TEST(DemuxClock, AStreamWithoutAClockTakesTime)
{
    StreamBuilder builder;
    AddTables(builder).Pes(Audio, MakePes({}, {1}));
    Demux demux(InMemory(builder.Stream()));
    auto const first = Drain(demux);
    demux.Rewind();
    auto const second = Drain(demux);
    ASSERT_EQ(first.size(), 1u);
    ASSERT_EQ(second.size(), 1u);
    EXPECT_GT(second[0].at.time, first[0].at.time);
}

TEST(DemuxClock, AnEndlessStreamWithoutAClockIsReadInParts)
{
    StreamBuilder head;
    AddTables(head);
    auto source = std::make_unique<EndlessSource>(head, std::nullopt);
    EndlessSource const& counting = *source;
    Demux demux(std::move(source));
    auto const atStart = counting.Reads();
    EXPECT_LE(atStart, 50'000u) << "in search of the names";
    ASSERT_TRUE(demux.Next());
    EXPECT_LE(counting.Reads() - atStart, Timeline::MaxPacketsWithoutClock + 10);
    EXPECT_GT(TimeAfter(demux, 100'000), StreamTime(0));
}

TEST(DemuxClock, AnEndlessStreamWhosePcrStopsUsesItsTimeStamps)
{
    StreamBuilder head;
    AddTables(head).Pcr(Video, 0).Null(9).Pcr(Video, 2700).Null(9);
    Demux demux(std::make_unique<EndlessSource>(head, 5));
    EXPECT_GT(TimeAfter(demux, 50'000), StreamTime(2700));
}

TEST(DemuxClock, RunsWithoutAnyPes)
{
    StreamBuilder builder;
    AddTables(builder).Pcr(Video, 27'000'000).Null(9).Pcr(Video, 27'027'000).Null(9);
    Demux demux(InMemory(builder.Stream()));
    EXPECT_FALSE(demux.HasClock());
    auto const points = DrainClock(demux);
    ASSERT_EQ(points.size(), 3u) << "two PCRs and the end";
    EXPECT_EQ(points[0].stc, 27'000'000u);
    EXPECT_EQ(points[1].stc, 27'027'000u);
    EXPECT_EQ(points[1].time - points[0].time, StreamTime(27'000));
    EXPECT_EQ(points[2].stc, 27'054'000u) << "ten packets on, at the pace so far";
    EXPECT_TRUE(demux.HasClock());
}

TEST(DemuxClock, OnePcrIsFollowedAtTheAssumedPace)
{
    StreamBuilder builder;
    AddTables(builder).Pcr(Video, 27'000'000).Null(99);
    Demux demux(InMemory(builder.Stream()));
    auto const points = DrainClock(demux);
    ASSERT_EQ(points.size(), 2u);
    EXPECT_EQ(points[0].stc, 27'000'000u);
    EXPECT_EQ(points[1].stc - points[0].stc, 100u * 8122u);
}

TEST(DemuxClock, HasTimeButNoClockWithoutPcrAndPes)
{
    StreamBuilder builder;
    AddTables(builder).Null(100);
    Demux demux(InMemory(builder.Stream()));
    auto const first = DrainClock(demux);
    ASSERT_EQ(first.size(), 1u);
    EXPECT_GE(first[0].time, StreamTime(100 * 8122));
    demux.Rewind();
    auto const second = DrainClock(demux);
    ASSERT_EQ(second.size(), 1u);
    EXPECT_GT(second[0].time, first[0].time);
    EXPECT_FALSE(demux.HasClock());
}
