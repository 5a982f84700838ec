// SPDX-License-Identifier: MIT
#include "common/MainLoop.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace zviptv::sim {
namespace {

using std::chrono::milliseconds;

/// The message of the exception of Run(); empty if it returns.
std::string FailureOf(MainLoop& loop)
{
    try {
        loop.Run();
    } catch (std::runtime_error const& failure) {
        return failure.what();
    }
    return {};
}

TEST(MainLoop, RethrowsExceptionsOfItsWork)
{
    MainLoop loop;
    loop.After(milliseconds(0), [] { throw std::runtime_error("cannot read the stream"); });
    EXPECT_EQ(FailureOf(loop), "cannot read the stream");
}

/// It passes GLib by, and does not cut short what that does: it lets go of the work.
TEST(MainLoop, ThrowsFromOutsideGLib)
{
    MainLoop loop;
    auto held = std::make_shared<int>();
    std::weak_ptr<int> const isHeld = held;
    loop.After(milliseconds(0), [held = std::move(held)] { throw std::runtime_error("in the middle"); });
    EXPECT_EQ(FailureOf(loop), "in the middle");
    EXPECT_TRUE(isHeld.expired());
}

TEST(MainLoop, ThrowsTheFirstOfTwoFailures)
{
    MainLoop loop;
    loop.After(milliseconds(0), [] { throw std::runtime_error("first"); });
    loop.After(milliseconds(0), [] { throw std::runtime_error("second"); });
    EXPECT_EQ(FailureOf(loop), "first");
}

TEST(MainLoop, RunsAgainAfterAFailure)
{
    MainLoop loop;
    loop.After(milliseconds(0), [] { throw std::runtime_error("once"); });
    EXPECT_EQ(FailureOf(loop), "once");
    bool called = false;
    loop.After(milliseconds(0), [&] {
        called = true;
        loop.Quit();
    });
    EXPECT_EQ(loop.Run(), 0);
    EXPECT_TRUE(called);
}

/// It must not run in a loop to come, whose thread and time it knows nothing of.
TEST(MainLoop, DropsWorkThatIsNotDueAtItsEnd)
{
    auto held = std::make_shared<int>();
    std::weak_ptr<int> const isHeld = held;
    bool called = false;
    {
        MainLoop loop;
        loop.After(std::chrono::hours(1), [held = std::move(held)] {});
        loop.After(milliseconds(0), [&] { called = true; });
    }
    EXPECT_TRUE(isHeld.expired());
    MainLoop next;
    next.After(milliseconds(0), [&] { next.Quit(); });
    EXPECT_EQ(next.Run(), 0);
    EXPECT_FALSE(called);
}

} // namespace
} // namespace zviptv::sim
