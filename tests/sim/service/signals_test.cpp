// SPDX-License-Identifier: MIT
#include "host/Signals.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

namespace zviptv::sim {
namespace {

using std::chrono::milliseconds;

constexpr int FewReturns = 10; // GLib may wake its loop a few times when sources are attached

/// How often Next() returns without a signal until `wait` is over, with another deadline at each call.
int ReturnsWithin(Signals const& signals, milliseconds wait)
{
    auto const end = Signals::Clock::now() + wait;
    int count = 0;
    for (; Signals::Clock::now() < end; ++count) {
        EXPECT_EQ(signals.Next(end + std::chrono::nanoseconds(count)).number, 0);
    }
    return count;
}

TEST(Signals, SleepUntilTheDeadline)
{
    Signals const signals;
    EXPECT_LE(ReturnsWithin(signals, milliseconds(200)), FewReturns);
    EXPECT_LE(ReturnsWithin(signals, milliseconds(200)), FewReturns);
}

TEST(Signals, DoNotWaitForADeadlineThatHasPassed)
{
    Signals const signals;
    EXPECT_LE(ReturnsWithin(signals, milliseconds(1)), FewReturns);
    auto const before = Signals::Clock::now();
    EXPECT_EQ(signals.Next(before).number, 0);
    EXPECT_EQ(signals.Next(before - milliseconds(1)).number, 0);
}

TEST(Signals, AreReturnedOneByOne)
{
    Signals const signals;
    raise(SIGTERM);
    raise(SIGCHLD);
    int terminations = 0;
    int children = 0;
    while (terminations + children < 2) {
        Signals::Signal const signal = signals.Next(Signals::Never);
        terminations += signal.number == SIGTERM ? 1 : 0;
        children += signal.number == SIGCHLD ? 1 : 0;
        EXPECT_EQ(signal.AsksToEnd(), signal.number == SIGTERM);
    }
    EXPECT_EQ(terminations, 1);
    EXPECT_EQ(children, 1);
}

TEST(Signals, EndAWaitWithoutADeadline)
{
    Signals const signals;
    timer_t timer = {};
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGHUP;
    ASSERT_EQ(timer_create(CLOCK_MONOTONIC, &event, &timer), 0);
    itimerspec const soon = {{}, {0, 50'000'000}};
    ASSERT_EQ(timer_settime(timer, 0, &soon, nullptr), 0);
    int returns = 1;
    while (signals.Next(Signals::Never).number != SIGHUP) {
        ++returns;
    }
    EXPECT_LE(returns, FewReturns);
    timer_delete(timer);
}

} // namespace
} // namespace zviptv::sim
