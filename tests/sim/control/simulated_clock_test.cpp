// SPDX-License-Identifier: MIT
#include "playback/SimulatedClock.h"

#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

using namespace std::chrono_literals;
using Time = SimulatedClock::Time;

class SimulatedClockTest : public testing::Test
{
protected:
    SimulatedClock Make(double speed)
    {
        return SimulatedClock(speed, 1000, [this] { return m_now; });
    }

    Time m_now{100s};
};

TEST_F(SimulatedClockTest, ShowsTheSteadyClockAtNormalSpeed)
{
    SimulatedClock const clock = Make(1);
    m_now += 5s;
    EXPECT_EQ(clock.Shows(), m_now);
    EXPECT_EQ(clock.UnixTime(), 1005);
    EXPECT_EQ(clock.Until(m_now + 2s), 2s);
    EXPECT_EQ(clock.Until(m_now - 2s), 0s);
}

TEST_F(SimulatedClockTest, ContinuesAtANewSpeed)
{
    SimulatedClock clock = Make(2);
    m_now += 5s;
    EXPECT_EQ(clock.Shows(), Time(110s));
    clock.SetSpeed(0.5);
    m_now += 10s;
    EXPECT_EQ(clock.Shows(), Time(115s));
    EXPECT_EQ(clock.UnixTime(), 1015);
    EXPECT_EQ(clock.Until(Time(116s)), 2s);
}

TEST_F(SimulatedClockTest, StopsInAPause)
{
    SimulatedClock clock = Make(1);
    m_now += 1s;
    clock.Pause(true);
    m_now += 50s;
    clock.Pause(true);
    EXPECT_EQ(clock.Shows(), Time(101s));
    EXPECT_EQ(clock.Until(Time(102s)), std::nullopt);
    EXPECT_EQ(clock.Until(Time(101s)), 0s);
    clock.Jump(9s);
    EXPECT_EQ(clock.Shows(), Time(110s));
    clock.Pause(false);
    m_now += 1s;
    EXPECT_EQ(clock.Shows(), Time(111s));
}

TEST_F(SimulatedClockTest, SetsOnlyTheClockOfTheGuide)
{
    SimulatedClock clock = Make(1);
    clock.SetUnixTime(5);
    EXPECT_EQ(clock.UnixTime(), 5);
    EXPECT_EQ(clock.Shows(), m_now);
    clock.Jump(-10s);
    EXPECT_EQ(clock.UnixTime(), -5);
    EXPECT_EQ(clock.UnixTimeAt(m_now), 5.0);
}

TEST_F(SimulatedClockTest, ContinuesInAnotherProcess)
{
    SimulatedClock clock = Make(3);
    clock.SetUnixTime(50);
    SimulatedClock other(1, {}, [this] { return m_now; });
    other.Continue(clock.Keep());
    m_now += 7s;
    EXPECT_EQ(other.Shows(), clock.Shows());
    EXPECT_EQ(other.UnixTime(), 71);
    EXPECT_EQ(other.Speed(), 3);
}

} // namespace
} // namespace zviptv::sim
