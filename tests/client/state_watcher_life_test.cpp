// SPDX-License-Identifier: MIT
#include "StateWatcherTest.h"

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

TEST_F(StateWatcherTest, TwoRoundsNeverOverlap)
{
    std::vector<std::chrono::steady_clock::time_point> asked; // written only by the service's thread
    m_service->AnswerBy("GetSourceState", [&](WireMessage const&) {
        asked.push_back(std::chrono::steady_clock::now());
        return WireAnswer(Entries({{"result_internal", "1"}, {"sourcestate", "2"}})).After(60ms);
    });
    Watch({1ms, std::nullopt});
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 4; }));
    m_service.reset();
    for (std::size_t i = 1; i < asked.size(); ++i) {
        EXPECT_GE(asked[i] - asked[i - 1], 60ms);
    }
}

TEST_F(StateWatcherTest, RoundsStartAtTheIntervalOrWhenRefreshed)
{
    auto const start = std::chrono::steady_clock::now();
    Watch({300ms, std::nullopt});
    ASSERT_TRUE(AwaitEvents(1));
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 2; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
    m_watcher.reset();
    m_events.clear();
    Watch({10min, std::nullopt});
    ASSERT_TRUE(AwaitEvents(1));
    SelectAudio(*m_service, "1");
    m_watcher->Refresh();
    ASSERT_TRUE(AwaitEvents(2));
    EXPECT_EQ(m_texts.back(), "audio track: 0 -> 1");
}

TEST_F(StateWatcherTest, DoesNotShortenAnIntervalOfManyWeeks)
{
    Watch({std::chrono::milliseconds((1LL << 32) + 100), std::nullopt}); // above the range of GLib's timers
    ASSERT_TRUE(AwaitEvents(1));
    EXPECT_FALSE(RunUntil([&] { return Count("GetSourceState") == 2; }, 500ms));
}

TEST_F(StateWatcherTest, ARefreshDuringARoundIsFollowedByAnother)
{
    Watch({10min, std::nullopt});
    m_service->AnswerBy("GetSourceState", [](WireMessage const&) {
        return WireAnswer(Entries({{"result_internal", "1"}, {"sourcestate", "2"}})).After(50ms);
    });
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 1; }));
    m_watcher->Refresh();
    m_watcher->Refresh();
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 2; }));
    EXPECT_EQ(m_events.size(), 1U);
}

TEST_F(StateWatcherTest, AfterARestartOnlyChangesAreReported)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    for (int i = 0; i < 3; ++i) {
        KillService();
        ASSERT_TRUE(AwaitAvailable(false));
        StartService([i](FakeService& service) {
            SetUpAnswers(service);
            SelectAudio(service, i % 2 == 0 ? "1" : "0");
        });
        ASSERT_TRUE(AwaitEvents(2 + static_cast<std::size_t>(i)));
    }
    m_texts.erase(m_texts.begin());
    EXPECT_THAT(m_texts, ElementsAre("audio track: 0 -> 1", "audio track: 1 -> 0", "audio track: 0 -> 1"));
}

TEST_F(StateWatcherTest, AServiceThatStartsLaterIsReportedCompletely)
{
    KillService();
    Watch({10min, 7});
    ASSERT_FALSE(RunUntil([&] { return !m_events.empty(); }, 100ms));
    StartService(SetUpAnswers);
    ASSERT_TRUE(AwaitEvents(1));
    EXPECT_TRUE(std::holds_alternative<TelevisionState>(m_events[0]));
}

TEST_F(StateWatcherTest, NoEventFollowsTheEndOfTheWatcher)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    m_service->Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "3"}});
    SelectAudio(*m_service, "1");
    Lock(*m_service, "1");
    m_action = [this] { m_watcher.reset(); };
    m_watcher->Refresh();
    ASSERT_TRUE(AwaitEvents(2));
    std::size_t const asked = Count("GetSourceState");
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 2; }, 100ms));
    EXPECT_LE(Count("GetSourceState"), asked);
}

TEST_F(StateWatcherTest, AWatcherMayEndWithOutstandingRequests)
{
    m_service->AnswerNothing("GetSourceState");
    Watch();
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 1; }));
    m_watcher.reset();
    EXPECT_FALSE(RunUntil([&] { return !m_events.empty(); }, 100ms));
}

TEST_F(StateWatcherTest, TheTelevisionMayEndFirst)
{
    Watch();
    m_action = [this] { m_television.reset(); };
    ASSERT_TRUE(AwaitEvents(1));
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 1; }, 50ms));
    EXPECT_EQ(m_watcher->State().audio, 0);
    m_watcher->Refresh();
    RunPending();

    m_television = std::make_unique<Television>();
    m_action = nullptr;
    m_service->AnswerNothing("GetSourceState");
    Watch();
    std::size_t const before = Count("GetSourceState");
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") > before; }));
    m_television.reset();
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 1; }, 50ms));
}

TEST_F(StateWatcherTest, ExceptionsOfTheCallbackAreReported)
{
    std::vector<Failure> failures;
    m_television->OnError([&](Failure const& failure) { failures.push_back(failure); });
    m_action = [] { throw std::runtime_error("too bad"); };
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    SelectAudio(*m_service, "1");
    ASSERT_TRUE(AwaitEvents(2));
    ASSERT_EQ(failures.size(), 2U);
    EXPECT_EQ(failures[1].kind, FailureKind::CallbackThrew);
    EXPECT_EQ(failures[1].function, "StateWatcher");
    EXPECT_THAT(failures[1].message, HasSubstr("too bad"));
}

TEST_F(StateWatcherTest, AWatcherMayMove)
{
    Watch();
    StateWatcher moved(std::move(*m_watcher));
    m_watcher.reset();
    ASSERT_TRUE(AwaitEvents(1));
    StateWatcher other(*m_television, {}, nullptr);
    moved = std::move(other);
    EXPECT_TRUE(StateWatcher().State() == TelevisionState());
    StateWatcher().Refresh();
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 1; }, 50ms));
}

} // namespace
