// SPDX-License-Identifier: MIT
#include "host/ScenarioClock.h"

#include <gtest/gtest.h>

namespace zviptv::sim {
namespace {

using std::chrono::nanoseconds;
using std::chrono::seconds;

/// The service's clock and the scenario's on a real time that the test sets.
class ScenarioTime : public testing::Test
{
protected:
    ScenarioTime() { m_clock.Start(m_service.Keep()); }

    void Pass(int count) { m_now += seconds(count); }
    void Follow(bool isSought = false) { m_clock.Follow(m_service.Keep(), isSought); }

    SimulatedClock::Time m_now{seconds(1000)};
    SimulatedClock m_service{1.0, 0, [this] { return m_now; }};
    ScenarioClock m_clock{[this] { return m_now; }};
};

TEST_F(ScenarioTime, RunsAtTheSpeedOfTheClock)
{
    Pass(2);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 2);
    m_service.SetSpeed(10);
    Follow();
    Pass(1);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 12);
    EXPECT_EQ(m_clock.Until(32), seconds(2));
    EXPECT_EQ(m_clock.Until(12), nanoseconds(0));
}

TEST_F(ScenarioTime, StopsInAForeignPause)
{
    Pass(2);
    m_service.Pause(true);
    Follow();
    Pass(5);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 2);
    EXPECT_EQ(m_clock.Until(3), std::nullopt);
    m_service.Pause(false);
    Follow();
    Pass(1);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 3);
}

TEST_F(ScenarioTime, ContinuesInItsPause)
{
    Pass(2);
    m_clock.NotePause();
    m_service.Pause(true);
    Follow();
    Pass(5);
    Follow(); // something else has changed
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 7);
    m_service.Pause(false);
    Follow();
    Pass(1);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 8);
    m_service.Pause(true); // by somebody else
    Follow();
    Pass(1);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 8);
}

TEST_F(ScenarioTime, AnEarlierPauseIsForeign)
{
    m_service.Pause(true);
    Follow();
    m_clock.NotePause();
    Pass(5);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 0);
}

TEST_F(ScenarioTime, FollowsOnlyForeignSeeks)
{
    Pass(2);
    m_service.Jump(seconds(60));
    Follow(true);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 62);
    m_service.Jump(seconds(-30));
    Follow();
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 62);
}

TEST_F(ScenarioTime, ContinuesWhenTheServiceStartsWithANewClock)
{
    m_service.SetSpeed(4);
    Follow();
    Pass(2);
    SimulatedClock const next(1.0, 0, [this] { return m_now; });
    m_clock.Follow(next.Keep(), false);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 8);
    Pass(2);
    EXPECT_DOUBLE_EQ(m_clock.Seconds(), 10);
}

} // namespace
} // namespace zviptv::sim
