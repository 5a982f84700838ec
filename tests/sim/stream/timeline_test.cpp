// SPDX-License-Identifier: MIT
#include "stream/Timeline.h"

#include <gtest/gtest.h>

using namespace zviptv::sim;

namespace {

constexpr std::uint64_t Second = 27'000'000;

PesPacket Pes(std::uint16_t pid, std::optional<std::uint64_t> pts = {}, std::size_t size = 10)
{
    return {pid, StreamKind::Audio, pts, {}, std::vector<std::uint8_t>(size)};
}

std::vector<Event> TakeAll(Timeline& timeline)
{
    std::vector<Event> events;
    while (auto event = timeline.Take()) {
        events.push_back(std::move(*event));
    }
    return events;
}

} // namespace

TEST(Timeline, HoldsEventsUntilTheNextSample)
{
    Timeline timeline;
    timeline.AddPcr(0, 0, false);
    timeline.AddPes(5, Pes(1));
    EXPECT_FALSE(timeline.Take());
    timeline.AddPcr(10, Second, false);
    timeline.AddPes(15, Pes(2));
    auto const events = TakeAll(timeline);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].pes.pid, 1);
    EXPECT_EQ(events[0].at.time, StreamTime(Second / 2));
}

TEST(Timeline, KeepsTheOrderOfEventsOfEveryType)
{
    Timeline timeline;
    timeline.AddPcr(0, 0, false);
    timeline.AddPes(3, Pes(1));
    timeline.AddProgramme(3, nullptr);
    timeline.AddPes(4, Pes(2));
    timeline.AddPcr(10, Second, false);
    auto const events = TakeAll(timeline);
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0].pes.pid, 1);
    EXPECT_EQ(events[1].type, EventType::ProgrammeChanged);
    EXPECT_EQ(events[2].pes.pid, 2);
    EXPECT_EQ(events[0].at.time, events[1].at.time);
}

TEST(Timeline, ReleasesEventsWhenTooManyAreHeld)
{
    Timeline timeline;
    std::size_t const large = 1024 * 1024;
    std::uint64_t packet = 0;
    for (; packet < 3; ++packet) {
        timeline.AddPes(packet, Pes(1, {}, large));
        timeline.Advance(packet);
    }
    EXPECT_FALSE(timeline.Take());
    timeline.AddPes(packet, Pes(1, {}, large));
    timeline.Advance(packet);
    EXPECT_EQ(TakeAll(timeline).size(), 4u);
}

TEST(Timeline, ReleasesEventsWithoutAClockForLong)
{
    Timeline timeline;
    timeline.AddPes(0, Pes(1));
    timeline.Advance(Timeline::MaxPacketsWithoutClock);
    EXPECT_FALSE(timeline.Take());
    timeline.Advance(Timeline::MaxPacketsWithoutClock + 1);
    EXPECT_TRUE(timeline.Take());
}

TEST(Timeline, TimeDoesNotRunBackwardsWhenTheClockReturns)
{
    Timeline timeline;
    timeline.AddPcr(0, 0, false);
    timeline.AddPcr(10, 10 * Second, false); // a second for each packet
    std::uint64_t const late = Timeline::MaxPacketsWithoutClock + 100;
    timeline.AddPes(late, Pes(1));
    timeline.Advance(late);
    auto const guessed = timeline.Take();
    ASSERT_TRUE(guessed);
    EXPECT_EQ(guessed->at.time, StreamTime(late * Second));

    timeline.AddPes(late + 10, Pes(2));
    timeline.AddPcr(late + 20, 15 * Second, false); // only five seconds have passed in truth
    auto const next = timeline.Take();
    ASSERT_TRUE(next);
    EXPECT_EQ(next->at.time, guessed->at.time);
    EXPECT_LT(next->at.stc, 15 * Second) << "the clock shown is the true one";
}

TEST(Timeline, ALatePcrReplacesTimeStamps)
{
    Timeline timeline;
    timeline.AddPes(0, Pes(1, 0));
    timeline.AddPes(10, Pes(1, 90'000));
    timeline.AddPes(20, Pes(1, 180'000));
    timeline.EndPass(30); // no PCR: the stamps count, ten packets a second
    EXPECT_EQ(TakeAll(timeline).size(), 3u);

    timeline.AddPes(30, Pes(1, 0));
    timeline.AddPes(40, Pes(1, 90'000));
    EXPECT_EQ(TakeAll(timeline).size(), 2u);
    timeline.AddPes(45, Pes(2));
    timeline.AddPcr(50, 5 * Second, false); // four seconds off the stamps, which says nothing
    timeline.AddPes(60, Pes(1, 90'000));
    timeline.AddPcr(70, 6 * Second, false);
    auto const events = TakeAll(timeline);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].at.time, StreamTime(Second * 45 / 10));
    EXPECT_EQ(events[1].at.time, StreamTime(Second * 55 / 10)) << "half way from 5 s to 6 s";
    EXPECT_EQ(events[1].at.stc, 5 * Second + Second / 2);
}

TEST(Timeline, PrefersTheStampsOfVideo)
{
    Timeline timeline;
    PesPacket video = Pes(2, 0);
    video.kind = StreamKind::Video;
    timeline.AddPes(0, Pes(1, 0));
    timeline.AddPes(1, video);
    timeline.AddPes(10, Pes(1, 50));
    video.pts = 90'000;
    timeline.AddPes(11, video);
    timeline.EndPass(12);
    auto const events = TakeAll(timeline);
    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(events[3].at.time - events[1].at.time, StreamTime(Second));
}

TEST(Timeline, ClearDropsHeldAndReadyEvents)
{
    Timeline timeline;
    timeline.AddPcr(0, 0, false);
    timeline.AddPes(5, Pes(1));
    timeline.AddPcr(10, Second, false);
    timeline.AddPes(15, Pes(2));
    timeline.Clear();
    timeline.AddPcr(20, 2 * Second, false);
    EXPECT_FALSE(timeline.Take());
}
