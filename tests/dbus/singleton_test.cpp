// SPDX-License-Identifier: MIT
#include "dbus/Singleton.h"

#include "WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace zviptv::test;

namespace {

constexpr std::chrono::seconds Patience{20};

/// An instance whose creation and end wait for the test.
class SingletonTest : public testing::Test
{
protected:
    using Pointer = zviptv::Singleton<int>::Pointer;

    Pointer Get()
    {
        return m_singleton.GetOrMake([this] {
            int const number = ++m_made;
            Pass();
            return std::make_shared<int>(number);
        });
    }

    std::vector<Pointer> EndAll()
    {
        return m_singleton.End([this](int const&) {
            ++m_ended;
            Pass();
        });
    }

    /// The instance that ended last.
    Pointer End()
    {
        std::vector<Pointer> const ended = EndAll();
        return ended.empty() ? nullptr : ended.back();
    }

    /// Attempts wait here until the test has released their number.
    void Pass()
    {
        int const attempt = ++m_begun;
        EXPECT_TRUE(WaitUntil([this, attempt] { return m_allowed >= attempt; }, Patience));
    }

    template <typename Function>
    auto Start(Function function)
    {
        return std::async(std::launch::async, function);
    }

    void WaitForBegun(int attempts)
    {
        ASSERT_TRUE(WaitUntil([this, attempts] { return m_begun == attempts; }, Patience));
    }

