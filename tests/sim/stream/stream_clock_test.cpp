// SPDX-License-Identifier: MIT
#include "stream/StreamClock.h"

#include <gtest/gtest.h>

using namespace zviptv::sim;

namespace {

constexpr std::uint64_t PcrSecond = 27'000'000;

std::int64_t TimeAt(StreamClock const& clock, std::uint64_t packet)
{
    return clock.At(packet).time.count();
}

} // namespace

TEST(StreamClock, InterpolatesBetweenSamples)
{
    StreamClock clock;
    EXPECT_FALSE(clock.Sample(0, 5000, false)) << "one sample tells no pace";
    EXPECT_TRUE(clock.Sample(100, 6000, false));
    EXPECT_EQ(TimeAt(clock, 0), 0);
    EXPECT_EQ(TimeAt(clock, 50), 500);
    EXPECT_EQ(TimeAt(clock, 100), 1000);
    EXPECT_EQ(clock.At(50).stc, 5500u);
}

TEST(StreamClock, ExtrapolatesBeforeTheFirstSample)
{
    StreamClock clock;
    clock.Sample(10, 5000, false);
    clock.Sample(20, 6000, false);
    EXPECT_EQ(TimeAt(clock, 0), 0);
    EXPECT_EQ(TimeAt(clock, 10), 1000);
    EXPECT_EQ(TimeAt(clock, 20), 2000);
    EXPECT_EQ(clock.At(0).stc, 4000u);
    EXPECT_EQ(clock.At(20).stc, 6000u);
}

TEST(StreamClock, FollowsAChangeOfPace)
{
    StreamClock clock;
    clock.Sample(0, 0, false);
    clock.Sample(100, 1000, false);
    EXPECT_TRUE(clock.Sample(200, 5000, false));
    EXPECT_EQ(TimeAt(clock, 100), 1000);
    EXPECT_EQ(TimeAt(clock, 150), 3000);
    EXPECT_EQ(TimeAt(clock, 200), 5000);
}

TEST(StreamClock, TimeContinuesAcrossTheWrapOfThePcr)
{
    StreamClock clock;
    clock.Sample(0, PcrModulus - 1500, false);
    clock.Sample(100, PcrModulus - 500, false);
    EXPECT_TRUE(clock.Sample(200, 500, false));
    EXPECT_EQ(TimeAt(clock, 200), 2000);
    EXPECT_EQ(clock.At(140).stc, PcrModulus - 100);
    EXPECT_EQ(clock.At(160).stc, 100u);
}

TEST(StreamClock, KeepsItsPaceWhenTheClockJumps)
{
    for (std::uint64_t const target : {std::uint64_t{17}, 5000 + 11 * PcrSecond}) {
        StreamClock clock;
        clock.Sample(0, 4000, false);
        clock.Sample(100, 5000, false);
        EXPECT_TRUE(clock.Sample(200, target, false)) << "back or far ahead";
        EXPECT_EQ(TimeAt(clock, 200), 2000);
        EXPECT_EQ(clock.At(150).stc, 5500u) << "before the jump, the old clock";
        clock.Sample(300, target + 2000, false);
        EXPECT_EQ(TimeAt(clock, 250), 3000);
        EXPECT_EQ(clock.At(250).stc, target + 1000);
    }
}

TEST(StreamClock, AcceptsAnAnnouncedJumpThatLooksPlausible)
{
    StreamClock clock;
    clock.Sample(0, 0, false);
    clock.Sample(100, 1000, false);
    clock.Sample(200, 1000 + 5 * PcrSecond, true);
    EXPECT_EQ(TimeAt(clock, 200), 2000);
}

TEST(StreamClock, BridgesTenSecondsWithoutASample)
{
    StreamClock clock;
    clock.Sample(0, 0, false);
    clock.Sample(100, 10 * PcrSecond, false);
    EXPECT_EQ(clock.At(100).time, StreamTime(10 * PcrSecond));
}

TEST(StreamClock, ContinuesAfterTheLastSample)
{
    StreamClock clock;
    clock.Sample(0, 0, false);
    clock.Sample(100, 1000, false);
    clock.FinishLine();
    EXPECT_EQ(TimeAt(clock, 250), 2500);
    EXPECT_EQ(clock.At(250).stc, 2500u);
}

TEST(StreamClock, ShowsTheNewStcAfterAJumpAtTheEnd)
{
    StreamClock clock;
    clock.Sample(0, 1'000'000, false);
    clock.Sample(100, 1'001'000, false);
    clock.Sample(200, 77, false);
    clock.FinishLine();
    EXPECT_EQ(TimeAt(clock, 210), 2100);
    EXPECT_EQ(clock.At(210).stc, 177u);
}

TEST(StreamClock, UsesANominalPaceIfNoneIsKnown)
{
    StreamClock clock;
    EXPECT_FALSE(clock.IsMeasured());
    auto const second = clock.At(5'000'000 / 8 / 188).time; // of 5 Mbit/s
    EXPECT_NEAR(std::chrono::duration<double>(second).count(), 1.0, 0.01);

    clock.Sample(10, 900, false);
    clock.FinishLine();
    EXPECT_EQ(clock.At(10).stc, 900u);
    EXPECT_GT(clock.At(11).time, clock.At(10).time);
}

TEST(StreamClock, RestartContinuesInTimeWithANewClock)
{
    StreamClock clock;
    clock.Sample(0, 70'000, false);
    clock.Sample(100, 71'000, false);
    clock.Restart(110);
    EXPECT_EQ(TimeAt(clock, 110), 1100);
    EXPECT_TRUE(clock.Sample(115, 70'000, false)) << "the pace is known from before";
    EXPECT_EQ(TimeAt(clock, 115), 1150);
    EXPECT_EQ(clock.At(110).stc, 69'950u);
    clock.Sample(215, 72'000, false);
    EXPECT_EQ(TimeAt(clock, 215), 1150 + 2000);
}

TEST(StreamClock, AStoppedClockDoesNotStopTheNextPass)
{
    StreamClock clock;
    clock.Sample(0, 500, false);
    clock.Sample(100, 500, false);
    EXPECT_FALSE(clock.IsMeasured());
    auto const before = clock.At(100).time;
    clock.Restart(200);
    EXPECT_GT(clock.At(200).time, before);
}

TEST(StreamClock, MovesAnStcAroundTheWrapBothWays)
{
    EXPECT_EQ(MoveStc(PcrModulus - 1, 1), 0u);
    EXPECT_EQ(MoveStc(0, -1), PcrModulus - 1);
    EXPECT_EQ(MoveStc(5, -static_cast<std::int64_t>(PcrModulus) - 6), PcrModulus - 1);
    EXPECT_EQ(MoveStc(7, 0), 7u);
}
