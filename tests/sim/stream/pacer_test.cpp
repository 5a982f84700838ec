// SPDX-License-Identifier: MIT
#include "stream/Pacer.h"

#include <gtest/gtest.h>

#include <limits>

using namespace zviptv::sim;
using namespace std::chrono_literals;

namespace {

class Pacing : public testing::Test
{
protected:
    Pacer Make(double speed)
    {
        return Pacer(speed, [this] { return m_time; });
    }

    Pacer::Clock::time_point m_time{100s};
};

constexpr StreamTime StreamSecond{27'000'000};

} // namespace

TEST_F(Pacing, RealTimeIsOneToOne)
{
    Pacer pacer = Make(1.0);
    pacer.Start(5 * StreamSecond);
    EXPECT_EQ(pacer.DueAt(5 * StreamSecond), m_time);
    EXPECT_EQ(pacer.DueAt(7 * StreamSecond), m_time + 2s);
    EXPECT_EQ(pacer.StreamNow(), 5 * StreamSecond);
    m_time += 1500ms;
    EXPECT_EQ(pacer.StreamNow(), 5 * StreamSecond + StreamSecond * 3 / 2);
}

TEST_F(Pacing, SpeedMakesStreamTimePassFasterOrSlower)
{
    auto const start = m_time;
    Pacer fast = Make(100.0);
    Pacer slow = Make(0.5);
    EXPECT_EQ(fast.DueAt(100 * StreamSecond), start + 1s);
    EXPECT_EQ(slow.DueAt(1 * StreamSecond), start + 2s);
    m_time += 2s;
    EXPECT_EQ(fast.StreamNow(), 200 * StreamSecond);
    EXPECT_EQ(slow.StreamNow(), StreamSecond);
}

TEST_F(Pacing, IsDueFromItsTime)
{
    Pacer pacer = Make(2.0);
    pacer.Start(StreamTime(0));
    EXPECT_TRUE(pacer.IsDue(StreamTime(0)));
    EXPECT_FALSE(pacer.IsDue(StreamSecond));
    m_time += 499ms;
    EXPECT_FALSE(pacer.IsDue(StreamSecond));
    m_time += 1ms;
    EXPECT_TRUE(pacer.IsDue(StreamSecond));
}

TEST_F(Pacing, TheStcContinuesFromTheLastEvent)
{
    Pacer pacer = Make(10.0);
    pacer.Start(StreamTime(0));
    m_time += 100ms; // one second of stream
    pacer.Follow({StreamSecond, 90'000ull * 300});
    EXPECT_EQ(pacer.StcNow(), 90'000u);
    m_time += 200ms; // two seconds of stream
    EXPECT_EQ(pacer.StcNow(), 270'000u);
}

TEST_F(Pacing, TheStcWrapsAt33Bits)
{
    Pacer pacer = Make(1.0);
    pacer.Start(StreamTime(0));
    pacer.Follow({StreamTime(0), PcrModulus - 300});
    EXPECT_EQ(pacer.StcNow(), (1ull << 33) - 1);
    m_time += 1s;
    EXPECT_EQ(pacer.StcNow(), 89'999u);
}

TEST_F(Pacing, AnEventTakenAheadOfItsTimeShowsAnEarlierStc)
{
    Pacer pacer = Make(1.0);
    pacer.Start(StreamTime(0));
    pacer.Follow({StreamSecond, 0});
    EXPECT_EQ(pacer.StcNow(), (1ull << 33) - 90'000);
}

TEST_F(Pacing, RefusesSpeedsThatAreNotPositive)
{
    EXPECT_THROW(Make(0), std::invalid_argument);
    EXPECT_THROW(Make(-1), std::invalid_argument);
    EXPECT_THROW(Make(std::numeric_limits<double>::quiet_NaN()), std::invalid_argument);
    EXPECT_THROW(Make(std::numeric_limits<double>::infinity()), std::invalid_argument);
}

TEST_F(Pacing, ExtremesDoNotOverflow)
{
    Pacer slow = Make(1e-300);
    EXPECT_GT(slow.DueAt(StreamSecond), m_time + std::chrono::hours(24 * 365));
    Pacer fast = Make(1e300);
    EXPECT_EQ(fast.DueAt(StreamSecond), m_time);
    m_time += 1s;
    EXPECT_GT(fast.StreamNow(), 1'000'000 * StreamSecond);
    EXPECT_LT(fast.StcNow(), 1ull << 33);
}

TEST(Pacer, UsesTheSteadyClockByItself)
{
    Pacer pacer;
    EXPECT_TRUE(pacer.IsDue(StreamTime(0)));
    EXPECT_FALSE(pacer.IsDue(3600 * StreamSecond));
}