    zviptv::Singleton<int> m_singleton;
    std::atomic<int> m_made{0};
    std::atomic<int> m_ended{0};
    std::atomic<int> m_begun{0};
    std::atomic<int> m_allowed{1000};
};

TEST_F(SingletonTest, MakesOneInstanceAndEndsItOnce)
{
    EXPECT_EQ(m_singleton.Current(), nullptr);
    EXPECT_EQ(End(), nullptr);
    EXPECT_EQ(*Get(), 1);
    EXPECT_EQ(*Get(), 1);
    EXPECT_EQ(*m_singleton.Current(), 1);
    EXPECT_EQ(*End(), 1);
    EXPECT_EQ(m_singleton.Current(), nullptr);
    EXPECT_EQ(*Get(), 2);
    EXPECT_EQ(m_ended, 1);
}

TEST_F(SingletonTest, SharesTheOutcomeOfAnAttemptThatMakesNothing)
{
    std::promise<void> begun;
    std::promise<void> allowed;
    auto const first = Start([&] {
        return m_singleton.GetOrMake([&]() -> Pointer {
            begun.set_value();
            allowed.get_future().wait();
            return nullptr;
        });
    });
    begun.get_future().wait();
    auto second = Start([this] { return Get(); });
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    allowed.set_value();
    EXPECT_EQ(second.get(), nullptr);
    EXPECT_EQ(m_made, 0);
}

/// During an end, `count` threads request an instance, and as many its end.
TEST_F(SingletonTest, NobodyWaitsForMoreThanTwoAttempts)
{
    Get();
    m_allowed = 1;
    auto const end = Start([this] { return End(); });
    WaitForBegun(2);
    std::vector<std::future<Pointer>> makers;
    std::vector<std::future<Pointer>> enders;
    for (int i = 0; i < 8; ++i) {
        makers.push_back(Start([this] { return Get(); }));
        enders.push_back(Start([this] { return End(); }));
    }
    for (auto const& waiting : makers) {
        EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    }
    m_allowed = 2;
    for (auto& ender : enders) {
        EXPECT_EQ(*ender.get(), 1);
    }
    m_allowed = 3;
    for (auto& maker : makers) {
        EXPECT_EQ(*maker.get(), 2);
    }
    EXPECT_EQ(m_begun, 3) << "one making, one end, one making";
}

TEST_F(SingletonTest, AnEndRequestedDuringAStartFollowsIt)
{
    m_allowed = 0;
    auto made = Start([this] { return Get(); });
    WaitForBegun(1);
    auto ended = Start([this] { return End(); });
    EXPECT_EQ(ended.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    m_allowed = 2;
    EXPECT_EQ(*made.get(), 1);
    EXPECT_EQ(*ended.get(), 1);
    EXPECT_EQ(m_singleton.Current(), nullptr);
}

TEST_F(SingletonTest, IsNotCurrentAfterItsEndBegins)
{
    Get();
    m_allowed = 1;
    auto const ended = Start([this] { return End(); });
    WaitForBegun(2);
    EXPECT_EQ(m_singleton.Current(), nullptr);
    m_allowed = 2;
}

TEST_F(SingletonTest, ReportsAnEndedInstanceThatIsStillHeld)
{
    Pointer held = Get();
    End();
    EXPECT_EQ(End(), held);
    held.reset();
    EXPECT_EQ(End(), nullptr);
}

TEST_F(SingletonTest, ReportsAllInstancesThatAreStillHeld)
{
    Pointer first = Get();
    Pointer const second = m_singleton.GetOrMake([] { return std::make_shared<int>(2); },
                                                 [](int const&) { return true; }, [](int const&) {});
    EXPECT_EQ(EndAll(), (std::vector<Pointer>{first, second}));
    Pointer const third = Get();
    EXPECT_EQ(EndAll(), (std::vector<Pointer>{first, second, third}));
    first.reset();
    EXPECT_EQ(EndAll(), (std::vector<Pointer>{second, third}));
}

TEST_F(SingletonTest, ReplacesAnOutdatedInstance)
{
    m_allowed = 9;
    Get();
    int ended = 0;
    auto const get = [&](int outdated) {
        return *m_singleton.GetOrMake([] { return std::make_shared<int>(7); },
                                      [=](int const& number) { return number == outdated; },
                                      [&](int const& number) { ended = number; });
    };
    EXPECT_EQ(get(5), 1) << "another one is not touched";
    EXPECT_EQ(ended, 0);
    EXPECT_EQ(get(1), 7);
    EXPECT_EQ(ended, 1);
}

TEST_F(SingletonTest, EndsOnlyTheGivenInstance)
{
    m_allowed = 9;
    Pointer const first = Get();
    auto const endIf = [this](int number) {
        return m_singleton.EndIf([](int const&) {},
                                 [number](int const& present) { return present == number; });
    };
    EXPECT_EQ(endIf(2), nullptr);
    EXPECT_EQ(m_singleton.Current(), first);
    EXPECT_EQ(endIf(1), first);
    EXPECT_EQ(m_singleton.Current(), nullptr);
    EXPECT_EQ(endIf(1), nullptr);
}

TEST_F(SingletonTest, EndsTheGivenInstanceWhileItStarts)
{
    auto const made = Start([this] { return Get(); });
    WaitForBegun(1);
    auto const ended = Start([this] {
        return m_singleton.EndIf([](int const&) {}, [](int const& present) { return present == 1; });
    });
    m_allowed = 1;
    made.wait();
    ended.wait();
    EXPECT_EQ(m_singleton.Current(), nullptr);
}

TEST_F(SingletonTest, WorksAfterAnException)
{
    EXPECT_THROW(m_singleton.GetOrMake([]() -> Pointer { throw std::runtime_error("no"); }),
                 std::runtime_error);
    EXPECT_EQ(*Get(), 1);
    EXPECT_THROW(m_singleton.End([](int const&) { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ(*Get(), 2);
}

TEST_F(SingletonTest, WorksWithManyThreads)
{
    std::atomic<int> living{0};
    auto const churn = [&] {
        for (int i = 0; i < 2000; ++i) {
            m_singleton.GetOrMake([&] {
                EXPECT_EQ(++living, 1);
                return std::make_shared<int>(1);
            });
            m_singleton.End([&](int const&) { EXPECT_EQ(--living, 0); });
        }
    };
    std::vector<std::future<void>> threads;
    for (int i = 0; i < 8; ++i) {
        threads.push_back(Start(churn));
    }
    for (auto& thread : threads) {
        thread.get();
    }
    EXPECT_EQ(m_singleton.Current(), nullptr);
    EXPECT_EQ(living, 0);
}

} // namespace
