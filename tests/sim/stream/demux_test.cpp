// SPDX-License-Identifier: MIT
#include "DemuxStreams.h"

#include <gtest/gtest.h>

using namespace zviptv::sim;
using namespace zviptv::test;

TEST(Demux, HandsOutThePesPacketsOfTheProgramme)
{
    Bytes const video = MakePes(9000, Noise(500), true, 8000, 0xE0);
    Bytes const audio = MakePes(9100, Noise(300), false, {}, 0xC0);
    StreamBuilder builder;
    AddTables(builder).Pes(Video, video).Pes(Audio, audio).Pes(0x1F0, audio);
    Demux demux(InMemory(builder.Stream()));
    ASSERT_TRUE(demux.Current());
    EXPECT_EQ(demux.Current()->number, 1);

    auto const events = Drain(demux);
    ASSERT_EQ(events.size(), 2u) << "0x1F0 is of no programme";
    auto const* first = AsPes(events[0]);
    auto const* second = AsPes(events[1]);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->pid, Audio) << "complete before the video is";
    EXPECT_EQ(first->kind, StreamKind::Audio);
    EXPECT_EQ(first->pts, 9100u);
    EXPECT_FALSE(first->dts);
    EXPECT_EQ(first->bytes, audio);
    EXPECT_EQ(second->pid, Video);
    EXPECT_EQ(second->kind, StreamKind::Video);
    EXPECT_EQ(second->pts, 9000u);
    EXPECT_EQ(second->dts, 8000u);
    EXPECT_EQ(second->bytes, video);
    EXPECT_FALSE(demux.Next()) << "and it stays at the end";
}

TEST(Demux, KeepsPacketsBeforeTheTables)
{
    Bytes const audio = MakePes(9100, Noise(300), false, {}, 0xC0);
    StreamBuilder builder;
    builder.Pes(Audio, audio);
    AddTables(builder);
    Demux demux(InMemory(builder.Stream()));
    EXPECT_EQ(PesOf(Drain(demux), Audio), std::vector<Bytes>{audio});
}

TEST(Demux, NamesMayArriveLate)
{
    StreamBuilder builder;
    AddTables(builder).Null(2000);
    builder.Section(0x1000, MakePmt(1, Video, {}, 1)).Section(0x0011, MakeSdt(1, "Late"));
    Demux const demux(InMemory(builder.Stream()));
    ASSERT_TRUE(demux.Current());
    EXPECT_EQ(demux.Current()->name, "Late");
    EXPECT_EQ(demux.Current()->version, 0) << "as it is at the start";
}

TEST(Demux, LoopingLosesNothing)
{
    // The counters do not meet at the seam, and the stream begins in the middle of a packet.
    Bytes const audio = MakePes(1, Noise(400));
    StreamBuilder builder;
    builder.Packet({Audio, 0, false, Noise(20), false, false, false, {}});
    AddTables(builder).Pes(Audio, audio).Pes(Video, MakePes(2, Noise(20), true));
    Demux demux(InMemory(builder.Stream()));
    for (int loop = 0; loop < 3; ++loop) {
        auto const events = Drain(demux);
        EXPECT_EQ(PesOf(events, Audio), std::vector<Bytes>{audio});
        EXPECT_EQ(PesOf(events, Video).size(), 1u) << "flushed at the end of each pass";
        demux.Rewind();
    }
    EXPECT_EQ(demux.Counters(Audio)->damaged, 0u);
    EXPECT_EQ(demux.Counters(Audio)->delivered, 3u);
    EXPECT_EQ(demux.Counters(0x1F0), nullptr);
}

TEST(Demux, RewindInTheMiddleDropsPendingEvents)
{
    StreamBuilder builder;
    AddTables(builder).Pcr(Video, 0);
    for (std::uint8_t i = 0; i < 5; ++i) {
        builder.Pes(Audio, MakePes(i, {i}));
    }
    builder.Pcr(Video, 27'000'000);
    Demux demux(InMemory(builder.Stream()));
    auto const first = demux.Next();
    ASSERT_TRUE(first);
    demux.Rewind();
    auto const events = Drain(demux);
    EXPECT_EQ(PesOf(events, Audio).size(), 5u);
    EXPECT_GE(events.front().at.time, first->at.time);
    EXPECT_EQ(AsPes(events.front())->pts, 0u);
}

TEST(Demux, ReportsANewPmtInOrder)
{
    Bytes const audio = MakePes(1, Noise(10));
    Bytes const other = MakePes(2, Noise(20));
    StreamBuilder builder;
    AddTables(builder).Pes(Audio, audio).Pes(0x1F0, other);
    builder.Section(Pmt, MakePmt(1, Video, {{0x1B, Video, {}}, {0x03, 0x1F0, {}}}, 1));
    builder.Pes(Audio, audio).Pes(0x1F0, other);
    Demux demux(InMemory(builder.Stream()));
    EXPECT_EQ(demux.Current()->version, 0) << "the tables at the beginning count";

    auto const events = Drain(demux);
    ASSERT_EQ(events.size(), 3u);
    ASSERT_TRUE(AsPes(events[0]));
    ASSERT_EQ(events[1].type, EventType::ProgrammeChanged);
    ASSERT_TRUE(events[1].programme);
    EXPECT_EQ(events[1].programme->version, 1);
    EXPECT_EQ(events[1].programme->audio.at(0).pid, 0x1F0);
    EXPECT_EQ(demux.Current()->version, 1);
    EXPECT_EQ(AsPes(events[0])->bytes, audio);
    ASSERT_TRUE(AsPes(events[2]));
    EXPECT_EQ(AsPes(events[2])->bytes, other) << "the new PID only";
}

TEST(Demux, ANewPmtDoesNotDisturbThePacketsOfPidsThatStay)
{
    Bytes const audio = MakePes(1, Noise(300));
    StreamBuilder builder;
    AddTables(builder);
    builder.Packet({Audio, 0, true, Bytes(audio.begin(), audio.begin() + 184), false, false, false, {}});
    builder.Section(Pmt, MakePmt(1, Video, {{0x03, Audio, {}}}, 1));
    builder.Packet({Audio, 0, false, Bytes(audio.begin() + 184, audio.end()), false, false, false, {}});
    Demux demux(InMemory(builder.Stream()));
    EXPECT_EQ(PesOf(Drain(demux), Audio), std::vector<Bytes>{audio});
}

TEST(Demux, ReportsTheEndOfTheProgramme)
{
    StreamBuilder builder;
    AddTables(builder).Pes(Audio, MakePes(1, {1}));
    builder.Section(0x0000, MakePat({{2, 0x1001}}, 1)).Pes(Audio, MakePes(2, {2}));
    builder.Section(0x1001, MakePmt(2, Video, {{0x03, Audio, {}}})).Pes(Audio, MakePes(3, {3}));
    Demux demux(InMemory(builder.Stream()));
    auto const events = Drain(demux);
    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(AsPes(events[0])->pts, 1u);
    EXPECT_EQ(events[1].type, EventType::ProgrammeChanged);
    EXPECT_EQ(events[1].programme, nullptr);
    ASSERT_TRUE(events[2].programme);
    EXPECT_EQ(events[2].programme->number, 2) << "the first there is now";
    EXPECT_EQ(AsPes(events[3])->pts, 3u);
}

TEST(Demux, PlaysTheChosenProgramme)
{
    StreamBuilder builder;
    builder.Section(0x0000, MakePat({{1, 0x1000}, {2, 0x1001}}));
    builder.Section(0x1000, MakePmt(1, 0x1FFF, {{0x03, 0x101, {}}}));
    builder.Section(0x1001, MakePmt(2, 0x1FFF, {{0x03, 0x201, {}}}));
    builder.Pes(0x101, MakePes(1, {1})).Pes(0x201, MakePes(2, {2}));
    Demux demux(InMemory(builder.Stream()));
    ASSERT_EQ(demux.Programmes().size(), 2u);
    EXPECT_FALSE(demux.Select(3));
    EXPECT_EQ(demux.Current()->number, 1);
    EXPECT_TRUE(demux.Select(2));
    EXPECT_EQ(demux.Current()->number, 2);
    auto const events = Drain(demux);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(AsPes(events[0])->pid, 0x201);
}

TEST(Demux, RemembersTheFirstPtsOfEveryPid)
{
    StreamBuilder builder;
    AddTables(builder)
        .Pes(Audio, MakePes({}, {1}))
        .Pes(Audio, MakePes(500, {1}))
        .Pes(Audio, MakePes(600, {1}));
    Demux demux(InMemory(builder.Stream()));
    EXPECT_FALSE(demux.FirstPts(Audio)) << "nothing was handed out yet";
    Drain(demux);
    EXPECT_EQ(demux.FirstPts(Audio), 500u);
    EXPECT_FALSE(demux.FirstPts(Video));
    demux.ForgetFirstPts();
    EXPECT_FALSE(demux.FirstPts(Audio));
}

TEST(Demux, AStreamWithoutTablesIsPlayedToItsEnd)
{
    StreamBuilder builder;
    builder.Pes(Audio, MakePes(1, {1})).Null(10);
    Demux demux(InMemory(builder.Stream()));
    EXPECT_TRUE(demux.Programmes().empty());
    EXPECT_FALSE(demux.Current());
    EXPECT_TRUE(Drain(demux).empty());
    EXPECT_EQ(demux.Packets(), 11u);
}

TEST(Demux, UsesLateTablesFromTheirArrival)
{
    StreamBuilder head;
    head.Pes(Audio, MakePes(1, {1}));
    StreamBuilder tail;
    AddTables(tail).Pes(Audio, MakePes(2, {2}));
    Bytes stream = head.Stream();
    Bytes const null = MakePacket({0x1FFF, 0, false, Bytes(184, 0), false, false, false, {}});
    for (int i = 0; i < 50'000; ++i) {
        stream.insert(stream.end(), null.begin(), null.end());
    }
    Demux demux(InMemory(stream + tail.Stream()));
    EXPECT_FALSE(demux.Current()) << "further than the tables are looked for";
    auto const events = Drain(demux);
    ASSERT_EQ(events.size(), 2u);
    ASSERT_TRUE(events[0].programme);
    EXPECT_EQ(events[0].programme->number, 1);
    EXPECT_EQ(AsPes(events[1])->pts, 2u);
}

TEST(Demux, CountsInconsistentPackets)
{
    StreamBuilder builder;
    AddTables(builder);
    Bytes bad = MakePacket({Audio, 0, true, {1}, false, false, false, {}});
    bad[4] = 183; // no room for a payload
    Demux demux(InMemory(builder.Stream() + bad));
    Drain(demux);
    EXPECT_EQ(demux.MalformedPackets(), 1u);
}
